#!/usr/bin/env python3
"""Looks into a Debian package without installing it.

usage: package_test.py DEB [BUILD_FOLDER]

Prints what is wrong with it, a line each, and exits 1 when there is anything. BUILD_FOLDER, or any folder above this
script, may not be named inside a program.
"""
import hashlib
import io
import pathlib
import subprocess
import sys
import tarfile

PROGRAMS = {
    "usr/bin/lumacheck", "usr/bin/Lumacheck", "usr/lib/lumacheck/lumacheck-crash-report",
    "usr/libexec/lumacheck/lumacheck-privileged",
}
MODULES = {"usr/lib/lumacheck/movie-ffmpeg.so", "usr/lib/lumacheck/movie-ffmpeg-demuxer.so", "usr/lib/lumacheck/movie-ffmpeg-encoder.so",
           "usr/lib/lumacheck/picture-rsvg.so"}
FILES = {
    "usr/share/applications/com.quorvane.Lumacheck.desktop",
    "usr/share/bash-completion/completions/lumacheck",
    "usr/share/doc/lumacheck/changelog.gz",
    "usr/share/doc/lumacheck/copyright",
    "usr/share/fish/vendor_completions.d/lumacheck.fish",
    "usr/share/icons/hicolor/scalable/apps/com.quorvane.Lumacheck.svg",
    "usr/share/lumacheck/translations/lumacheck_de.qm",
    "usr/share/man/man1/Lumacheck.1.gz",
    "usr/share/man/man1/lumacheck.1.gz",
    "usr/share/metainfo/com.quorvane.Lumacheck.metainfo.xml",
    "usr/share/polkit-1/actions/com.quorvane.Lumacheck.policy",
    "usr/share/quorvane/Documentation/Quorvane/Vextrel User Manual.pdf",
    "usr/share/zsh/vendor-completions/_lumacheck",
} | {f"usr/share/icons/hicolor/{side}x{side}/apps/com.quorvane.Lumacheck.png"
     for side in (16, 22, 24, 32, 48, 64, 128, 256, 512)}
FOLDERS = {"var/log/quorvane/Quorvane"}
LINKS = {"usr/share/quorvane/Logs": "/var/log/quorvane"}


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


class Package:
    def __init__(self, path):
        self.path = path
        with tarfile.open(fileobj=io.BytesIO(output("dpkg-deb", "--fsys-tarfile", path))) as archive:
            self.entries = {entry.name.removeprefix("./").rstrip("/"): entry for entry in archive}
            self.bytes = {name: archive.extractfile(entry).read() for name, entry in self.entries.items() if entry.isfile()}
        with tarfile.open(fileobj=io.BytesIO(output("dpkg-deb", "--ctrl-tarfile", path))) as archive:
            self.control = {entry.name.removeprefix("./"): (entry, archive.extractfile(entry).read())
                            for entry in archive if entry.isfile()}

    def field(self, name):
        return output("dpkg-deb", "-f", self.path, name).decode().strip()


def contents_problems(package):
    """Exactly what belongs in it, with the owners and permissions of a system's files."""
    files = {name for name, entry in package.entries.items() if entry.isfile()}
    expected = PROGRAMS | MODULES | FILES
    for name in sorted(files ^ expected):
        yield f"{name}: {'does not belong in the package' if name in files else 'is missing'}"
    for name, entry in package.entries.items():
        wanted = 0o777 if entry.issym() else 0o755 if entry.isdir() or name in PROGRAMS else 0o644
        if entry.mode != wanted:
            yield f"{name}: mode {entry.mode:o}, not {wanted:o}"
        if (entry.uid, entry.gid) != (0, 0):
            yield f"{name}: belongs to {entry.uid}:{entry.gid}"
        if not (entry.isfile() or entry.isdir() or entry.issym()):
            yield f"{name}: neither file, folder nor link"
    for name in FOLDERS:
        if name not in package.entries or not package.entries[name].isdir():
            yield f"{name}: no folder"
    links = {name: entry.linkname for name, entry in package.entries.items() if entry.issym()}
    if links != LINKS:
        yield f"links: {links}"


def program_problems(package, folder, top):
    """Stripped, without paths of the machine that it was built on, hardened."""
    for name in sorted((PROGRAMS | MODULES) & package.bytes.keys()):
        path = pathlib.Path(folder) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(package.bytes[name])
        if b"not stripped" in output("file", path):
            yield f"{name}: not stripped"
        if str(top).encode() in package.bytes[name]:
            yield f"{name}: names the folder that it was built in"
        dynamic = output("readelf", "-dlW", path).decode()
        for word, what in (("RPATH", "has an RPATH"), ("RUNPATH", "has a RUNPATH"), (" RWE ", "has an executable stack")):
            if word in dynamic:
                yield f"{name}: {what}"
        for word in ("GNU_RELRO", "BIND_NOW"):
            if word not in dynamic:
                yield f"{name}: without {word}"


def control_problems(package):
    wanted = {"Package": "lumacheck", "Section": "video", "Priority": "optional"}
    for field, value in wanted.items():
        if package.field(field) != value:
            yield f"{field}: {package.field(field)}, not {value}"
    for field in ("Maintainer", "Homepage"):
        if ".example" not in package.field(field):
            yield f"{field}: not under .example"
    for library in ("libc6", "libqt6widgets6", "libqt6multimedia6", "libavcodec59", "librsvg2-2"):
        if library not in package.field("Depends"):
            yield f"Depends: no {library}"
    for tool in ("pkexec", "libarchive-tools"):
        if tool not in package.field("Recommends"):
            yield f"Recommends: no {tool}"
    if set(package.control) != {"control", "md5sums", "postrm"}:
        yield f"control files: {sorted(package.control)}"
    sums = dict(reversed(line.split("  ", 1)) for line in package.control["md5sums"][1].decode().splitlines())
    if sums != {name: hashlib.md5(data).hexdigest() for name, data in package.bytes.items()}:
        yield "md5sums: not those of the files"


def policy_problems(package):
    policy = package.bytes.get("usr/share/polkit-1/actions/com.quorvane.Lumacheck.policy", b"").decode()
    if ">/usr/libexec/lumacheck/lumacheck-privileged<" not in policy:
        yield "the polkit policy does not name the privileged program where it is installed"


def lintian_problems(path):
    run = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", path], stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, check=False)
    if run.returncode != 0:
        yield "lintian: " + run.stdout.decode().strip()


def main():
    import tempfile
    path = sys.argv[1]
    top = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).resolve().parents[2]
    package = Package(path)
    with tempfile.TemporaryDirectory() as folder:
        problems = [*contents_problems(package), *program_problems(package, folder, top), *control_problems(package),
                    *policy_problems(package), *lintian_problems(path)]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

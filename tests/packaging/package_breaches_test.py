#!/usr/bin/env python3
"""Proves that package_test.py sees what may be wrong with a package."""
import pathlib
import subprocess
import tarfile
import tempfile
import unittest

import package_test


def entry(name, mode, kind=tarfile.REGTYPE, target=""):
    info = tarfile.TarInfo(name)
    info.mode, info.type, info.linkname = mode, kind, target
    return info


class GoodPackage:
    """As package_test.Package, without a file behind it."""

    def __init__(self):
        programs = {name: entry(name, 0o755) for name in package_test.PROGRAMS}
        files = {name: entry(name, 0o644) for name in package_test.MODULES | package_test.FILES}
        folders = {name: entry(name, 0o755, tarfile.DIRTYPE) for name in package_test.FOLDERS}
        links = {name: entry(name, 0o777, tarfile.SYMTYPE, target) for name, target in package_test.LINKS.items()}
        self.entries = programs | files | folders | links
        self.bytes = {}


class Breaches(unittest.TestCase):
    def setUp(self):
        self.package = GoodPackage()

    def refused(self):
        return list(package_test.contents_problems(self.package))

    def test_nothing_is_wrong_with_a_good_one(self):
        self.assertEqual(self.refused(), [])

    def test_a_file_too_many(self):
        self.package.entries["usr/bin/extra"] = entry("usr/bin/extra", 0o644)
        self.assertEqual(self.refused(), ["usr/bin/extra: does not belong in the package"])

    def test_a_file_too_few(self):
        del self.package.entries["usr/share/doc/lumacheck/copyright"]
        self.assertEqual(self.refused(), ["usr/share/doc/lumacheck/copyright: is missing"])

    def test_a_mode(self):
        self.package.entries["usr/bin/lumacheck"].mode = 0o4755
        self.package.entries["usr/lib/lumacheck/movie-ffmpeg.so"].mode = 0o664
        self.package.entries["var/log/quorvane/Quorvane"].mode = 0o777
        self.assertEqual(len(self.refused()), 3)

    def test_an_owner(self):
        self.package.entries["usr/bin/lumacheck"].uid = 1000
        self.assertEqual(self.refused(), ["usr/bin/lumacheck: belongs to 1000:0"])

    def test_a_device(self):
        self.package.entries["usr/bin/null"] = entry("usr/bin/null", 0o644, tarfile.CHRTYPE)
        self.assertEqual(self.refused(), ["usr/bin/null: neither file, folder nor link"])

    def test_a_link_elsewhere_and_a_folder_that_is_none(self):
        self.package.entries["usr/share/quorvane/Logs"].linkname = "/tmp"
        del self.package.entries["var/log/quorvane/Quorvane"]
        self.assertEqual(len(self.refused()), 2)

    def test_a_program_as_the_compiler_left_it(self):
        with tempfile.TemporaryDirectory() as folder:
            program = pathlib.Path(folder) / "program"
            subprocess.run(["g++", "-x", "c++", "-", "-o", program, "-Wl,-z,norelro", f"-Wl,-rpath,{folder}"], check=True,
                           input=f'const char* folder = "{folder}/source"; int main() {{}}'.encode())
            self.package.bytes["usr/bin/lumacheck"] = program.read_bytes()
            told = "\n".join(package_test.program_problems(self.package, pathlib.Path(folder) / "unpacked", folder))
        for breach in ("not stripped", "names the folder", "RUNPATH", "without GNU_RELRO", "without BIND_NOW"):
            self.assertIn(breach, told)

    def test_a_policy_for_another_prefix(self):
        name = "usr/share/polkit-1/actions/com.quorvane.Lumacheck.policy"
        self.package.bytes[name] = b">/usr/local/libexec/lumacheck/lumacheck-privileged<"
        self.assertEqual(len(list(package_test.policy_problems(self.package))), 1)

    def test_the_control_files(self):
        with tempfile.TemporaryDirectory() as folder:
            tree = pathlib.Path(folder) / "tree"
            (tree / "DEBIAN").mkdir(parents=True)
            (tree / "file").write_text("contents")
            (tree / "DEBIAN/control").write_text(
                "Package: lumacheck\nVersion: 1\nArchitecture: all\nSection: misc\nPriority: optional\n"
                "Maintainer: Somebody <somebody@elsewhere.test>\nDescription: something\n")
            (tree / "DEBIAN/md5sums").write_text("0" * 32 + "  file\n")
            subprocess.run(["dpkg-deb", "--root-owner-group", "-b", tree, f"{folder}/bad.deb"], check=True,
                           stdout=subprocess.DEVNULL)
            told = "\n".join(package_test.control_problems(package_test.Package(f"{folder}/bad.deb")))
        for breach in ("Section: misc", "Maintainer: not under", "Homepage: not under", "Depends: no libc6",
                       "Recommends: no pkexec", "control files", "md5sums: not those"):
            self.assertIn(breach, told)


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Refuses what breaks the layers of the tree.

usage: check_layers.py [ROOT]

Prints one line a breach (file:line: what) and exits 1 when there is any:
  - an include that points up, or into a folder that no layer may include (tests, bench, fuzz)
  - a movie in the units of SharedFiles that know none
  - anything but a few units of SharedFiles in the program that runs with administrator rights, and its parts elsewhere
  - libav outside movie/decode/ffmpeg, and in any header
  - Qt in movie/
  - Qt Widgets or Network outside app/ and the desktop units of SharedFiles
  - lcms2, libplist, libcrypto, libdw, zlib and the command's own libraries outside the units that wrap them
"""
import pathlib
import re
import sys

# From the ground up: a folder may include itself and what stands before it.
LAYERS = ["movie/quicktime", "movie/decode", "movie/render", "movie", "SharedFiles", "check", "cli", "app"]
SIDES = {("cli", "app"), ("app", "cli")}
MEDIA_UNITS = {"QVQuickTime"}
DESKTOP_UNITS = {"AlertPanel", "AnalyticsController", "DesktopWorkspace", "HttpsConnection", "LogGathering", "QVAlert", "QVQC",
                 "QVTroubleshootingUtils", "QVSoftwareUpdate"}
PRIVILEGED = "SharedFiles/privileged/"
PRIVILEGED_MAY_USE = {"SharedFiles/" + unit + ".h"
                      for unit in ("BundleInfo", "FileDescriptor", "PathPlatform", "QVLocalPaths", "SpawnSettings")}

# Library headers -> the files that may include them.
ONLY_IN = [
    (re.compile(r"^lib(av|sw)\w+/"), re.compile(r"^movie/decode/ffmpeg/\w+\.cpp$"), "libav"),
    (re.compile(r"^lcms2"), re.compile(r"^movie/render/\w+\.cpp$"), "lcms2"),
    (re.compile(r"^plist/"), re.compile(r"^SharedFiles/PropertyList\.cpp$"), "libplist"),
    (re.compile(r"^(elfutils|dwarf)"), re.compile(r"^SharedFiles/crash/report/ProcessImage\.cpp$"), "libdw"),
    (re.compile(r"^openssl/"), re.compile(r"^SharedFiles/FileDigest\.cpp$"), "libcrypto"),
    (re.compile(r"^zlib\.h$"), re.compile(r"^movie/quicktime/\w+\.cpp$"), "zlib"),
    (re.compile(r"^(CLI/|nlohmann/)"), re.compile(r"^cli/"), "a library of the command"),
]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
QT = re.compile(r"^(Q[A-Z]\w*|Qt\w+/.*)$")
WIDGETS = re.compile(
    r"^(QtWidgets|QtNetwork|QtGui|QtMultimedia)/|^Q(Application|Widget|MainWindow|Dialog|MessageBox|Label|PushButton|"
    r"LineEdit|TextEdit|FileDialog|Network\w*|Tcp\w+|Udp\w+|Ssl\w+|Local(Server|Socket)|Image|Pixmap|Painter|Icon|Font|Color)$")


def layer_of(path):
    folders = [layer for layer in LAYERS if path == layer or path.startswith(layer + "/")]
    return max(folders, key=len) if folders else None


def project_include_breach(path, target):
    mine, theirs = layer_of(path), layer_of(target)
    top = target.split("/")[0]
    if top in ("tests", "bench", "fuzz"):
        return f"includes {target}: nothing the program is made of may include {top}/"
    if mine is None or theirs is None:
        return None if theirs else f'includes "{target}": not written from the root'
    if LAYERS.index(theirs) > LAYERS.index(mine) or (mine, theirs) in SIDES:
        return f"includes {target}: {mine} may not look up to {theirs}"
    if mine == "SharedFiles" and theirs.startswith("movie") and pathlib.PurePath(path).stem not in MEDIA_UNITS:
        return f"includes {target}: of SharedFiles, only the media units know movies"
    return privileged_breach(path, target)


def privileged_breach(path, target):
    if path.startswith(PRIVILEGED):
        if not target.startswith(PRIVILEGED) and target not in PRIVILEGED_MAY_USE:
            return f"includes {target}: what runs with administrator rights uses as little as it can"
    elif target.startswith(PRIVILEGED):
        return f"includes {target}: nothing but the privileged program is made of that"
    return None


def library_include_breach(path, target):
    for header, allowed, name in ONLY_IN:
        if header.search(target) and not allowed.search(path):
            return f"includes <{target}>: {name} does not belong here"
    if QT.search(target):
        if path.startswith("movie/"):
            return f"includes <{target}>: the movie layer knows no Qt"
        unit = pathlib.PurePath(path).stem
        if WIDGETS.search(target) and not path.startswith("app/") and unit not in DESKTOP_UNITS:
            return f"includes <{target}>: windows and network live in app/ and the desktop units"
    return None


def breaches(root):
    for folder in ("movie", "SharedFiles", "check", "cli", "app"):
        for file in sorted((root / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(root).as_posix()
            for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
                found = INCLUDE.match(line)
                if not found:
                    continue
                judge = project_include_breach if found.group(1) == '"' else library_include_breach
                breach = judge(path, found.group(2))
                if breach:
                    yield f"{path}:{number}: {breach}"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    found = list(breaches(root))
    print("\n".join(found) if found else "The layers hold.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

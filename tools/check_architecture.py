#!/usr/bin/env python3
"""Holds docs/architecture.md to the tree.

usage: check_architecture.py [ROOT]

Prints one line for each of these and exits 1 when there is any:
  - a unit (the files of one name in the folders of programs) that the page does not name
  - a name on the page that looks like a unit or a path and is nowhere in the tree
"""
import pathlib
import re
import sys

FOLDERS = ("movie", "SharedFiles", "check", "cli", "app", "tools")
PAGE = "docs/architecture.md"
CODE = re.compile(r"`([^`]+)`")
UNIT = re.compile(r"^[A-Z]\w{2,}(?:\.h|\.cpp)?$")
PATH = re.compile(r"^(?:\w[\w.-]*/)+(?:[\w.-]+)?$")


def units(root):
    files = (file for folder in FOLDERS for file in (root / folder).rglob("*") if file.suffix in (".h", ".cpp"))
    return sorted({file.stem for file in files})


def is_named(unit, names):
    """By itself, or as one of a family: `QVFileManager…` names all whose names begin so, `…Save` all that end so."""
    for name in names:
        plain = re.sub(r"\.(h|cpp)$", "", name.split("/")[-1])
        if plain == unit or len(plain) > 3 and (plain.endswith("…") and unit.startswith(plain[:-1]) or
                                                plain.startswith("…") and unit.endswith(plain[1:])):
            return True
    return False


def exists(name, root, text):
    """A file, a folder, or a word of the code."""
    if PATH.match(name):
        return any(root.rglob(name)) if name.endswith("/") else (root / name).exists() or any(root.glob(name + ".*"))
    return re.search(rf"\b{re.escape(pathlib.PurePath(name).stem)}\b", text) is not None


def disagreements(root):
    names = {name for code in CODE.findall((root / PAGE).read_text(encoding="utf-8")) for name in re.split(r"[\s,:(]+", code)}
    for unit in units(root):
        if not is_named(unit, names):
            yield f"{unit}: is not on the page"
    text = "\n".join(
        file.read_text(encoding="utf-8", errors="replace") + file.stem
        for folder in FOLDERS for file in (root / folder).rglob("*") if file.is_file()
    )
    for name in sorted(names):
        if (UNIT.match(name) or PATH.match(name)) and not exists(name, root, text):
            yield f"{name}: is on the page and not in the tree"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    found = list(disagreements(root))
    print("\n".join(found) if found else "The page tells of the whole tree.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

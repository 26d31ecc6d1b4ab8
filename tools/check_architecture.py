#!/usr/bin/env python3
"""Holds what is told of the tree to the tree.

usage: check_architecture.py [ROOT]

The comment at the head of a room's CMakeLists.txt lists its units, a line each: `Name, Other: what they know`. A name that
ends in `...` stands for all that begin so. docs/architecture.md names every room. Prints one line for each of these and
exits 1 when there is any:
  - a unit (the files of one name) that the head of its folder's CMakeLists.txt does not list
  - a listed name that is no unit of the folder
  - a room that the page does not name, or a path on the page that is not there
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
import check_layers  # noqa: E402

PAGE = "docs/architecture.md"
LISTED = re.compile(r"^#   (?! )([A-Za-z][^:]*(?:: [A-Z][\w, ]*)?): ", re.MULTILINE)
CODE = re.compile(r"`([^`]+)`")
PATH = re.compile(r"^(?:\w[\w.-]*/)+(?:[\w.-]+)?$")


def listed(folder):
    head = re.match(r"(?:#[^\n]*\n)*", (folder / "CMakeLists.txt").read_text(encoding="utf-8")).group()
    return [name for line in LISTED.findall(head) for name in re.split(r"[,:]\s*", line)]


def names(name, unit):
    return unit.startswith(name[:-3]) if name.endswith("...") else name == unit


def disagreements_of(folder, room):
    units = {file.stem for file in folder.iterdir() if file.suffix in (".h", ".cpp")}
    told = listed(folder)
    for unit in sorted(units - {"main"}):
        if not any(names(name, unit) for name in told):
            yield f"{room}/{unit}: is not listed at the head of {room}/CMakeLists.txt"
    for name in told:
        if not any(names(name, unit) for unit in units):
            yield f"{room}/CMakeLists.txt: lists {name}, which is not there"


def disagreements(root):
    page = (root / PAGE).read_text(encoding="utf-8")
    for room in sorted(each.folder for each in check_layers.rooms_of(root).values()):
        yield from disagreements_of(root / room, room)
        if not re.search(rf"(^|[`\s]){re.escape(room)}/?([`\s,:]|$)", page, re.MULTILINE):
            yield f"{PAGE}: does not name the room {room}"
    for path in sorted({code for code in CODE.findall(page) if PATH.match(code)}):
        if not (root / path).exists() and not any(root.glob(path + ".*")):
            yield f"{PAGE}: names {path}, which is not there"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    found = list(disagreements(root))
    print("\n".join(found) if found else "What is told of the tree is true.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

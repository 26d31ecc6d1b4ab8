#!/usr/bin/env python3
"""Holds every folder to what its CMakeLists.txt says that it links, and the links to one direction.

usage: check_layers.py [ROOT] [--graph]

A room is a folder with a `lumacheck_room(...)` or `lumacheck_module(...)` of its own. Its headers may include the rooms and
libraries that stand behind PUBLIC or LIBS, and those that come with them; its sources also what stands behind PRIVATE;
its main.cpp also what the folder's programs link. Prints one line a breach and exits 1 when there is any:
  - an include of a room or of a library that the folder does not link, or of anything outside the rooms (tests, bench)
  - an include that is not written from the root, or of a header that is not there
  - rooms that link each other in a circle, a room that links one that stands above it in the tree, units that include
    each other in a circle
  - a library linked outside the places that it is reserved for (RESERVED)
  - a room of more than 40 files

--graph prints the rooms, ground floor first, with what each links.
"""
import graphlib
import pathlib
import re
import sys
from collections import defaultdict

# From the ground up: what lies in a folder may link what lies in it and in those before it.
FLOORS = ["system", "movie", "SharedFiles", "check", "diagnosis", "scan", "cli", "app"]
BESIDE = {("app", "cli")}  # two faces of one thing: neither knows the other
MOST_FILES = 40

# A library's headers, and the name by which CMake links it.
LIBRARIES = [
    (r"libav(codec|util)/", "PkgConfig::LIBAVCODEC"),
    (r"libavformat/", "PkgConfig::LIBAVFORMAT"),
    (r"lcms2", "PkgConfig::LCMS2"),
    (r"(librsvg/|cairo)", "PkgConfig::LIBRSVG"),
    (r"plist/", "PkgConfig::LIBPLIST"),
    (r"(elfutils/|dwarf)", "PkgConfig::LIBDW"),
    (r"openssl/", "PkgConfig::LIBCRYPTO"),
    (r"zlib\.h", "ZLIB::ZLIB"),
    (r"tl/expected", "tl::expected"),
    (r"CLI/", "CLI11::CLI11"),
    (r"nlohmann/", "nlohmann_json::nlohmann_json"),
    (r"(QtMultimedia/|QAudio|QMedia)", "Qt6::Multimedia"),
    (r"(QtNetwork/|Q(Network|Ssl|Tcp|Udp|Local(Server|Socket)|Host))", "Qt6::Network"),
    (r"(Qt(Widgets|Gui)/|Q(Application|\w*Widget|MainWindow|\w*Dialog\w*|MessageBox|Label|\w*Button|LineEdit|\w*TextEdit|"
     r"\w*Layout|Menu\w*|Action|Shortcut|KeySequence|Slider|Splitter|ScrollBar|ProgressBar|CheckBox|Style\w*|Image|Pixmap|"
     r"Painter\w*|Icon|Font\w*|Color|Clipboard|Screen|Text(Document|Cursor)|DesktopServices)$)", "Qt6::Widgets"),
    (r"Q[A-Z]|Qt\w+/", "Qt6::Core"),
]
# Made by CMake, with the room that makes it.
GENERATED = {"SharedFiles/MakerHosts.h": "maker_hosts"}

# Libraries that only these folders may link, and those below them.
RESERVED = {
    "PkgConfig::LIBAVCODEC": ["movie/decode/ffmpeg", "movie/encode/ffmpeg"],
    "PkgConfig::LIBAVFORMAT": ["movie/decode/ffmpeg", "movie/encode/ffmpeg"],
    "PkgConfig::LCMS2": ["movie/render"],
    "PkgConfig::LIBRSVG": ["cli/picture/rsvg"],
    "Qt6::Core": ["SharedFiles", "check", "cli", "app"],
    "Qt6::Widgets": ["app", "SharedFiles/alerts", "SharedFiles/analytics"],
    "Qt6::Network": ["app", "SharedFiles/analytics"],
    "Qt6::Multimedia": ["app/player/device"],
    "CLI11::CLI11": ["cli"],
    "nlohmann_json::nlohmann_json": ["cli"],
}
BRINGS = {"Qt6::Widgets": {"Qt6::Core"}, "Qt6::Network": {"Qt6::Core"}, "Qt6::Multimedia": {"Qt6::Core"}}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
CALL = re.compile(r"\b(lumacheck_room|lumacheck_module|target_link_libraries)\(([^()]*)\)")
KEYWORDS = {"PUBLIC", "PRIVATE", "LIBS", "FILES", "OUTPUT_NAME", "INTERFACE"}


def target_of(folder):
    return folder.replace("SharedFiles/", "shared/").replace("/", "_").lower()


class Room:
    def __init__(self, root, folder):
        self.folder, self.target = folder, target_of(folder)
        self.public, self.private, self.programs = set(), set(), set()
        self.files = sorted(file for file in (root / folder).iterdir() if file.suffix in (".h", ".cpp"))
        for call, words in CALL.findall(re.sub(r"#[^\n]*", "", (root / folder / "CMakeLists.txt").read_text())):
            self.take(call, words.split())

    def take(self, call, words):
        if call == "target_link_libraries":  # a program's, or all that the folder makes when it stands in a function
            lists = defaultdict(lambda: self.private if words[0] == "${name}" else self.programs)
        else:
            lists = defaultdict(set, PUBLIC=self.public, PRIVATE=self.private, LIBS=self.public)
        links = set()
        for word in words:
            if word in KEYWORDS:
                links = lists[word]
            elif word != "lumacheck_options" and not word.startswith("$"):
                links.add(word)

    def links_for(self, file):
        if file.suffix == ".h":
            return self.public
        return self.public | self.private | (self.programs if file.name == "main.cpp" else set())


def rooms_of(root):
    lists = sorted(file for floor in FLOORS for file in (root / floor).rglob("CMakeLists.txt"))
    made = [Room(root, file.parent.relative_to(root).as_posix()) for file in lists
            if re.search(r"\b(lumacheck_room|lumacheck_module)\(", file.read_text())]
    return {room.target: room for room in made}


class House:
    def __init__(self, root):
        self.root, self.rooms = root, rooms_of(root)

    def brought(self, links):
        """What may be included of what is linked: itself, and what it brings along publicly."""
        seen, waiting = set(), list(links)
        while waiting:
            each = waiting.pop()
            if each not in seen:
                seen.add(each)
                waiting.extend(self.rooms[each].public if each in self.rooms else BRINGS.get(each, ()))
        return seen

    def breaches(self):
        yield from self.folders_without_room()
        yield from self.circles({room.target: room.public | room.private for room in self.rooms.values()}, "rooms")
        for room in self.rooms.values():
            yield from self.wrong_links(room)
            if len(room.files) > MOST_FILES:
                yield f"{room.folder}: {len(room.files)} files; a room has {MOST_FILES} at most"
            for file in room.files:
                yield from self.wrong_includes(room, file)
        yield from self.circles(self.units(), "units")

    def folders_without_room(self):
        known = {room.folder for room in self.rooms.values()}
        for floor in FLOORS:
            for file in sorted((self.root / floor).rglob("*")):
                folder = file.parent.relative_to(self.root).as_posix()
                if file.suffix in (".h", ".cpp") and folder not in known:
                    yield f"{file.relative_to(self.root).as_posix()}: lies in no room"

    def wrong_links(self, room):
        floor = room.folder.split("/")[0]
        for link in sorted(room.public | room.private):
            other = self.rooms[link].folder.split("/")[0] if link in self.rooms else None
            if other and (FLOORS.index(other) > FLOORS.index(floor) or (floor, other) in BESIDE):
                yield f"{room.folder}: links {link}, which it may not look up to"
            allowed = RESERVED.get(link)
            if allowed and not any(room.folder == place or room.folder.startswith(place + "/") for place in allowed):
                yield f"{room.folder}: links {link}, which is reserved for {', '.join(allowed)}"

    def wrong_includes(self, room, file):
        may = self.brought(room.links_for(file)) | {room.target}
        text = file.read_text(encoding="utf-8")
        for found in INCLUDE.finditer(text):
            breach = self.judge(found.group(1), found.group(2), may)
            if breach:
                line = text.count("\n", 0, found.start(2)) + 1
                yield f"{file.relative_to(self.root).as_posix()}:{line}: includes {found.group(2)}: {breach}"

    def judge(self, kind, header, may):
        if kind == "<":
            library = next((name for pattern, name in LIBRARIES if re.match(pattern, header)), None)
            return f"{library} is not linked" if library and library not in may else None
        if header in GENERATED:
            return None if GENERATED[header] in may else f"{GENERATED[header]} is not linked"
        if not (self.root / header).is_file():
            return "not there; includes are written from the root"
        target = target_of(pathlib.PurePath(header).parent.as_posix())
        if target not in self.rooms:
            return "nothing the programs are made of may include that"
        return None if target in may else f"{target} is not linked"

    def units(self):
        """A unit is a header with the source of its name; which others its header includes."""
        graph = {}
        for room in self.rooms.values():
            for file in room.files:
                if file.suffix == ".h":
                    graph[file.relative_to(self.root).as_posix()] = {
                        header for kind, header in INCLUDE.findall(file.read_text(encoding="utf-8")) if kind == '"'}
        return graph

    @staticmethod
    def circles(graph, what):
        """The first circle that there is."""
        try:
            graphlib.TopologicalSorter({node: sorted(graph[node]) for node in sorted(graph)}).prepare()
        except graphlib.CycleError as error:
            yield f"{what} in a circle: {' -> '.join(reversed(error.args[1]))}"

    def storeys(self):
        """The rooms, each after all that it links."""
        told, order = set(), []

        def tell(target):
            if target not in told:
                told.add(target)
                for link in sorted((self.rooms[target].public | self.rooms[target].private) & set(self.rooms)):
                    tell(link)
                order.append(self.rooms[target])

        for target in sorted(self.rooms, key=lambda each: FLOORS.index(self.rooms[each].folder.split("/")[0])):
            tell(target)
        return order


def main():
    named = [word for word in sys.argv[1:] if not word.startswith("--")]
    house = House(pathlib.Path(named[0] if named else pathlib.Path(__file__).resolve().parent.parent))
    found = list(house.breaches())
    if "--graph" in sys.argv[1:]:
        for room in house.storeys():
            links = sorted((room.public | room.private) - {"movie", "lumacheck_options"} | ({"movie"} & room.public))
            print(f"{room.folder:28} {len(room.files):3} files  {' '.join(links)}")
    print("\n".join(found) if found else "The layers hold.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

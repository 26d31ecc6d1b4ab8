#!/usr/bin/env python3
"""Mutation testing: changes the product line by line, and tells which changes no test notices.

usage: mutation_testing.py [options] FOLDER...

Each folder (or source file) gets --count changes, or as many as FOLDER=N says, spread over its files, one at a time: another
comparison, another number, a call that is not made, another text. A change that does not compile does not count; one after which a
test fails, crashes or hangs is killed; one that survives is printed with its place. tools/mutation/equivalent.json names
those that change nothing that could be noticed, each with the reason; they are not tried.

It works in copies of the tree under build/mutation, as the tree stands, whatever is not committed included.
Exits 1 when more than --at-most percent of the changes survive, 2 when there is nothing to measure.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import signal
import sys
import threading

sys.dont_write_bytecode = True
from mutation import mutations, trials  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What tests a folder, in the order in which it is run; the longest beginning of a path counts.
TESTED_BY = {
    "check/": ["test_check", "test_checked_frames"],
    "check/Color": ["test_check_analysis", "test_check", "test_checked_frames"],
    "check/Frame": ["test_check_analysis", "test_checked_frames"],
    "diagnosis/": ["test_diagnosis"],
    "SharedFiles/timecode/": ["test_shared_timecode"],
    "app/": ["test_window_texts", "test_window", "ctest:Translations.AgreeWithTheSources"],
    "app/LumacheckAppDelegate": ["test_window", "test_window_scan", "ctest:Translations.AgreeWithTheSources"],
    "app/MainInterface": ["test_window_texts", "test_window", "test_window_scan",
                          "ctest:Translations.AgreeWithTheSources"],
    "app/main.cpp": ["test_window_program", "test_window_quitting"],
    "app/messages/": ["test_messages", "test_window", "ctest:Translations.AgreeWithTheSources"],
    "app/player/": ["test_playback_clock", "test_sound_player", "test_movie_player", "test_window"],
    "app/player/device/": ["test_sound_device"],
    "app/scan/": ["test_timeline", "test_window_scan", "ctest:Translations.AgreeWithTheSources"],
    "app/start/": ["test_window", "test_window_program", "test_window_translations", "test_window_quitting"],
    "app/verdict/": ["test_verdict", "test_window", "ctest:Translations.AgreeWithTheSources"],
    "movie/save/": ["test_movie_save", "test_movie_save_crashes"],
}
SLOW = 30  # seconds above three times what a program takes, after which it hangs


def programs_for(path):
    beginnings = [beginning for beginning in TESTED_BY if path.startswith(beginning)]
    if not beginnings:
        raise trials.Refused(f"{path}: no test programs are known for it; --tests names some")
    return TESTED_BY[max(beginnings, key=len)]


def sources(root, folder):
    place = root / folder
    found = sorted(place.rglob("*.cpp")) if place.is_dir() else [place] if place.is_file() else []
    if not found:
        raise trials.Refused(f"{folder}: no sources there")
    return [path.relative_to(root).as_posix() for path in found]


def candidates(root, folder, seed):
    """All changes of a folder, the first ones to be tried first."""
    return mutations.spread(
        [each for path in sources(root, folder) for each in mutations.mutations_of(path, (root / path).read_text("utf-8"))],
        seed,
    )


def read_equivalents(path):
    """The names of the changes that nothing could notice."""
    entries = json.loads(path.read_text("utf-8")) if path.is_file() else []
    return {(each["file"], each["line"], each["becomes"]) for each in entries if each["reason"]}


class Session:
    """Tries changes until enough of each folder count."""

    def __init__(self, options, equivalents):
        self.options, self.equivalents = options, equivalents
        self.lock = threading.Lock()
        self.queues = [iter(candidates(options.root, folder, options.seed)) for folder in options.folders]
        self.wanted = list(options.folders.values())
        self.results = {"killed": [], "survived": [], "equivalent": [], "did not compile": []}
        self.store = options.work / "verdicts.json"
        self.known = dict(self.read_verdicts()) if options.again else {}
        self.limits = {}

    def read_verdicts(self):
        """What the run before found, survivors aside."""
        if self.store.is_file():
            for verdict, *key in json.loads(self.store.read_text("utf-8")):
                if verdict in ("killed", "did not compile"):
                    yield tuple(key), verdict

    def programs(self, mutation):
        return self.options.tests or programs_for(mutation.path)

    def next(self):
        """The next change to try, with the number of its folder; None at the end. One in hand counts until it is known."""
        with self.lock:
            for folder, queue in enumerate(self.queues):
                while self.wanted[folder] > 0:
                    mutation = next(queue, None)
                    if mutation is None:
                        break
                    verdict = "equivalent" if mutation.key in self.equivalents else self.known.get(mutation.key)
                    if verdict:
                        self.results[verdict].append(mutation)
                    if verdict in (None, "killed"):
                        self.wanted[folder] -= 1
                    if verdict is None:
                        return folder, mutation
        return None

    def record(self, folder, mutation, noticed):
        verdict = "did not compile" if noticed is False else "killed" if noticed else "survived"
        with self.lock:
            self.results[verdict].append(mutation)
            if noticed is False:
                self.wanted[folder] += 1
            by = f" by {noticed}" if verdict == "killed" else ""
            print(f"{verdict}{by}: {mutation}", file=sys.stderr, flush=True)
            self.write_verdicts()

    def write_verdicts(self):
        verdicts = [(verdict, *each.key) for verdict, found in self.results.items() for each in found]
        self.store.write_text(json.dumps(verdicts, indent=1), "utf-8")

    def work(self, workplace):
        while task := self.next():
            folder, mutation = task
            self.record(folder, mutation, workplace.trial(mutation, self.programs(mutation), self.limits))

    def prepare(self, workplaces):
        """Builds and runs what will be needed, unchanged: the time it takes tells what a hang is."""
        needed = [program for folder in self.options.folders for path in sources(self.options.root, folder)
                  for program in (self.options.tests or programs_for(path))]  # fmt: skip
        for workplace in workplaces:
            workplace.configure()
        taken = workplaces[0].baseline(dict.fromkeys(needed))
        self.limits = {program: 3 * seconds + SLOW for program, seconds in taken.items()}
        self.limits = {program: self.options.limit or limit for program, limit in self.limits.items()}

    def told(self):
        """The survivors, and the figure. What was tried is what compiles and is not known to be equivalent."""
        counts = {verdict: len(found) for verdict, found in self.results.items()}
        tried = counts["killed"] + counts["survived"]
        for mutation in sorted(self.results["survived"], key=lambda each: (each.path, each.number)):
            print(f"survived: {mutation}")
        share = 100 * counts["survived"] / tried if tried else 0
        print(
            f"{tried} changes: {counts['killed']} killed, {counts['survived']} survived ({share:.1f} %);"
            f" besides, {counts['equivalent']} equivalent, {counts['did not compile']} did not compile"
        )
        return tried, share


def arguments(given):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folders", nargs="+", metavar="FOLDER[=N]", help="a folder of the tree, or one source file")
    parser.add_argument("--count", type=int, default=60, help="changes that count, for each folder (%(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="another seed, another choice (%(default)s)")
    parser.add_argument("--list", action="store_true", help="print what would be tried, and try nothing")
    parser.add_argument("--again", action="store_true", help="believe what the run before killed, try what survived it")
    parser.add_argument("--tests", type=lambda names: names.split(","), help="test programs to run instead, with commas")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many at a time (%(default)s)")
    parser.add_argument("--limit", type=float, help="seconds after which a test program hangs, instead of a measured limit")
    parser.add_argument("--at-most", type=float, default=5, help="percent that may survive (%(default)s)")
    parser.add_argument("--preset", default="release", help="CMake preset to build with (%(default)s)")
    parser.add_argument("--root", type=pathlib.Path, default=ROOT, help="the tree (this one)")
    parser.add_argument("--work", type=pathlib.Path, help="where the copies stand (build/mutation)")
    parser.add_argument("-D", dest="definitions", action="append", default=[], help="as cmake takes it")
    options = parser.parse_args(given)
    options.root = options.root.resolve()
    named = (name.partition("=") for name in options.folders)
    try:
        options.folders = {folder: int(count) if count else options.count for folder, _, count in named}
    except ValueError:
        parser.error("FOLDER=N takes a number")
    options.work = (options.work or options.root / "build" / "mutation").resolve()
    return options


def measure(options, session):
    options.work.mkdir(parents=True, exist_ok=True)
    definitions = ["CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", "CMAKE_UNITY_BUILD=OFF", *options.definitions]
    workplaces = [trials.Workplace(options.root, options.work / str(i), options.preset, definitions) for i in range(options.jobs)]

    def stop(*_):
        for workplace in workplaces:
            workplace.stop()

    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, stop)
    try:
        session.prepare(workplaces)
        with concurrent.futures.ThreadPoolExecutor(len(workplaces)) as pool:
            list(pool.map(session.work, workplaces))
    except KeyboardInterrupt:
        print("Interrupted.", file=sys.stderr)
        session.told()
        return 130
    finally:
        stop()
    tried, share = session.told()
    return 2 if tried == 0 else 1 if share > options.at_most else 0


def main(given=None):
    options = arguments(given)
    try:
        session = Session(options, read_equivalents(options.root / "tools" / "mutation" / "equivalent.json"))
        if options.list:
            for queue, wanted in zip(session.queues, session.wanted):
                for _, mutation in zip(range(wanted), queue):
                    print(("equivalent: " if mutation.key in session.equivalents else "") + str(mutation))
            return 0
        return measure(options, session)
    except trials.Refused as reason:
        print(f"mutation_testing: {reason}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Times whole runs of the command against tools that do the same work, and prints the ratios.

usage: whole_process.py [--build DIR] [--pairs N] [--movies DIR] [ROW ...]

ROW is one of: prores h264 info length memory save copy (default: all). The movies are made with ffmpeg once and kept. Every figure
is the median over N pairs (default 15): each pair runs both commands, in alternating order, so that what else the machine
does falls on both alike.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
SCENE = "testsrc2=size={size}:rate=24,noise=alls=5:allf=t:all_seed=3,eq=saturation=0.6"
TAGS = ["-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709"]


def quiet(command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y", *map(str, arguments)], check=True)


class Movies:
    """The movies the rows run on, made when first asked for."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir(parents=True, exist_ok=True)

    def make(self, name, *arguments):
        path = self.folder / name
        if not path.exists():
            part = self.folder / ("part-" + name)
            ffmpeg(*arguments, part)
            part.rename(path)
        return path

    def prores(self, which, size="1920x1080"):
        scene = SCENE.format(size=size)
        return self.make(f"prores-{size}-{which}.mov", "-f", "lavfi", "-i", scene, "-t", "2", "-vf", "format=yuv422p10le",
                         "-c:v", "prores_ks", "-profile:v", "3", *TAGS)

    def h264(self, which):
        scene = SCENE.format(size="1920x1080")
        return self.make(f"h264-{which}.mov", "-f", "lavfi", "-i", scene, "-t", "10", "-vf", "format=yuv420p", "-c:v",
                         "libx264", "-preset", "veryfast", "-crf", "22", "-g", "120", "-bf", "3", *TAGS)

    def tagged(self, gamma=None):
        atoms = ["-movflags", "+write_colr+write_gama", "-mov_gamma", gamma] if gamma else ["-movflags", "+write_colr"]
        return self.make(f"gamma-{gamma}.mov", "-f", "lavfi", "-i", "color=gray:size=64x64:rate=24", "-frames:v", "1", "-vf",
                         "format=yuv422p10le", "-c:v", "prores_ks", *TAGS, *atoms)

    def large(self):
        """At least 2 GB."""
        short = self.prores("a")
        return self.repeated(short, -(-(2 << 30) // short.stat().st_size))

    def repeated(self, movie, times):
        return self.make(f"{movie.stem}-x{times}.mov", "-stream_loop", times - 1, "-i", movie, "-c", "copy")


def seconds_of(command):
    started = time.perf_counter()
    quiet(command)
    return time.perf_counter() - started


def paired(ours, theirs, pairs):
    """Median seconds of both, and the median of the pairs' ratios."""
    for command in (ours, theirs):
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        if done.returncode not in (0, 1):
            sys.exit(f"{command[0]} failed with {done.returncode}: {done.stderr}")
    return in_turns(lambda turn: ours, theirs, pairs)


def in_turns(ours, theirs, pairs, prepare=lambda: None):
    """The same of commands that are known to work; `ours` tells its own of each turn."""
    times = []
    for turn in range(pairs):
        prepare()
        if turn % 2:
            second, first = seconds_of(theirs), seconds_of(ours(turn))
        else:
            first, second = seconds_of(ours(turn)), seconds_of(theirs)
        times.append((first, second))
    return (statistics.median(a for a, _ in times), statistics.median(b for _, b in times),
            statistics.median(a / b for a, b in times))


def report(what, ours, theirs, ratio, goal):
    verdict = "met" if ratio <= goal else "MISSED"
    print(f"{what:<58} {ours * 1000:8.1f} ms {theirs * 1000:8.1f} ms   ratio {ratio:6.3f}   goal {goal:4.2f}  {verdict}", flush=True)


def bytes_written_by(command):
    """What a process gives to write calls in all its life, and how much of it the file system was told to put on the disk, whole
    pages each: read from the process when it has ended and is not yet gone."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
    counts = dict(line.split(": ") for line in pathlib.Path(f"/proc/{process.pid}/io").read_text().splitlines())
    if process.wait() != 0:
        sys.exit(f"{command[0]} failed with {process.returncode}")
    return int(counts["wchar"]), int(counts["write_bytes"])


def movie_atom_size(path):
    """Of the first moov among the top-level atoms."""
    with open(path, "rb") as movie:
        while len(header := movie.read(16)) >= 8:
            size = int.from_bytes(header[:4], "big")
            size = int.from_bytes(header[8:], "big") if size == 1 else size
            if header[4:8] == b"moov":
                return size
            movie.seek(size - len(header), os.SEEK_CUR)
    sys.exit(f"{path} has no movie atom")


def two_frames(first, second, at, out):
    """The one ffmpeg command that takes the same two frames."""
    scale = ["-frames:v", "1", "-vf", "scale=320:240:flags=area"]
    return ["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y", "-ss", str(at), "-i", str(first), "-ss", str(at),
            "-i", str(second), "-map", "0:v:0", *scale, str(out / "first.bmp"), "-map", "1:v:0", *scale, str(out / "second.bmp")]


def rows(lumacheck, movies, pairs):
    out = movies.folder

    def check(first, second, at):
        return [lumacheck, "check", str(first), str(second), "--at", str(at), "--exit-zero"]

    def prores():
        a, b = movies.prores("a"), movies.prores("b")
        report("check, two 1080p ProRes : ffmpeg, same two frames",
               *paired(check(a, b, 1), two_frames(a, b, 1, out), pairs), 0.35)

    def h264():
        a, b = movies.h264("a"), movies.h264("b")
        report("check, two long-GOP H.264, mid-GOP : ffmpeg, same two frames",
               *paired(check(a, b, 7.5), two_frames(a, b, 7.5, out), pairs), 0.55)

    def info():
        a, b = str(movies.prores("a")), str(movies.h264("a"))
        report("info : mediainfo, same two files", *paired([lumacheck, "info", a, b], ["mediainfo", a, b], pairs), 1.0)

    def length():
        short_a, short_b = movies.h264("a"), movies.h264("b")
        long_a, long_b = movies.repeated(short_a, 60), movies.repeated(short_b, 60)
        report("check of 600 s : check of 10 s",
               *paired(check(long_a, long_b, 577.5), check(short_a, short_b, 7.5), pairs), 1.25)

    def memory():
        a, b = movies.prores("a", "3840x2160"), movies.prores("b", "3840x2160")
        process = subprocess.Popen(check(a, b, 1), stdout=subprocess.DEVNULL)
        _, _, usage = os.wait4(process.pid, 0)
        print(f"{'check of two 4K ProRes movies, peak resident memory':<58} {usage.ru_maxrss / 1024:8.1f} MB{'':>28}"
              f"   goal  400  {'met' if usage.ru_maxrss < 400 * 1024 else 'MISSED'}", flush=True)

    def save():
        # With and without a gamma level by turns, so that every save makes the movie atom larger or smaller.
        big, sources = movies.large(), [str(movies.tagged("2.2")), str(movies.tagged())]
        target = out / "save-target.mov"
        theirs = ["sh", "-c", f"ffmpeg -v error -nostdin -y -i '{big}' -map 0 -c copy '{out}/save-theirs.mov' && sync '{out}/save-theirs.mov'"]
        subprocess.run(["cp", "--reflink=never", big, target], check=True)
        os.sync()

        def ours(turn):
            return [lumacheck, "sync", sources[turn % 2], str(target)]

        report("metadata save of a 2 GB movie : ffmpeg -c copy and sync", *in_turns(ours, theirs, pairs), 0.05)
        written, pages = bytes_written_by(ours(pairs))
        allowed = 2 * movie_atom_size(target) + (64 << 10)
        print(f"{'bytes written by one such save':<58} {written:8d} ({pages} in pages)   goal {allowed}"
              f"  {'met' if written <= allowed else 'MISSED'}", flush=True)

    def copy():
        big, source = movies.large(), str(movies.tagged("1.8"))
        ours = [lumacheck, "sync", source, str(big), "--save-as", str(out / "copy-ours.mov")]
        theirs = ["sh", "-c", f"cp --reflink=never '{big}' '{out}/copy-theirs.mov' && sync '{out}/copy-theirs.mov'"]

        def clear():
            for name in ("copy-ours.mov", "copy-theirs.mov"):
                (out / name).unlink(missing_ok=True)
            os.sync()

        report("flattened copy of a 2 GB movie : cp --reflink=never and sync",
               *in_turns(lambda turn: ours, theirs, pairs, clear), 1.1)

    return {"prores": prores, "h264": h264, "info": info, "length": length, "memory": memory, "save": save, "copy": copy}


def parser_of(page):
    """A parser with the options that every bench has."""
    ask = argparse.ArgumentParser(description=page, formatter_class=argparse.RawDescriptionHelpFormatter)
    ask.add_argument("--build", type=pathlib.Path, default=TOP / "build" / "release")
    ask.add_argument("--movies", type=pathlib.Path, default=TOP / "build" / "bench-movies")
    return ask


def run_rows(table, wanted, ask):
    """The rows that are wanted, or all, in the order of the table; one that it has not ends the program by `ask`."""
    unknown = set(wanted) - set(table)
    if unknown:
        ask.error(f"no row is called {', '.join(sorted(unknown))}; there are {', '.join(table)}")
    for name, run in table.items():
        if not wanted or name in wanted:
            run()


def main():
    ask = parser_of(__doc__)
    ask.add_argument("--pairs", type=int, default=15)
    ask.add_argument("row", nargs="*")
    args = ask.parse_args()
    run_rows(rows(str(args.build / "bin" / "lumacheck"), Movies(args.movies), args.pairs), args.row, ask)


if __name__ == "__main__":
    main()

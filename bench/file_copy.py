#!/usr/bin/env python3
"""Times a verified copy to three destinations against the system's own tools, and prints the ratio and the memory.

usage: file_copy.py [--build DIR] [--pairs N] [--size MIB] [--folder DIR]

The tools: tee to the three, sync of the three, sha256sum of the source and of each. The copy flushes its files to the
disk too, and drops them from memory before it reads them back, which the tools do not. The ratio is the median over N
pairs (default 5), run in alternating order.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parent.parent


def timed(command):
    started = time.monotonic()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return time.monotonic() - started


def peak_memory(command):
    """Peak resident set of a run of bench_file_copy in MiB, as it prints it."""
    return int(subprocess.run(command, capture_output=True, text=True, check=True).stdout) / 1024


def make_source(path, size):
    block = os.urandom(1 << 20)
    with open(path, "wb") as source:
        for number in range(size):
            source.write(number.to_bytes(8, "little") + block[8:])
        os.fsync(source.fileno())


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--build", type=pathlib.Path, default=TOP / "build/dev")
    options.add_argument("--pairs", type=int, default=5)
    options.add_argument("--size", type=int, default=2048, help="MiB")
    options.add_argument("--folder", type=pathlib.Path, default=None, help="where the files lie (default: a new folder in the build)")
    chosen = options.parse_args()
    program = chosen.build / "bin/bench_file_copy"
    folder = pathlib.Path(tempfile.mkdtemp(dir=chosen.folder or chosen.build))
    try:
        source, copies = folder / "source", [folder / f"copy{number}" for number in range(3)]
        make_source(source, chosen.size)

        def ours():
            return timed([program, source, *copies])

        tools_script = 'tee "$2" "$3" "$4" <"$1" >/dev/null && sync "$2" "$3" "$4" && sha256sum "$1" "$2" "$3" "$4"'

        def tools():
            return timed(["sh", "-c", tools_script, "sh", source, *copies])

        pairs = []
        for number in range(chosen.pairs):
            times = {}
            for run in (ours, tools) if number % 2 == 0 else (tools, ours):
                for copy in copies:
                    copy.unlink(missing_ok=True)
                os.sync()
                times[run] = run()
            pairs.append((times[ours], times[tools]))
        ratio = statistics.median(mine / theirs for mine, theirs in pairs)
        print(f"verified copy of {chosen.size} MiB to three: {statistics.median(p[0] for p in pairs):.2f} s, the tools "
              f"{statistics.median(p[1] for p in pairs):.2f} s, ratio {ratio:.2f} (goal 1.15), {chosen.pairs} pairs")
        idle, busy = peak_memory([program]), peak_memory([program, source, *copies])
        print(f"memory: {busy:.1f} MiB at its peak, {busy - idle:.1f} above idle (goal under 16)")
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()

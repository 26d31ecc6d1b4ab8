#!/usr/bin/env python3
"""Measures the window, offscreen, with two 1080p ProRes movies and then two H.264 ones.

usage: window.py [--build DIR] [--movies DIR] [--seconds N]

Prints what bench_window prints, and for the check what the command takes on the same two files less its start-up.
"""
import statistics
import subprocess

import whole_process


def median_of(command, runs=9):
    return 1000 * statistics.median(whole_process.seconds_of(command) for _ in range(runs))


def main():
    parser = whole_process.parser_of(__doc__)
    parser.set_defaults(build=whole_process.TOP / "build" / "dev")  # which builds bench_window
    parser.add_argument("--seconds", type=int, default=10)
    options = parser.parse_args()
    movies = whole_process.Movies(options.movies)
    times = 2 + options.seconds // 2
    pairs = {
        "ProRes": [movies.repeated(movies.prores(which), times) for which in "ab"],
        "H.264": [movies.repeated(movies.h264(which), 2) for which in "ab"],
    }
    lumacheck = str(options.build / "bin/lumacheck")
    for name, (source, dest) in pairs.items():
        print(f"== {name}", flush=True)
        subprocess.run([options.build / "bin/bench_window", source, dest, str(options.seconds)], check=True)
        check = median_of([lumacheck, "check", str(source), str(dest), "--exit-zero"])
        start = median_of([lumacheck, "--version"])
        print(f"check by the command, less its start-up {check - start:5.1f} ms", flush=True)


if __name__ == "__main__":
    main()

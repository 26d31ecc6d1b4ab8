#!/usr/bin/env python3
"""Plays two 1080p movies side by side without a window, and prints the share of frames shown in time.

usage: playback.py [--build DIR] [--movies DIR] [--seconds N] [--size WxH] [ROW ...]

ROW is one of: prores h264 (default: both). The movies are made with ffmpeg once and kept.
"""
import os
import subprocess

from whole_process import SCENE, TAGS, Movies, parser_of

CODECS = {
    "prores": ["-vf", "format=yuv422p10le", "-c:v", "prores_ks", "-profile:v", "3"],
    "h264": ["-vf", "format=yuv420p", "-c:v", "libx264", "-preset", "veryfast", "-crf", "22", "-g", "120", "-bf", "3"],
}


def movie_of(movies, codec, which, seconds):
    scene = SCENE.format(size="1920x1080").replace("rate=24", "rate=25").replace("all_seed=3", f"all_seed={which}")
    # Three seconds of their own, repeated: long enough to defeat no cache that matters, quick to make.
    part = movies.make(f"play-{codec}-{which}.mov", "-f", "lavfi", "-i", scene, "-t", "3", *CODECS[codec], *TAGS)
    return movies.repeated(part, seconds // 3 + 2)


def main():
    parser = parser_of(__doc__)
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--size", default="940x530")
    parser.add_argument("rows", nargs="*", default=list(CODECS), metavar="ROW")
    options = parser.parse_args()
    movies = Movies(options.movies)
    for codec in options.rows:
        files = [str(movie_of(movies, codec, which, options.seconds)) for which in (1, 2)]
        print(f"two 1080p {codec} movies at 25 frames a second, {os.cpu_count()} processors", flush=True)
        subprocess.run([str(options.build / "bin" / "bench_playback"), str(options.seconds), options.size, *files], check=True)


if __name__ == "__main__":
    main()

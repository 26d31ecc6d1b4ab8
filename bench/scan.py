#!/usr/bin/env python3
"""Holds whole scans against decoding alone, in one run, and prints the ratios, the memory and how the time grows.

usage: scan.py [--build DIR] [--movies DIR] [--photos DIR] [--pairs N] [--quick] [ROW ...]

ROW is one of: aligned probed memory growth (default: all). The movies are made with ffmpeg once and kept: 1080p, 24 frames a
second, shots that pan, of the photographs in a folder (JPEG and PNG, 1920 x 1080 or larger), else of fractals. A ratio is the
speed of `lumacheck scan` over that of bench_decode, which decodes both movies by the same library on the same threads: the least
time of N runs each (default 3), by turns, so that what else the machine does falls on both. On a machine that does more than
this, a scan has one thread more to get a share of it with. --quick takes movies of 40 s for 5 minutes, of 2 minutes for an hour,
and of 80 s for 10 minutes; finding where to begin weighs more there.
"""
import os
import pathlib
import subprocess
import sys

import whole_process

RATE = 24
SHOT = 5  # seconds
H264 = ["-c:v", "libx264", "-preset", "veryfast", "-g", "48", "-bf", "2", "-pix_fmt", "yuv420p", *whole_process.TAGS]
PRORES = ["-c:v", "prores_ks", "-profile:v", "2", "-pix_fmt", "yuv422p10le", *whole_process.TAGS]


def pan(number):
    """Scrolls over a larger picture, each in a way of its own."""
    there, back = f"t/{SHOT}", f"(1-t/{SHOT})"
    aside = number * 0.618 % 1
    across, down = [(there, there), (back, aside), (aside, there), (back, there)][number % 4]
    return f"crop=1920:1080:x='(iw-1920)*{across}':y='(ih-1080)*{down}'"


class ScanMovies(whole_process.Movies):
    """A master of some minutes, its exports, and repetitions of these."""

    def __init__(self, folder, photos, seconds):
        super().__init__(folder)
        self.photos = sorted(each for each in photos.iterdir() if each.suffix.lower() in (".jpg", ".jpeg", ".png")) if photos else []
        self.seconds = seconds

    def shot(self, number):
        grain = f"noise=alls=3:allf=t:all_seed={number},setsar=1"
        if self.photos:
            photo, again = self.photos[number % len(self.photos)], number // len(self.photos)
            scene = ["-loop", "1", "-framerate", RATE, "-i", photo]
            larger = f"scale={2304 + 192 * again}:-2:flags=area"
        else:
            zoom = 0.3 * 0.9 ** number
            scene = ["-f", "lavfi", "-i", f"mandelbrot=size=1152x648:rate={RATE}:start_scale={zoom}:end_scale={zoom * 0.99}"]
            larger = "scale=2304:1296"
        return self.make(f"scan-shot-{number}.mov", *scene, "-t", SHOT, "-vf", f"{larger},{pan(number)},{grain}", *PRORES)

    def master(self):
        shots = [self.shot(number) for number in range(-(-self.seconds // SHOT))]
        names = self.folder / "scan-shots.txt"
        names.write_text("".join(f"file '{shot.name}'\n" for shot in shots))
        return self.make(f"scan-master-{self.seconds}.mov", "-f", "concat", "-i", names, "-c", "copy")

    def export(self, crf, skipped=0.0):
        name = f"scan-export-{self.seconds}-crf{crf}-from{skipped}.mov"
        return self.make(name, "-ss", skipped, "-i", self.master(), *H264, "-crf", crf)

    def low_cost(self, seconds, crf):
        """So long, at little cost: one minute of small motion, over and over."""
        scene = f"mandelbrot=size=1152x648:rate={RATE}:start_scale=0.1:end_scale=0.099"
        minute = self.make(f"scan-minute-crf{crf}.mov", "-f", "lavfi", "-i", scene, "-t", 60, "-vf",
                           "scale=2304:1296,crop=1920:1080:x='(iw-1920)*t/60':y='(ih-1080)*t/60'", *H264, "-crf", crf)
        return minute if seconds <= 60 else self.repeated(minute, seconds // 60)


def seconds_of(command):
    return whole_process.seconds_of([str(each) for each in command])


def least_by_turns(ours, theirs, turns):
    times = [(seconds_of(ours), seconds_of(theirs)) if turn % 2 == 0 else (seconds_of(theirs), seconds_of(ours))[::-1]
             for turn in range(turns)]
    return min(a for a, _ in times), min(b for _, b in times)


def peak_megabytes(command):
    process = subprocess.Popen([str(each) for each in command], stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if os.waitstatus_to_exitcode(status) not in (0, 1):
        sys.exit(f"{command} failed")
    return usage.ru_maxrss / 1024


def verdict(met):
    return "met" if met else "MISSED"


def rows(build, movies, options):
    lumacheck, decode = build / "bin/lumacheck", build / "bin/bench_decode"
    hour, ten, one = (120, 80, 60) if options.quick else (3600, 600, 60)

    def scan(source, dest):
        return [lumacheck, "scan", source, dest]

    def held(what, source, dest, goal):
        done = subprocess.run(list(map(str, scan(source, dest))), capture_output=True, text=True)
        if done.returncode not in (0, 1) or "Time map:" not in done.stdout:
            sys.exit(f"the scan of {source} and {dest} failed: {done.stdout}{done.stderr}")
        ours, theirs = least_by_turns(scan(source, dest), [decode, source, dest], options.pairs)
        print(f"{what:<48} scan {ours:7.2f} s  decoding {theirs:7.2f} s   ratio {theirs / ours:5.3f}   goal {goal:4.2f}  "
              f"{verdict(theirs / ours >= goal)}", flush=True)

    def aligned():
        held("H.264 : H.264, aligned by metadata", movies.export(17), movies.export(22), 0.9)
        held("ProRes : H.264, aligned by metadata", movies.master(), movies.export(22), 0.9)

    def probed():
        held("H.264 : H.264, trimmed, found by probing", movies.export(17), movies.export(22, 7.3), 0.75)
        held("ProRes : H.264, trimmed, found by probing", movies.master(), movies.export(22, 7.3), 0.75)

    def memory():
        usual = max(peak_megabytes(scan(movies.export(17), movies.export(22))),
                    peak_megabytes(scan(movies.master(), movies.export(22, 7.3))))
        print(f"{'peak memory of these':<48} {usual:7.1f} MB   goal  300  {verdict(usual <= 300)}", flush=True)
        part = max(one, hour // 12)
        short, long = (peak_megabytes(scan(movies.low_cost(each, 30), movies.low_cost(each, 34))) for each in (part, hour))
        print(f"{f'of {hour} s, and of {part} s':<48} {long:7.1f} MB, {short:.1f} MB   ratio {long / short:5.3f}   "
              f"goal 1.10  {verdict(long <= 1.1 * short)}", flush=True)

    def growth():
        pair = {each: scan(movies.low_cost(each, 30), movies.low_cost(each, 34)) for each in (ten, one)}
        longer, shorter = least_by_turns(pair[ten], pair[one], options.pairs)
        goal = 1.05 * ten / one
        print(f"{f'scan of {ten} s : scan of {one} s':<48} {longer:7.2f} s, {shorter:.2f} s   ratio {longer / shorter:5.2f}   goal {goal:.2f}  "
              f"{verdict(longer <= goal * shorter)}", flush=True)

    return {"aligned": aligned, "probed": probed, "memory": memory, "growth": growth}


def main():
    ask = whole_process.parser_of(__doc__)
    ask.set_defaults(build=whole_process.TOP / "build" / "dev")  # which builds bench_decode
    ask.add_argument("--photos", type=pathlib.Path)
    ask.add_argument("--pairs", type=int, default=3)
    ask.add_argument("--quick", action="store_true")
    ask.add_argument("row", nargs="*")
    options = ask.parse_args()
    movies = ScanMovies(options.movies.resolve(), options.photos, 40 if options.quick else 300)
    whole_process.run_rows(rows(options.build, movies, options), options.row, ask)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Holds the translations of the window and the sources together.

    check_translations.py TOP [LUPDATE ARGUMENT...]

TOP is the root of the tree. Refused are, in translations/*.ts:
  - what is unfinished or empty;
  - a translation that differs from its text in what is no language: places such as %1, the ellipsis, a colon or full
    stop at the end, lines, blanks around it, whether it has a mnemonic;
  - with LUPDATE, a command line that only lacks `-ts FILE`: texts that the sources have and the file has not, and the
    other way round.
In any case, in app/Subclasses/MovieReasons.cpp: patterns that no reason of the movie layer fits, and reasons for a frame that
cannot be had which are in no pattern.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

PLACE = re.compile(r"%(?:L?\d+|n)")
MNEMONIC = re.compile(r"&(?!&)\w")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')

# Where the reasons come from that a frame cannot be had.
REASON_FILES = [
    "movie/decode/DecoderModule.cpp",
    "movie/decode/LoadedModule.cpp",
    "movie/decode/ffmpeg/DecodingTrack.cpp",
    "movie/decode/ffmpeg/DemuxedDescription.cpp",
    "movie/decode/ffmpeg/DemuxerModule.cpp",
    "movie/decode/ffmpeg/FfmpegDecoder.cpp",
    "movie/decode/ffmpeg/FramePicture.cpp",
    "movie/decode/ffmpeg/SampleDecoder.cpp",
]


def messages(ts):
    """(context, text, translation, type) of every message of a file."""
    for context in ElementTree.parse(ts).getroot().iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            forms = translation.findall("numerusform") or [translation]
            for form in forms:
                yield context.findtext("name"), message.findtext("source"), form.text or "", translation.get("type")


def signature(text):
    """What a text and its translation have in common in every language."""
    ending = re.search(r"[.:…]*$", text).group()
    return {
        "places": sorted(set(PLACE.findall(text))),
        "mnemonic": bool(MNEMONIC.search(text)),
        "ending": ending,
        "ellipses": text.count("…"),
        "lines": text.count("\n"),
        "blanks around it": (text[:1].isspace(), text[-1:].isspace()),
    }


def breaches_of_file(ts):
    for context, text, translation, kind in messages(ts):
        where = f"{ts.name}: {context}: {text!r}"
        if kind in ("vanished", "obsolete"):
            yield f"{where} is kept although it is {kind}"
        elif kind == "unfinished" or not translation:
            yield f"{where} has no finished translation"
        else:
            theirs = signature(translation)
            yield from (f"{where}: other {what} in {translation!r}"
                        for what, ours in signature(text).items() if ours != theirs[what])


def texts_of(ts):
    return {(context, text) for context, text, _, kind in messages(ts) if kind not in ("vanished", "obsolete")}


def breaches_of_sources(ts, lupdate):
    with tempfile.TemporaryDirectory() as folder:
        updated = pathlib.Path(folder) / ts.name
        shutil.copyfile(ts, updated)
        subprocess.run([*lupdate, "-ts", str(updated)], check=True)
        committed, found = texts_of(ts), texts_of(updated)
    advice = "(the target update_translations brings it in line)"
    yield from (f"{ts.name}: {context}: {text!r} is missing {advice}" for context, text in sorted(found - committed))
    yield from (f"{ts.name}: {context}: {text!r} is in no source {advice}" for context, text in sorted(committed - found))


def literals(source):
    """The string literals of a C++ source, comments and includes left out."""
    code = re.sub(r"^\s*(?://.*|#\s*include.*)$", "", source, flags=re.M)
    return [found.replace('\\"', '"') for found in LITERAL.findall(code)]


def words(fragment):
    """A piece of a clause without the blanks, colons and quotes at which sources take it apart."""
    return fragment.strip(" :'\"")


def is_said(piece, said):
    """Whether some literal holds it, or one its beginning and another its end."""
    ends = [words(piece[len(start):]) for start in said if start and piece.startswith(start)]
    return any(piece in text for text in said) or any(end and end in text for end in ends for text in said)


def breaches_of_reasons(top):
    table = (top / "app/Subclasses/MovieReasons.cpp").read_text()
    patterns = [text.replace('\\"', '"')
                for text in re.findall(r'QT_TRANSLATE_NOOP\("MovieReasons",\s*"((?:[^"\\]|\\.)*)"\)', table)]
    said = [words(text) for path in sorted((top / "movie").rglob("*.cpp")) for text in literals(path.read_text())]
    for pattern in patterns:
        for piece in filter(None, map(words, PLACE.split(pattern))):
            if not is_said(piece, said):
                yield f"app/Subclasses/MovieReasons.cpp: no source of the movie layer says {piece!r}"
    for name in REASON_FILES:
        for text in literals((top / name).read_text()):
            for clause in map(words, text.split(": ")):
                if re.fullmatch(r"[a-z][^%=/]* [^%=/]*", clause) and not any(clause in pattern for pattern in patterns):
                    yield f"app/Subclasses/MovieReasons.cpp: nothing for {clause!r} of {name}"


def breaches(top, lupdate):
    for ts in sorted((top / "translations").glob("*.ts")):
        yield from breaches_of_file(ts)
        if lupdate:
            yield from breaches_of_sources(ts, lupdate)
    yield from breaches_of_reasons(top)


def main(arguments):
    if not arguments:
        sys.exit(__doc__)
    found = list(breaches(pathlib.Path(arguments[0]), arguments[1:]))
    print("\n".join(found), file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/env python3
"""Holds the translations of the window and the sources together.

    check_translations.py TOP [LUPDATE ARGUMENT...]

TOP is the root of the tree. Refused are, in translations/*.ts:
  - what is unfinished or empty;
  - a translation that differs from its text in what is no language: places such as %1, the ellipsis, a colon or full
    stop at the end, lines, blanks around it, whether it has a mnemonic;
  - with LUPDATE, a command line that only lacks `-ts FILE`: texts that the sources have and the file has not, and the
    other way round.
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


def breaches(top, lupdate):
    for ts in sorted((top / "translations").glob("*.ts")):
        yield from breaches_of_file(ts)
        if lupdate:
            yield from breaches_of_sources(ts, lupdate)


def main(arguments):
    if not arguments:
        sys.exit(__doc__)
    found = list(breaches(pathlib.Path(arguments[0]), arguments[1:]))
    print("\n".join(found), file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

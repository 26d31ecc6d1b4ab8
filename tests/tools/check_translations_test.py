#!/usr/bin/env python3
"""The check of the translations refuses what it is there to refuse."""
import pathlib
import stat
import subprocess
import sys
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_translations.py"


def message(text, translation, kind=""):
    kind = f' type="{kind}"' if kind else ""
    return f"<message><source>{text}</source><translation{kind}>{translation}</translation></message>"


def file_of(*messages):
    return f'<TS version="2.1"><context><name>Menu</name>{"".join(messages)}</context></TS>'


def run_on(ts, found=None):
    """`found`: what a tool that reads the sources would write."""
    with tempfile.TemporaryDirectory() as folder:
        top = pathlib.Path(folder)
        (top / "translations").mkdir()
        (top / "translations/x_de.ts").write_text(ts)
        lupdate = []
        if found is not None:
            (top / "found.ts").write_text(found)
            tool = top / "lupdate"
            tool.write_text(f'#!/bin/sh\ncp "{top}/found.ts" "$2"\n')
            tool.chmod(tool.stat().st_mode | stat.S_IXUSR)
            lupdate = [str(tool)]
        done = subprocess.run([sys.executable, TOOL, folder, *lupdate], capture_output=True, text=True)
        return done.returncode, done.stderr


class Translations(unittest.TestCase):
    def refuses(self, what, ts, **more):
        status, said = run_on(ts, **more)
        self.assertEqual(status, 1, said)
        self.assertIn(what, said)

    def accepts(self, ts, **more):
        status, said = run_on(ts, **more)
        self.assertEqual(status, 0, said)

    def test_accepts_what_agrees(self):
        for text, translation in [("&amp;Save As…", "Speichern &amp;unter…"), ("%1: play", "%1: abspielen"),
                                  ("%1 in %2.", "In %2: %1."), ("Save &amp;&amp; quit", "Speichern &amp;&amp; beenden"),
                                  ("Two\nlines", "Zwei\nZeilen")]:
            with self.subTest(text):
                self.accepts(file_of(message(text, translation)))

    def test_refuses_what_does_not(self):
        for what, text, translation in [("other places", "Saving %1", "Wird gespeichert"),
                                        ("other places", "%1 of %2", "%1 von %1"),
                                        ("other places", "%n file(s)", "Dateien"),
                                        ("other mnemonic", "&amp;Save", "Speichern"),
                                        ("other mnemonic", "Save", "&amp;Speichern"),
                                        ("other ending", "Save…", "Speichern"),
                                        ("other ending", "Built on:", "Beruht auf"),
                                        ("other ellipses", "Packing… %1", "Packen... %1"),
                                        ("other lines", "Two\nlines", "Zwei Zeilen"),
                                        ("other blanks", "Save", "Speichern ")]:
            with self.subTest(text):
                self.refuses(what, file_of(message(text, translation)))

    def test_refuses_what_is_unfinished_or_gone(self):
        self.refuses("no finished translation", file_of(message("Save", "", "unfinished")))
        self.refuses("no finished translation", file_of(message("Save", "Speichern", "unfinished")))
        self.refuses("no finished translation", file_of(message("Save", "")))
        self.refuses("it is vanished", file_of(message("Save", "Speichern", "vanished")))

    def test_refuses_a_text_that_only_the_sources_have(self):
        committed, added = message("Save", "Speichern"), message("Open", "", "unfinished")
        self.refuses("'Open' is missing", file_of(committed), found=file_of(committed, added))

    def test_refuses_a_text_that_the_sources_no_longer_have(self):
        committed = file_of(message("Save", "Speichern"))
        self.refuses("'Save' is in no source", committed, found=file_of(message("Save", "Speichern", "vanished")))
        self.accepts(committed, found=committed)


if __name__ == "__main__":
    unittest.main()

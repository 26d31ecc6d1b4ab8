#!/usr/bin/env python3
"""Reads the manual pages that the build made.

usage: manual_page_test.py LUMACHECK PAGES_FOLDER CHANGELOG [unittest's own arguments]
"""
import os
import pathlib
import re
import subprocess
import sys
import unittest

LUMACHECK = PAGES = CHANGELOG = pathlib.Path()


def output(*command, **environment):
    run = subprocess.run(command, env=os.environ | {"LC_ALL": "C.UTF-8"} | environment, check=True, stdin=subprocess.DEVNULL,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if run.stderr:
        raise AssertionError(run.stderr.decode())
    return run.stdout.decode()


def rendered(page):
    return output("man", "-l", PAGES / page, MANWIDTH="100", MANPAGER="cat", MAN_KEEP_FORMATTING="", MANROFFOPT="-rHY=0")


def section(text, title):
    """What stands under a title, up to the next one of its kind."""
    indent = re.search(rf"^( *){re.escape(title)}$", text, re.M).group(1)
    return re.search(rf"^{indent}{re.escape(title)}$(.*?)(?=^{indent}\S|^\S|\Z)", text, re.M | re.S).group(1)


def words(text):
    return " ".join(text.split())


def subcommands():
    listed = output(LUMACHECK, "--help").split("Subcommands:")[1]
    return re.findall(r"^  (\w+)", listed, re.M)


class ManualPages(unittest.TestCase):
    def test_have_nothing_to_complain_about(self):
        for page in ("lumacheck.1", "Lumacheck.1"):
            run = subprocess.run(["mandoc", "-Tlint", "-Wwarning", PAGES / page], stdout=subprocess.PIPE, check=False)
            self.assertEqual((run.returncode, run.stdout), (0, b""), page)

    def test_are_shown_by_man(self):
        self.assertIn("lumacheck - tells whether", rendered("lumacheck.1"))
        self.assertIn("Lumacheck - find gamma shifts", rendered("Lumacheck.1"))

    def test_tell_every_option_and_argument_of_the_help_where_it_belongs(self):
        page = section(rendered("lumacheck.1"), "OPTIONS")
        self.assertGreaterEqual(len(subcommands()), 3)
        for command in subcommands():
            told = section(page, f"lumacheck {command}")
            text = output(LUMACHECK, command, "--help").split("Exit status:")[0]
            entries = re.findall(r"^  ((?:-\w,)?--[\w-]+|[A-Z]+)(?: ([A-Z]+)\b)?", text, re.M)
            self.assertGreaterEqual(len(entries), 4)
            for name, value in entries:
                entry = ", ".join(name.split(",")) + (f" {value}" if value and value not in ("REQUIRED",) else "")
                self.assertRegex(told, rf"(?m)^ +{re.escape(entry)}( |$)", command)

    def test_tell_every_exit_status_of_the_help(self):
        page = section(rendered("lumacheck.1"), "EXIT STATUS")
        for command in subcommands():
            told = words(section(page, f"lumacheck {command}"))
            footer = words(output(LUMACHECK, command, "--help").split("Exit status:")[1]).rstrip(".")
            statuses = footer.split("; ")
            self.assertGreaterEqual(len(statuses), 3)
            for status in statuses:
                self.assertIn(status, told, command)

    def test_are_of_the_release_that_the_changelog_tells_first(self):
        changelog = CHANGELOG.read_text()
        version = re.match(r"lumacheck \(([0-9.]+)\)", changelog).group(1)
        day, month, year = re.search(r"  \w{3}, (\d+) (\w{3}) (\d+) ", changelog).groups()
        months = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
        date = f"{year}-{months.index(month) + 1:02}-{int(day):02}"
        self.assertEqual(output(LUMACHECK, "--version"), f"lumacheck {version}\n")
        for page in ("lumacheck.1", "Lumacheck.1"):
            self.assertRegex(rendered(page).rstrip().splitlines()[-1], rf"^Lumacheck {re.escape(version)} +{date} ")


if __name__ == "__main__":
    LUMACHECK, PAGES, CHANGELOG = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(3))
    unittest.main()

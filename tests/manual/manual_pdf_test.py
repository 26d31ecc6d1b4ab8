#!/usr/bin/env python3
"""What the manual's script makes of Markdown, and how it stands on the pages."""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools" / "manual"))
sys.dont_write_bytecode = True
import manual_pdf  # noqa: E402


def section_of(text, name="file.md"):
    return manual_pdf.Chapter(name, text).section


def table_of(*rows):
    return "\n".join("| " + " | ".join(row) + " |" for row in (rows[0], ["---"] * len(rows[0]), *rows[1:])) + "\n"


def pages_of(texts):
    """The words of each page after the contents, a line for each line."""
    chapters = [manual_pdf.Chapter(f"{i:02}.md", text) for i, text in enumerate(texts)]
    page = "<body>" + "".join(manual_pdf.ElementTree.tostring(each.section, encoding="unicode") for each in chapters)
    with tempfile.NamedTemporaryFile(suffix=".pdf") as file:
        file.write(manual_pdf.typeset(page, ROOT, manual_pdf.Complaints()))
        file.flush()
        words = subprocess.run(["pdftotext", "-layout", file.name, "-"], capture_output=True, text=True, check=True).stdout
    return [[re.sub(r"\s+", " ", line).strip() for line in page.splitlines() if line.strip()] for page in words.split("\f")]


# One more line in each, so that a page ends everywhere in what stands below it.
HEIGHTS = ["# Chapter\n\n" + "Fill.\n\n" * lines for lines in range(12, 32)]


class Markdown(unittest.TestCase):
    def test_names_headings_by_their_file_and_words(self):
        chapter = manual_pdf.Chapter("file.md", "# What it is\n\nText.\n\n## BT.601 and \"more\"\n")
        self.assertEqual(chapter.targets, {"file.md", "file.md#what-it-is", "file.md#bt601-and-more"})

    def test_draws_links_from_the_file_they_stand_in(self):
        section = section_of("# One\n\n[here](#one), [there](other.md#two), [all](other.md), [the web](https://www.quorvane.example/)\n")
        self.assertEqual([link.get("href") for link in section.iter("a")],
                         ["#file.md#one", "#other.md#two", "#other.md", "https://www.quorvane.example/"])

    def test_makes_a_figure_of_a_picture_that_stands_alone(self):
        figure = section_of("![One](pictures/one.png)\n")[0]
        self.assertEqual((figure.tag, figure[0].get("src"), figure[1].text), ("figure", "picture:one.png", "One"))
        self.assertEqual(section_of("See ![One](pictures/one.png)\n")[0].tag, "p")

    def test_knows_what_announces_what_follows(self):
        kinds = [block.get("class") for block in section_of("These are:\n\n- a\n- b\n\nThe end.\n")]
        self.assertEqual(kinds, ["announces", None, None])

    def test_keeps_columns_of_short_texts_on_one_line(self):
        rows = section_of(table_of(("No.", "What"), ("1", "x" * 27), ("2", "short"))).iter("tr")
        self.assertEqual([[cell.get("class") for cell in row] for row in rows], [["short", None]] * 3)

    def test_never_cuts_a_short_table_and_keeps_the_last_rows_of_a_long_one(self):
        rows = [(f"row {i}",) for i in range(7)]
        short, = section_of(table_of(*rows[:6])).iter("table")
        self.assertEqual((short.get("class"), len(short.findall("tbody"))), ("kept", 1))
        long, = section_of(table_of(*rows)).iter("table")
        self.assertIsNone(long.get("class"))
        self.assertEqual([(body.get("class"), [manual_pdf.words_of(row) for row in body]) for body in long.iter("tbody")],
                         [(None, ["row 1", "row 2", "row 3", "row 4"]), ("kept", ["row 5", "row 6"])])


class Pages(unittest.TestCase):
    """Each thing stands under ever more lines, so that the end of a page falls everywhere in it."""

    def under_ever_more(self, text):
        pages = pages_of([above + text for above in HEIGHTS])
        self.assertGreater(len(pages), len(HEIGHTS))  # some were cut
        return pages

    def test_begin_with_each_file(self):
        pages = pages_of(["# One\n\nText.\n", "# Two\n\n# Three\n"])
        self.assertEqual([page[1:-1] for page in pages if page], [["One", "Text."], ["Two", "Three"]])

    def test_show_the_chapter_and_the_number(self):
        page = pages_of(["# One\n\nText.\n", "# Two\n"])[1]
        self.assertEqual((page[0], page[-1]), ("Two", "Lumacheck User Manual 2"))

    def test_have_no_heading_and_nothing_that_announces_at_the_foot(self):
        for page in self.under_ever_more("## Heading\n\nThese are:\n\n```\ncode\n```\n"):
            self.assertEqual("Heading" in page, "code" in page, page)
            self.assertEqual("These are:" in page, "code" in page, page)

    def test_cut_no_code_and_no_note(self):
        lines = [f"line {i}" for i in range(6)]
        for thing in ("```\n" + "\n".join(lines) + "\n```\n", "> " + "  \n> ".join(lines) + "\n"):
            for page in self.under_ever_more(thing):
                self.assertIn(sum(line.startswith("line") for line in page), (0, 6), page)

    def test_repeat_the_titles_of_a_table_and_leave_no_row_alone(self):
        for page in self.under_ever_more(table_of(("Title", "What"), *((f"row {i}", "word " * 40) for i in range(6)))):
            rows = [line for line in page if line.startswith("row")]
            self.assertEqual("Title What" in page, bool(rows), page)
            self.assertNotEqual(len(rows), 1, page)
            self.assertEqual(sum(line.count("word") for line in page), 40 * len(rows), page)


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""The user manual as a PDF: Markdown becomes one page of HTML, which WeasyPrint sets as manual.css says.

A picture that stands alone is a figure, its text the caption. Links name a heading by its file and its words:
`saving.md#when-it-is-refused`, or `#when-it-is-refused` in that file. Nothing is made, and each reason told, where a
link leads nowhere or a picture cannot be had.

SOURCE_DATE_EPOCH, seconds since 1970, is the date inside instead of the moment's: then equal input makes equal bytes.
"""
import argparse
import datetime
import html
import logging
import math
import os
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

import markdown
import weasyprint

LOOK = pathlib.Path(__file__).with_name("manual.css")
TITLE = "Vextrel User Manual: Lumacheck"
MOST_ROWS_KEPT = 5  # of a table that is never cut
MOST_LETTERS_KEPT = 26  # of a column that is never folded: about a quarter of the width
LETTERS_ON_A_LINE = 110  # of a table
PICTURE = "picture:"  # before the name of one, so that the bytes of the PDF do not depend on where it is


def words_of(element):
    return "".join(element.itertext()).strip()


def anchor(title):
    return re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-")


def make_figure(paragraph):
    picture = paragraph[0]
    picture.set("src", PICTURE + pathlib.PurePath(picture.get("src")).name)
    paragraph.tag = "figure"
    ElementTree.SubElement(paragraph, "figcaption").text = picture.get("alt")


def keep_short_columns(table):
    """On one line, where the others then have room for their words."""
    for column in zip(*table.iter("tr")):
        if max(len(words_of(cell)) for cell in column) <= MOST_LETTERS_KEPT:
            for cell in column:
                cell.set("class", "short")


def room_for(rows):
    """An element as high as a table's titles and these rows, more or less, which moves nothing below it."""
    lines = sum(math.ceil(max(len(words_of(cell)) for cell in row) * len(row) / LETTERS_ON_A_LINE) for row in rows)
    height = 6.6 + 2.1 * len(rows) + 4.5 * lines
    return ElementTree.Element("div", {"style": f"height: {height:.1f}mm; margin-bottom: -{height:.1f}mm"})


def keep_rows(table, section):
    """A short table is never cut. A longer one begins where there is room for two rows, and its last two are a group of
    their own: none stands alone."""
    body = table.find("tbody")
    last = body[-2:]
    if len(body) <= MOST_ROWS_KEPT:
        table.set("class", "kept")
        return
    section.insert(list(section).index(table), room_for(body[:2]))
    for row in last:
        body.remove(row)
    ElementTree.SubElement(table, "tbody", {"class": "kept"}).extend(last)


class Chapter:
    """A file of Markdown as a section of the page."""

    def __init__(self, name, text):
        made = markdown.markdown(text, output_format="xhtml", extensions=["tables", "fenced_code"])
        self.section = ElementTree.fromstring(f"<section>{made}</section>")
        self.section.set("id", name)
        self.headings = [each for each in self.section if re.fullmatch("h[1-6]", each.tag)]
        for heading in self.headings:
            heading.set("id", f"{name}#{anchor(words_of(heading))}")
        self.targets = {name} | {heading.get("id") for heading in self.headings}
        self.links = []
        for link in self.section.iter("a"):
            self.aim(link, name)
        for block in self.section:
            if [each.tag for each in block] == ["img"] and not words_of(block):
                make_figure(block)
            elif words_of(block).endswith(":"):
                block.set("class", "announces")
        for table in self.section.findall("table"):
            keep_short_columns(table)
            keep_rows(table, self.section)

    def aim(self, link, name):
        target = link.get("href")
        if "://" not in target:
            self.links.append(name + target if target.startswith("#") else target)
            link.set("href", "#" + self.links[-1])


def contents(chapters):
    """A line for each heading of the two upper levels; the look adds the numbers of the pages."""
    shown = [each for chapter in chapters for each in chapter.headings if each.tag in ("h1", "h2")]
    lines = [f'<li class="{each.tag}"><a href="#{each.get("id")}">{html.escape(words_of(each))}</a></li>' for each in shown]
    return f"<nav><p>Contents</p><ul>{''.join(lines)}</ul></nav>"


def page_of(chapters, version, date):
    sections = "\n".join(ElementTree.tostring(chapter.section, encoding="unicode") for chapter in chapters)
    return f"""<!DOCTYPE html>
<html lang="en">
<head>
<title>{TITLE}</title>
<meta name="generator" content="Lumacheck {version}">
<meta name="dcterms.created" content="{date:%Y-%m-%dT%H:%M:%SZ}">
</head>
<body>
<header>
<img src="{PICTURE}icon.png" alt="The icon of Lumacheck">
<p class="name">Lumacheck</p>
<p class="kind">User Manual</p>
<p>Version {version}</p>
<p class="maker">Vextrel, by Quorvane</p>
</header>
{contents(chapters)}
{sections}
</body>
</html>"""


class Complaints(logging.Handler):
    """What the typesetter complains of, but for that it calls its tags an experiment."""

    def __init__(self):
        super().__init__()
        self.told = []

    def emit(self, record):
        if not record.getMessage().startswith("PDF/UA support is experimental"):
            self.told.append(record.getMessage())


def typeset(page, pictures, complaints):
    """Tagged, for readers that read aloud; that all of PDF/UA is met is not claimed."""
    logging.getLogger("weasyprint").addHandler(complaints)

    def fetch(url):
        return {"file_obj": (pictures / url.removeprefix(PICTURE)).open("rb")}

    return weasyprint.HTML(string=page, url_fetcher=fetch).write_pdf(
        stylesheets=[LOOK], variant="pdf/ua-1", finisher=lambda document, pdf: pdf.catalog.pop("Metadata")
    )


def creation_date():
    given = os.environ.get("SOURCE_DATE_EPOCH")
    utc = datetime.timezone.utc
    return datetime.datetime.fromtimestamp(int(given), utc) if given else datetime.datetime.now(utc)


def refuse_for(problems):
    if problems:
        sys.exit("\n".join(f"manual_pdf: {problem}" for problem in problems))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("version")
    parser.add_argument("texts", type=pathlib.Path, help="the folder of Markdown files, which are taken by their names")
    parser.add_argument("pictures", type=pathlib.Path, help="the folder of pictures, with icon.png for the title")
    parser.add_argument("file", type=pathlib.Path, help="the PDF")
    given = parser.parse_args()

    files = sorted(given.texts.glob("*.md"))
    chapters = [Chapter(each.name, each.read_text(encoding="utf-8")) for each in files]
    refuse_for([] if chapters else ["there are no texts"])
    known = set().union(*(chapter.targets for chapter in chapters))
    refuse_for([f"A link leads nowhere: {link}" for each in chapters for link in each.links if link not in known])
    complaints = Complaints()
    made = typeset(page_of(chapters, given.version, creation_date()), given.pictures, complaints)
    refuse_for(complaints.told)
    given.file.write_bytes(made)


if __name__ == "__main__":
    main()

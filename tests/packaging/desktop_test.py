#!/usr/bin/env python3
"""Looks at what a desktop is told of the window.

usage: desktop_test.py PACKAGING_SOURCE PACKAGING_BUILD [unittest's own arguments]
"""
import configparser
import pathlib
import struct
import subprocess
import sys
import unittest
import xml.etree.ElementTree as xml
import zlib

SOURCE = BUILD = pathlib.Path()
ID = "com.quorvane.Lumacheck"


def entry():
    parser = configparser.ConfigParser(interpolation=None, delimiters=("=",))
    parser.optionxform = str
    parser.read(SOURCE / f"desktop/{ID}.desktop", encoding="utf-8")
    return parser["Desktop Entry"]


def metainfo():
    return xml.parse(BUILD / f"{ID}.metainfo.xml").getroot()


def picture(path):
    """The size of a PNG file of 8-bit RGBA, and the alpha of its first pixel."""
    data = path.read_bytes()
    width, height, depth, kind = struct.unpack(">IIBB", data[16:26])
    packed, at = b"", 8
    while at < len(data):
        length, name = struct.unpack(">I4s", data[at:at + 8])
        packed += data[at + 8:at + 8 + length] if name == b"IDAT" else b""
        at += length + 12
    first = zlib.decompress(packed)[1:5]  # no filter has anything before the first pixel to go by
    return (width, height, depth, kind), first[3]


class Desktop(unittest.TestCase):
    def validate(self, *command):
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.assertEqual(run.returncode, 0, run.stdout.decode())
        return run.stdout.decode()

    def test_entry_is_valid(self):
        self.assertEqual(self.validate("desktop-file-validate", SOURCE / f"desktop/{ID}.desktop"), "")

    def test_description_is_valid(self):
        told = self.validate("appstreamcli", "validate", "--no-net", "--pedantic", "--no-color", BUILD / f"{ID}.metainfo.xml")
        self.assertNotRegex(told, r"(?m)^[EW]:")

    def test_entry_and_description_are_of_one_application(self):
        self.assertEqual(metainfo().findtext("id"), ID)
        self.assertEqual(metainfo().findtext("launchable"), f"{ID}.desktop")
        self.assertEqual(entry()["Icon"], ID)
        self.assertEqual(metainfo().findtext("icon"), ID)
        self.assertEqual(metainfo().findtext("name"), entry()["Name"])
        self.assertIn(entry()["Exec"].split()[0], [each.text for each in metainfo().iter("binary")])
        self.assertEqual([each.text for each in metainfo().iter("mediatype")], entry()["MimeType"].rstrip(";").split(";"))
        policy = xml.parse(BUILD / f"{ID}.policy").getroot()
        self.assertEqual(policy.findtext("action/icon_name"), ID)

    def test_icons_have_their_sizes_and_clear_corners(self):
        for side in (16, 22, 24, 32, 48, 64, 128, 256, 512):
            self.assertEqual(picture(BUILD / f"pages/icon-{side}.png"), ((side, side, 8, 6), 0), side)

    def test_drawing_looks_like_the_pictures(self):
        drawn, painted = (
            subprocess.run(["ffmpeg", "-loglevel", "error", "-nostdin", "-i", BUILD / "pages" / name, "-frames:v", "1", "-vf",
                            "scale=128:128", "-pix_fmt", "rgba", "-f", "rawvideo", "-"], stdout=subprocess.PIPE, check=True).stdout
            for name in ("icon.svg", "icon-128.png"))
        self.assertEqual(len(drawn), 128 * 128 * 4)
        self.assertEqual(len(drawn), len(painted))
        self.assertLess(sum(abs(a - b) for a, b in zip(drawn, painted)) / len(drawn), 2)  # edges only


if __name__ == "__main__":
    SOURCE, BUILD = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
    unittest.main()

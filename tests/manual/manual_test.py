#!/usr/bin/env python3
"""The user manual is whole, and says what the program says.

The environment names the PDF, the version and the time that it says, the pictures in it, their movies, and the command:
MANUAL_PDF, MANUAL_VERSION, MANUAL_EPOCH, MANUAL_PICTURES, MANUAL_MOVIES, LUMACHECK_PROGRAM.
"""
import datetime
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TEXTS = ROOT / "docs" / "manual"
PDF = pathlib.Path(os.environ["MANUAL_PDF"])
PICTURES = pathlib.Path(os.environ["MANUAL_PICTURES"])
MOVIES = pathlib.Path(os.environ["MANUAL_MOVIES"])
MAKER = ROOT / "tools" / "manual" / "manual_pdf.py"
LUMACHECK = os.environ["LUMACHECK_PROGRAM"]


def run(*command, **options):
    return subprocess.run([str(each) for each in command], capture_output=True, text=True, **options)


def out_of(*command, **options):
    done = run(*command, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} failed: {done.stderr}")
    return done.stdout


def chapters():
    return {path.name: path.read_text(encoding="utf-8") for path in sorted(TEXTS.glob("*.md"))}


def flat(text):
    """Without what Markdown adds, and with single blanks: lines of code are folded by hand."""
    return re.sub(r"\s+", " ", re.sub(r"[`*]", "", text))


def headings(text, deepest=6):
    outside = re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)
    return [title for marks, title in re.findall(r"^(#{1,6}) (.*)$", outside, re.M) if len(marks) <= deepest]


def anchor(title):
    return re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-")


def code_blocks(text):
    return [re.sub(r"\\\n\s*", "", block) for block in re.findall(r"^```\w*\n(.*?)^```", text, re.M | re.S)]


def make_pdf(texts, folder, **environment):
    target = pathlib.Path(folder, "made.pdf")
    done = run(sys.executable, MAKER, os.environ["MANUAL_VERSION"], texts, PICTURES, target, env={**os.environ, **environment})
    return done, target


class Document(unittest.TestCase):
    """The PDF as a file."""

    def test_opens_with_its_title_and_a_plausible_number_of_pages(self):
        facts = dict(line.split(":", 1) for line in out_of("pdfinfo", PDF).splitlines() if ":" in line)
        self.assertEqual(facts["Title"].strip(), "Vextrel User Manual: Lumacheck")
        self.assertTrue(20 <= int(facts["Pages"]) <= 80, facts["Pages"])
        self.assertIn("A4", facts["Page size"])

    def test_lies_where_the_window_of_the_same_build_looks(self):
        place = pathlib.Path(LUMACHECK).parent / "../share/quorvane/Documentation/Quorvane/Vextrel User Manual.pdf"
        self.assertTrue(place.exists() and place.samefile(PDF), place)

    def test_embeds_every_font(self):
        rows = out_of("pdffonts", PDF).splitlines()[2:]
        self.assertGreaterEqual(len(rows), 3)
        for row in rows:
            self.assertEqual(row.split()[-5], "yes", row)

    def test_holds_every_picture_sharp_enough_for_print(self):
        rows = [row.split() for row in out_of("pdfimages", "-list", PDF).splitlines()[2:]]
        pictures = [row for row in rows if row[2] == "image"]
        named = sum(len(re.findall(r"^!\[", text, re.M)) for text in chapters().values())
        self.assertGreaterEqual(named, 6)
        self.assertEqual(len(pictures), named + 1)  # the icon
        for row in pictures:
            self.assertGreaterEqual(min(int(row[12]), int(row[13])), 220, row)

    def test_tells_every_word_of_the_texts(self):
        pages = set(re.findall(r"\w+", out_of("pdftotext", PDF, "-")))
        for name, text in chapters().items():
            text = re.sub(r"\]\([^)]*\)", "]", re.sub(r"^```\w+$", "```", text, flags=re.M))
            missing = {word for word in re.findall(r"\w+", text) if word not in pages}
            # Long paths are broken over lines.
            missing = {word for word in missing if not any(word.startswith(each) for each in pages if len(each) > 3)}
            self.assertEqual(missing, set(), name)

    def test_has_an_outline_and_links_that_lead_to_pages(self):
        # pdftohtml names what lies in pages by their numbers.
        with tempfile.TemporaryDirectory() as folder:
            out_of("pdftohtml", "-i", "-q", "-xml", PDF, pathlib.Path(folder, "manual"))
            xml = pathlib.Path(folder, "manual.xml").read_text(encoding="utf-8")
        wanted = sum(len(headings(text, deepest=2)) for text in chapters().values())
        self.assertEqual(len(re.findall(r'<item page="\d+">', xml)), wanted)
        inside = sum(len(re.findall(r"\]\([^)]*\.md[^)]*\)", text)) for text in chapters().values())
        self.assertGreaterEqual(len(re.findall(r'<a href="[^"]*#\d+">', xml)), wanted + inside)
        self.assertNotRegex(xml, r'href="#')

    def test_is_tagged_for_readers_that_read_aloud(self):
        self.assertRegex(out_of("pdfinfo", PDF), r"(?m)^Tagged: +yes$")
        tags = re.findall(r"^ *(\w+)", out_of("pdfinfo", "-struct", PDF), re.M)
        titles = [headings(text) for text in chapters().values()]
        self.assertEqual(sum(tags.count(f"H{level}") for level in (1, 2, 3)), sum(map(len, titles)))
        self.assertEqual(tags.count("H1"), len(titles))
        self.assertLessEqual({"P", "L", "LI", "Link", "Table", "TR", "TH", "TD", "BlockQuote"}, set(tags))

    def test_says_nothing_of_the_machine_that_made_it(self):
        words = out_of("pdftotext", PDF, "-")
        for secret in (str(ROOT) + "/", str(MOVIES), os.uname().nodename + "."):
            self.assertNotIn(secret, words)
            self.assertNotIn(secret.encode(), PDF.read_bytes())

    def test_is_the_same_bytes_when_made_again_for_the_same_time(self):
        epoch = os.environ["MANUAL_EPOCH"]
        with tempfile.TemporaryDirectory() as folder:
            done, target = make_pdf(TEXTS, folder, SOURCE_DATE_EPOCH=epoch)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(target.read_bytes(), PDF.read_bytes())
        said = out_of("pdfinfo", "-isodates", PDF)
        self.assertIn(datetime.datetime.fromtimestamp(int(epoch), datetime.timezone.utc).strftime("%Y-%m-%d"), said)

    def refuses(self, text, complaint):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "a.md").write_text(text, encoding="utf-8")
            done, target = make_pdf(folder, folder)
            self.assertEqual(done.returncode, 1)
            self.assertIn(complaint, done.stderr)
            self.assertFalse(target.exists())

    def test_is_not_made_with_a_link_that_leads_nowhere(self):
        self.refuses("# One\n\nSee [two](a.md#two).\n", "A link leads nowhere: a.md#two")
        self.refuses("# One\n\nSee [two](b.md).\n", "A link leads nowhere: b.md")

    def test_is_not_made_with_a_picture_missing(self):
        self.refuses("# One\n\n![Two](pictures/none.png)\n", "Failed to load image at 'picture:none.png'")

    def test_is_not_made_with_a_picture_that_is_none(self):
        self.refuses("# One\n\n![Two](pictures/window.txt)\n", "Failed to load image at 'picture:window.txt'")

    def test_is_not_made_of_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            done, _ = make_pdf(folder, folder)
            self.assertEqual(done.returncode, 1)


class Contents(unittest.TestCase):
    """What the program says has its place in the manual."""

    def test_links_name_headings_that_are_there(self):
        texts = chapters()
        known = {name + "#" + anchor(title) for name, text in texts.items() for title in headings(text)} | set(texts)
        for name, text in texts.items():
            for target in re.findall(r"\]\(([^)]*)\)", text):
                if not target.startswith("pictures/"):
                    self.assertIn(name + target if target.startswith("#") else target, known)

    def test_explains_every_line_of_the_report(self):
        source = (ROOT / "check/GammaCheck.cpp").read_text(encoding="utf-8")
        source = re.sub(r"QVLog::\w+\(.*?;", "", source, flags=re.S)
        lines = ["".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literals))
                 for literals in re.findall(r'QStringLiteral\(((?:\s*"(?:[^"\\]|\\.)*")+)\)', source)]
        # Chosen within the margin, and never shown.
        lines = [line for line in lines if line and line != " (within margin of error)"]
        self.assertGreaterEqual(len(lines), 25)
        report = flat(chapters()["04-report.md"])
        for line in lines:
            pattern = re.escape(flat(line.replace("\\n", " "))).replace(re.escape("%0.2f"), r"\d\.\d\d")
            self.assertRegex(report, pattern)

    def test_explains_what_is_said_of_a_dark_frame(self):
        header = (ROOT / "check/GammaCheck.h").read_text(encoding="utf-8")
        texts = re.findall(r"tooDark\w+Text\s*=\s*QStringLiteral\(([^;]*)\);", header)
        self.assertEqual(len(texts), 2)
        for text in texts:
            self.assertIn(flat("".join(re.findall(r'"([^"]*)"', text))), flat(chapters()["04-report.md"]))

    def window_lines(self, kind):
        lines = (PICTURES / "window.txt").read_text(encoding="utf-8").splitlines()
        return [line.split("\t")[1:] for line in lines if line.startswith(kind + "\t")]

    def rows(self, heading):
        text = chapters()["03-window.md"].split("\n## " + heading + "\n")[1].split("\n## ")[0]
        return [[cell.strip() for cell in row.strip("|").split("|")] for row in re.findall(r"^\|.*\|$", text, re.M)]

    def test_names_every_item_of_every_menu(self):
        found = self.window_lines("menu")
        self.assertGreaterEqual(len(found), 25)
        named = {(menu, each.strip()) for menu, items, _ in self.rows("Menus") for each in items.split(",")}
        self.assertEqual({(menu, item) for menu, item in found} - named, set())

    def test_names_every_key(self):
        found = self.window_lines("keys")
        self.assertGreaterEqual(len(found), 25)
        spoken = {",": "comma", ".": "full stop"}
        told = {}
        for keys, what in self.rows("Keys"):
            names = [each.strip() for each in re.split(r",(?= )", keys)]
            meanings = [each.strip() for each in what.split(", ")]
            for i, name in enumerate(names):
                told[name] = meanings[i] if len(meanings) == len(names) else what
        for keys, what in found:
            for key in keys.split(" "):
                self.assertEqual(told.get(spoken.get(key, key)), what, key)

    def test_names_every_command_and_every_option(self):
        text = chapters()["07-command.md"]
        commands = re.findall(r"^  (\w+)  ", out_of(LUMACHECK, "--help").split("Subcommands:")[1], re.M)
        self.assertGreaterEqual(len(commands), 3)
        for command in [""] + commands:
            self.assertIn(f"lumacheck {command}".strip(), text)
            part = text.split(f"\n## {command}\n")[1].split("\n## ")[0] if command else text
            said = out_of(LUMACHECK, *filter(None, [command]), "--help")
            options = re.findall(r"^\s+(?:-\w,)?(--[\w-]+)", said, re.M)
            self.assertGreaterEqual(len(options), 2)
            for option in options:
                self.assertIn(option, text if option in ("--help", "--version") else part, command)

    def test_names_every_exit_status(self):
        said = out_of(LUMACHECK, "check", "--help").split("Exit status:")[1]
        found = set(re.findall(r"\b(\d+)\b", said))
        self.assertGreaterEqual(len(found), 6)
        for status in found:
            self.assertRegex(chapters()["07-command.md"], rf"(?m)^\| {status} \|")

    def test_names_every_member_of_the_json(self):
        done = run(LUMACHECK, "check", MOVIES / "source.mov", MOVIES / "export.mov", "--json")
        self.assertEqual(done.returncode, 1, done.stderr)
        text = chapters()["07-command.md"].split("\n## JSON\n")[1].split("\n## ")[0]
        members = json.loads(done.stdout)
        for name in [*members, *members["source"], *members["metadata"], *members["pixels"], *members["report"][0]]:
            self.assertIn(f"`{name}`", text)
        finding = members["finding"]
        self.assertGreaterEqual(len(finding), 11)
        placement = finding["correspondence"]["placement"]
        found = text.split("\n### The finding in JSON\n")[1]
        for name in [*finding, *finding["causes"][0], *finding["correspondence"], *placement, *finding["ranges"],
                     *finding["matrices"], *finding["advice"]]:
            self.assertIn(f"`{name}`", found)

    def names(self, array):
        source = (ROOT / "cli/FindingJson.cpp").read_text(encoding="utf-8")
        return re.findall(r'"(\w+)"', re.search(rf"\b{array}\[\] = {{(.*?)}};", source, re.S).group(1))

    def test_names_every_word_that_a_finding_is_told_with(self):
        text = chapters()["07-command.md"].split("\n### The finding in JSON\n")[1].split("\n## ")[0]
        for array, fewest in (("causeNames", 10), ("whereNames", 3), ("directionNames", 4), ("actionNames", 6)):
            self.assertGreaterEqual(len(self.names(array)), fewest)
            for name in self.names(array):
                self.assertIn(f"`{name}`", text, array)

    def test_has_a_section_for_every_cause_and_a_row_for_every_action(self):
        text = chapters()["04b-finding.md"]
        causes = text.split("\n## The causes\n")[1].split("\n## ")[0]
        told = re.findall(r"(?m)^### .* \(`(\w+)`\)$", causes)
        self.assertEqual(told, self.names("causeNames"))
        advice = text.split("\n## What to do\n")[1].split("\n## ")[0]
        self.assertEqual(set(re.findall(r"(?m)^\| `(\w+)` \|", advice)), set(self.names("actionNames")))

    def test_explains_every_sentence_of_a_finding(self):
        source = (ROOT / "diagnosis/words/FindingText.cpp").read_text(encoding="utf-8")
        source = re.sub(r'"\s*\n\s*"', "", re.sub(r"^\s*//.*$", "", source, flags=re.M))
        sentences = [each for each in re.findall(r'"((?:[^"\\\n]|\\.)*)"', source) if each.endswith((".", ": "))]
        self.assertGreaterEqual(len(sentences), 35)
        text = flat("".join(chapters()[name] for name in ("04b-finding.md", "05-remedies.md")))
        pieces = {piece.strip(" .:,;()") for each in sentences for piece in re.split(r"%\d", each)}
        self.assertEqual({piece for piece in pieces if piece not in text}, set())

    def test_explains_every_message_of_the_window(self):
        text = flat(chapters()["03-window.md"])
        said = []
        for path in sorted((ROOT / "app/messages").glob("*Messages.cpp")):
            source = re.sub(r'"\s*\n\s*"', "", path.read_text(encoding="utf-8"))
            said += re.findall(r'\btr\("((?:[^"\\]|\\.)*)"', source)
        pieces = {flat(piece.replace('\\"', '"').replace("\\n", " ")).strip(' ".:,()')
                  for each in said for piece in re.split(r"%\d", each)}
        pieces = {piece for piece in pieces if len(re.findall(r"[^\W_]+", piece)) > 1}
        self.assertGreaterEqual(len(pieces), 60)
        self.assertEqual({piece for piece in pieces if piece not in text}, set())

    def test_explains_the_alerts_of_the_logs(self):
        source = (ROOT / "SharedFiles/support/QVTroubleshootingUtils.cpp").read_text(encoding="utf-8")
        text = flat(chapters()["09-troubleshooting.md"])
        said = {part for call in re.findall(r'(?:tell|viewLog)\((.*?)\);', source, re.S)
                for part in re.findall(r'"([A-Z][^"]*)"', call)}
        self.assertGreaterEqual(len(said), 9)
        for each in said:
            self.assertIn(each, text)


class Refusals(unittest.TestCase):
    """Every reason not to save has an entry."""

    UNITS = ["SaveSurvey", "SavePlacement", "WritableFile", "MetadataSave", "MovieEdit", "FlattenedCopy", "FlattenedLayout",
             "ExternalMedia", "MovieMap", "ChunkTables", "MediaExtents", "ReadableFile", "Movie", "MovieError"]
    # What was being done when it happened, and the sentences that every reason stands in.
    OTHER = {"Meanwhile", "LookingAtFile", "ReadingFile", "WritingFile", "SyncingFile", "SettingLength", "SettingTime",
             "InAtom", "CannotRead", "CannotReadFile", "CannotSave", "CannotSaveFile", "Verbatim"}

    def texts(self, source):
        """The string literals, as the compiler joins them."""
        source = re.sub(r"^\s*(//|#).*$", "", source, flags=re.M)
        for literal in re.findall(r'"((?:[^"\\\n]|\\.)*)"', re.sub(r'"\s*\n\s*"', "", source)):
            yield literal.replace('\\"', '"')

    def reasons(self):
        rows = (ROOT / "movie/atoms/ReasonList.h").read_text(encoding="utf-8").split("\nREASON(")[1:]
        listed = {row.split(",")[0]: list(self.texts(row))[-1] for row in rows}
        for unit in self.UNITS:
            source = next((ROOT / "movie").rglob(f"{unit}.cpp")).read_text(encoding="utf-8")
            used = [listed[name] for name in re.findall(r"\bReason::(\w+)", source) if name not in self.OTHER]
            for text in [*used, *self.texts(source)]:
                yield from ((unit, piece) for piece in re.split(r"%\d", text) if len(piece.split()) > 2)

    def test_every_reason_is_explained(self):
        text = flat(chapters()["06-sync-and-save.md"] + chapters()["09-troubleshooting.md"])
        found = set(self.reasons())
        self.assertGreaterEqual(len(found), 60)
        missing = [(unit, reason) for unit, reason in found if flat(reason).strip(' ".:,') not in text]
        self.assertEqual(missing, [])

    def test_what_the_command_says_of_a_save_is_explained(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(MOVIES / "export.mov", folder)
            done = run(LUMACHECK, "sync", MOVIES / "source.mov", "export.mov", "--save-as", "export.mov", cwd=folder)
            self.assertEqual(done.returncode, 2)
            reason = done.stderr.split(": ", 2)[2].strip()
            self.assertIn(reason, flat(chapters()["06-sync-and-save.md"]))


class Examples(unittest.TestCase):
    """What the manual tells to type works, and gives what it says."""

    def blocks(self, beginning):
        found = [block for text in chapters().values() for block in code_blocks(text) if block.startswith(beginning)]
        self.assertTrue(found, beginning)
        return found

    def test_the_outputs_shown_are_what_comes(self):
        for block in self.blocks("$ lumacheck"):
            command, shown = block.split("\n", 1)
            with tempfile.TemporaryDirectory() as folder:
                for movie in ("source.mov", "export.mov"):
                    shutil.copy(MOVIES / movie, folder)
                done = run(LUMACHECK, *command.split()[2:], cwd=folder)
            self.assertLess(done.returncode, 2, command + done.stderr)
            if shown.endswith("…\n"):
                self.assertEqual(done.stdout[:len(shown) - 2], shown[:-2])
            else:
                self.assertEqual(done.stdout, shown)

    def test_the_commands_of_the_quick_start_are_understood(self):
        with tempfile.TemporaryDirectory() as folder:
            for movie in ("source.mov", "export.mov"):
                shutil.copy(MOVIES / movie, folder)
            for block in self.blocks("lumacheck check") + self.blocks("lumacheck sync"):
                arguments = ["1" if each == "12.5" else each for each in block.split()[1:]]  # the movies last 2 s
                self.assertLess(run(LUMACHECK, *arguments, cwd=folder).returncode, 2, block)

    def test_the_example_of_the_report_is_what_the_pictures_show(self):
        done = run(LUMACHECK, "check", MOVIES / "source.mov", MOVIES / "export.mov", "--at", "1")
        self.assertIn("Finding: Gamma shift: the destination is darker, by an exponent of 1.25", done.stdout)
        self.assertIn("Gamma shift: 1.25 (darker)", done.stdout)
        self.assertIn("Source gamma metadata: 2.20", done.stdout)
        self.assertIn("Destination gamma metadata: 1.80", done.stdout)

    def make_source(self, folder, name, pixels, codec, flags="", level=2.2):
        tags = "-color_primaries bt709 -color_trc bt709 -colorspace bt709"
        gamma = f"-movflags +write_colr+write_gama{flags} -mov_gamma {level}"
        pictures = f"-frames:v 3 -s 640x360 -pix_fmt {pixels} -c:v {codec}"
        out_of("ffmpeg", "-v", "error", "-i", MOVIES / "source.mov", *f"{pictures} {tags} {gamma} {name}".split(), cwd=folder)

    def test_the_ffmpeg_commands_work_and_keep_the_pixels(self):
        with tempfile.TemporaryDirectory() as folder:
            self.make_source(folder, "source.mov", "yuv422p10", "prores_ks")
            self.make_source(folder, "sd.mov", "yuv422p10", "prores_ks")
            self.make_source(folder, "graphics.mov", "rgb24", "png")
            self.make_source(folder, "fragmented.mov", "yuv422p10", "prores_ks", "+frag_keyframe+empty_moov", 1.8)
            refused = run(LUMACHECK, "sync", "source.mov", "fragmented.mov", cwd=folder)
            self.assertIn("the movie is fragmented", refused.stderr)
            for block in self.blocks("ffmpeg"):
                words = block.split()
                if "-bsf:v" in words:
                    continue
                out_of("ffmpeg", "-y", "-v", "error", *words[1:], cwd=folder)
                done = run(LUMACHECK, "check", words[words.index("-i") + 1], words[-1], "--json", cwd=folder)
                self.assertEqual(json.loads(done.stdout)["pixels"]["shift"], "none", block + done.stdout)
                if "-mov_gamma" in words:
                    self.assertEqual(done.returncode, 0, block)
                if "copy" in words:
                    self.assertIn("Saved", out_of(LUMACHECK, "sync", "source.mov", words[-1], cwd=folder))

    def test_a_wrong_range_flag_is_mended_without_a_new_encoding(self):
        def action(dest):
            done = run(LUMACHECK, "check", MOVIES / "source.mov", dest, "--json", cwd=folder)
            return json.loads(done.stdout)["finding"]["advice"]["action"]

        block, = (each for each in self.blocks("ffmpeg") if "-bsf:v" in each)
        tags = "-color_range tv -color_primaries bt709 -color_trc bt709 -colorspace bt709 -movflags +write_colr+write_gama"
        encode = f"-frames:v 1 -pix_fmt yuv420p -c:v libx264 -crf 12 -preset ultrafast {tags} -mov_gamma 2.2 right.mov"
        with tempfile.TemporaryDirectory() as folder:
            out_of("ffmpeg", "-v", "error", "-i", MOVIES / "source.mov", *encode.split(), cwd=folder)
            mark = "-i right.mov -c copy -bsf:v h264_metadata=video_full_range_flag=1 marked-full.mp4"
            out_of("ffmpeg", "-v", "error", *mark.split(), cwd=folder)
            self.assertEqual(action("marked-full.mp4"), "tag")
            out_of("ffmpeg", "-y", "-v", "error", *block.split()[1:], cwd=folder)
            self.assertIn(action("export.mp4"), ("nothing", "sync"))

    def test_the_scripts_work(self):
        check_all, mend = self.blocks("#!/bin/sh")[0], self.blocks("advice=")[0]
        levels, = self.blocks("found=")
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder)
            for name in ("sources", "exports", "bin"):
                (path / name).mkdir()
            shutil.copy(MOVIES / "source.mov", path / "sources/a.mov")
            shutil.copy(MOVIES / "export.mov", path / "exports/a.mov")
            (path / "bin/lumacheck").symlink_to(LUMACHECK)
            (path / "check-exports").write_text(check_all)
            environment = {**os.environ, "PATH": f"{path}/bin:{os.environ['PATH']}"}
            done = run("sh", "check-exports", "sources", "exports", cwd=folder, env=environment)
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assertIn("exports/a.mov: Gamma shift: the destination is darker", done.stdout)
            self.assertIn("\n  Export again", done.stdout)
            shutil.copy(MOVIES / "source.mov", path / "exports/b.mov")

            def after(export, script):
                assignments = f"source=sources/a.mov; export=exports/{export}.mov\n"
                return run("sh", "-c", assignments + script, cwd=folder, env=environment).stdout

            self.assertEqual(after("b", mend), "", "there is nothing to mend")
            out_of(LUMACHECK, "sync", path / "exports/a.mov", path / "exports/b.mov")
            self.assertIn("Saved", after("b", mend), "only a tag is wrong")
            self.assertEqual(after("a", mend), "", "no tag can mend it")
            self.assertEqual(after("a", levels), "", "it is neither")
            squeeze = "-vf lutyuv=y=64+val*219/255:u=512+(val-512)*224/255:v=512+(val-512)*224/255 -c:v prores_ks"
            out_of("ffmpeg", "-v", "error", "-i", MOVIES / "source.mov", *squeeze.split(), path / "exports/c.mov")
            self.assertEqual(after("c", levels), "exports/c.mov: look at its levels and its matrix\n")


if __name__ == "__main__":
    unittest.main()

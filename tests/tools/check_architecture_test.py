#!/usr/bin/env python3
"""What is told of the tree is held to it: what lacks on either side is told."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import check_architecture  # noqa: E402

ROOM = "\n\nlumacheck_room()\n"


class Architecture(unittest.TestCase):
    def told(self, head, *files, page="`movie/atoms`"):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            texts = {"docs/architecture.md": page, "movie/atoms/CMakeLists.txt": head + ROOM, **dict.fromkeys(files, "")}
            for path, text in texts.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text, encoding="utf-8")
            return list(check_architecture.disagreements(root))

    def test_a_head_that_lists_all_units_is_true(self):
        head = "# Atoms: not a unit.\n#\n#   Atom, Table: what they know, at\n#     length: and more\n#   Edit: edits"
        self.assertEqual(self.told(head, "movie/atoms/Atom.h", "movie/atoms/Table.h", "movie/atoms/Edit.cpp"), [])

    def test_a_family_is_listed_by_how_its_names_begin(self):
        self.assertEqual(self.told("#   Atom...: all of them", "movie/atoms/AtomReader.h", "movie/atoms/AtomWriter.h"), [])

    def test_what_makes_programs_need_not_be_listed(self):
        self.assertEqual(self.told("#   Atom: one", "movie/atoms/Atom.h", "movie/atoms/main.cpp"), [])

    def test_a_unit_that_is_not_listed_is_told(self):
        self.assertEqual(self.told("#   Atom: one", "movie/atoms/Atom.h", "movie/atoms/AtomReader.cpp"),
                         ["movie/atoms/AtomReader: is not listed at the head of movie/atoms/CMakeLists.txt"])

    def test_a_unit_that_is_gone_is_told(self):
        self.assertEqual(self.told("#   Atom, Gone: two", "movie/atoms/Atom.h"),
                         ["movie/atoms/CMakeLists.txt: lists Gone, which is not there"])

    def test_a_comment_further_down_lists_nothing(self):
        self.assertEqual(len(self.told("#   Atom: one\n\nset(a b)\n#   Table: two", "movie/atoms/Atom.h", "movie/atoms/Table.h")), 1)

    def test_a_room_that_the_page_does_not_name_is_told(self):
        self.assertEqual(self.told("", page="movie/atoms2, x/movie/atoms"),
                         ["docs/architecture.md: does not name the room movie/atoms"])

    def test_a_path_on_the_page_that_is_gone_is_told(self):
        self.assertEqual(self.told("", page="`movie/atoms`, `docs/gone.md`"), ["docs/architecture.md: names docs/gone.md, which is not there"])


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""The page of the architecture is held to the tree: what lacks on either side is told."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import check_architecture  # noqa: E402


class Architecture(unittest.TestCase):
    def told(self, page, *files):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for path, text in {"docs/architecture.md": page, **dict.fromkeys(files, "")}.items():
                (root / path).parent.mkdir(parents=True, exist_ok=True)
                (root / path).write_text(text, encoding="utf-8")
            return list(check_architecture.disagreements(root))

    def test_a_page_that_names_all_units_is_true(self):
        self.assertEqual(self.told("`Atom`, `Table.h`, `movie/Edit`", "movie/Atom.h", "movie/Table.h", "movie/Edit.cpp"), [])

    def test_a_family_is_named_by_what_its_names_share(self):
        self.assertEqual(self.told("`FileTree…`, `…Save`", "system/FileTreeCopy.h", "app/DelegateSave.cpp"), [])

    def test_an_ellipsis_alone_names_nothing(self):
        self.assertEqual(self.told("`…`", "app/Atom.h"), ["Atom: is not on the page"])

    def test_a_unit_that_is_not_named_is_told(self):
        self.assertEqual(self.told("`Atom`", "movie/Atom.h", "check/Other.cpp"), ["Other: is not on the page"])

    def test_a_name_that_only_begins_like_a_unit_does_not_name_it(self):
        self.assertEqual(self.told("`AtomReader`", "movie/Atom.h", "movie/AtomReader.h"), ["Atom: is not on the page"])

    def test_a_unit_that_is_gone_is_told(self):
        self.assertEqual(self.told("`Atom`, `Gone`", "movie/Atom.h"), ["Gone: is on the page and not in the tree"])

    def test_a_path_that_is_gone_is_told(self):
        self.assertEqual(self.told("`Atom`, `docs/gone.md`", "movie/Atom.h"), ["docs/gone.md: is on the page and not in the tree"])


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""The layer check refuses what it is there to refuse."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_layers.py"


def run_on(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        done = subprocess.run([sys.executable, TOOL, folder], capture_output=True, text=True)
        return done.returncode, done.stdout


class Layers(unittest.TestCase):
    def refuses(self, file, include):
        status, said = run_on({file: f"#include {include}\n"})
        self.assertEqual(status, 1, said)
        self.assertIn(f"{file}:1:", said)

    def accepts(self, file, include):
        status, said = run_on({file: f"#include {include}\n"})
        self.assertEqual(status, 0, said)

    def test_refuses_an_include_that_points_up(self):
        self.refuses("movie/Movie.cpp", '"SharedFiles/log/QVLog.h"')
        self.refuses("check/ColorInfo.h", '"cli/Terminal.h"')
        self.refuses("movie/atoms/AtomReader.cpp", '"movie/decode/Picture.h"')
        self.refuses("cli/main.cpp", '"app/Window.h"')
        self.refuses("check/GammaCheck.cpp", '"tests/support/AtomBuilder.h"')

    def test_refuses_movies_in_units_that_know_none(self):
        self.refuses("SharedFiles/timecode/QVTimecode.h", '"movie/Movie.h"')

    def test_refuses_an_include_not_written_from_the_root(self):
        self.refuses("movie/Movie.cpp", '"Movie.h"')

    def test_refuses_libraries_outside_their_wrappers(self):
        self.refuses("movie/Movie.cpp", "<libavcodec/avcodec.h>")
        self.refuses("movie/decode/ffmpeg/FfmpegDecoder.h", "<libavcodec/avcodec.h>")
        self.refuses("movie/render/IccProfile.h", "<lcms2.h>")
        self.refuses("SharedFiles/log/QVLog.cpp", "<plist/plist.h>")
        self.refuses("movie/Movie.h", "<QString>")
        self.refuses("cli/main.cpp", "<QApplication>")
        self.refuses("SharedFiles/log/QVLog.h", "<QWidget>")

    def test_keeps_the_privileged_program_by_itself(self):
        self.refuses("SharedFiles/privileged/main.cpp", '"SharedFiles/log/QVLog.h"')
        self.refuses("SharedFiles/authorization/QVAuthorization.cpp", '"SharedFiles/privileged/PrivilegedRun.h"')
        self.refuses("cli/main.cpp", '"SharedFiles/privileged/ToolCommand.h"')
        self.accepts("SharedFiles/privileged/main.cpp", '"SharedFiles/privileged/PrivilegedRun.h"')
        self.accepts("SharedFiles/privileged/ProtectedPlaces.cpp", '"SharedFiles/foundation/QVLocalPaths.h"')

    def test_accepts_what_points_down(self):
        self.accepts("cli/main.cpp", '"check/GammaCheck.h"')
        self.accepts("SharedFiles/timecode/QVQuickTime.h", '"movie/Movie.h"')
        self.accepts("check/Report.h", "<QString>")
        self.accepts("movie/decode/ffmpeg/FfmpegBackend.cpp", "<libavcodec/avcodec.h>")
        self.accepts("movie/render/IccProfile.cpp", "<lcms2.h>")
        self.accepts("app/Window.h", "<QWidget>")
        self.accepts("SharedFiles/alerts/QVAlert.cpp", "<QMessageBox>")


if __name__ == "__main__":
    unittest.main()

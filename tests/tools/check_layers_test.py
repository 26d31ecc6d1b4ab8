#!/usr/bin/env python3
"""The layer check refuses what it is there to refuse."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
sys.dont_write_bytecode = True
import check_layers  # noqa: E402

HOUSE = {
    "system/CMakeLists.txt": "lumacheck_room(PUBLIC tl::expected)",
    "system/Descriptor.h": "",
    "movie/atoms/CMakeLists.txt": "lumacheck_room(PUBLIC tl::expected PRIVATE system ZLIB::ZLIB)",
    "movie/atoms/AtomReader.h": "",
    "movie/save/CMakeLists.txt": "lumacheck_room(PUBLIC movie_atoms)",
    "movie/save/Save.h": '#include "movie/atoms/AtomReader.h"',
    "movie/render/CMakeLists.txt": "lumacheck_room(PUBLIC movie_atoms PRIVATE PkgConfig::LCMS2)",
    "movie/decode/ffmpeg/CMakeLists.txt":
        "function(lumacheck_module name)\n  target_link_libraries(${name} PRIVATE lumacheck_options ${ARG_LIBS} PkgConfig::LIBAVCODEC)\n"
        "endfunction()\nlumacheck_module(ffmpeg OUTPUT_NAME ffmpeg FILES A.cpp LIBS movie_atoms)",
    "movie/CMakeLists.txt": "# The movie.\nlumacheck_room(PUBLIC movie_save)",
    "movie/Movie.h": "",
    "SharedFiles/log/CMakeLists.txt": "lumacheck_room(PUBLIC Qt6::Core)",
    "SharedFiles/log/QVLog.h": "",
    "SharedFiles/alerts/CMakeLists.txt": "lumacheck_room(PUBLIC Qt6::Widgets)",
    "SharedFiles/alerts/QVAlert.h": "",
    "SharedFiles/privileged/CMakeLists.txt": "lumacheck_room(PUBLIC system)",
    "SharedFiles/privileged/ToolCommand.h": "",
    "check/CMakeLists.txt": "lumacheck_room(PUBLIC movie PRIVATE shared_log maker_hosts)",
    "cli/CMakeLists.txt":
        "lumacheck_room(PUBLIC check)\nadd_executable(lumacheck main.cpp)\ntarget_link_libraries(lumacheck PRIVATE cli shared_log)",
    "app/CMakeLists.txt": "lumacheck_room(PUBLIC check shared_alerts)",
    "app/Window.h": "",
    "tests/support/AtomBuilder.h": "",
}


def breaches_with(changes):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in {**HOUSE, **changes}.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n")
        return "\n".join(check_layers.House(pathlib.Path(folder)).breaches())


class Layers(unittest.TestCase):
    def refuses(self, file, include, because=""):
        said = breaches_with({file: f"#include {include}"})
        self.assertIn(f"{file}:1:", said)
        self.assertIn(because, said)

    def refuses_house(self, changes, because):
        self.assertIn(because, breaches_with(changes))

    def accepts(self, file, include):
        self.assertEqual(breaches_with({file: f"#include {include}"}), "")

    def test_accepts_the_house(self):
        self.assertEqual(breaches_with({}), "")

    def test_refuses_an_include_of_what_is_not_linked(self):
        self.refuses("movie/Movie.cpp", '"SharedFiles/log/QVLog.h"', "shared_log is not linked")
        self.refuses("movie/save/Save.cpp", '"movie/Movie.h"', "movie is not linked")
        self.refuses("SharedFiles/log/QVLog.cpp", '"SharedFiles/privileged/ToolCommand.h"')
        self.refuses("check/Check.cpp", '"app/Window.h"')

    def test_refuses_in_a_header_what_only_sources_link(self):
        self.refuses("movie/atoms/Atom.h", '"system/Descriptor.h"', "system is not linked")
        self.refuses("movie/render/IccProfile.h", "<lcms2.h>")
        self.refuses("movie/decode/ffmpeg/Decoder.h", "<libavcodec/avcodec.h>")
        self.accepts("movie/atoms/Atom.cpp", '"system/Descriptor.h"')

    def test_refuses_what_a_linked_room_keeps_to_itself(self):
        self.refuses("movie/save/Save.cpp", '"system/Descriptor.h"')

    def test_lets_only_the_main_file_use_what_the_program_links(self):
        self.accepts("cli/main.cpp", '"SharedFiles/log/QVLog.h"')
        self.refuses("cli/Command.cpp", '"SharedFiles/log/QVLog.h"')

    def test_refuses_what_no_program_is_made_of(self):
        self.refuses("check/GammaCheck.cpp", '"tests/support/AtomBuilder.h"', "may include that")

    def test_refuses_an_include_not_written_from_the_root(self):
        self.refuses("movie/Movie.cpp", '"Movie.h"', "written from the root")

    def test_refuses_libraries_that_are_not_linked(self):
        self.refuses("movie/Movie.cpp", "<libavcodec/avcodec.h>")
        self.refuses("SharedFiles/log/QVLog.cpp", "<plist/plist.h>")
        self.refuses("movie/Movie.h", "<QString>", "Qt6::Core is not linked")
        self.refuses("SharedFiles/log/QVLog.h", "<QWidget>", "Qt6::Widgets is not linked")
        self.refuses("SharedFiles/log/QVLog.h", "<QNetworkReply>", "Qt6::Network is not linked")

    def test_refuses_a_room_that_looks_up_or_aside(self):
        self.refuses_house({"movie/save/CMakeLists.txt": "lumacheck_room(PUBLIC movie_atoms PRIVATE shared_log)"}, "look up to")
        self.refuses_house({"app/CMakeLists.txt": "lumacheck_room(PUBLIC cli)"}, "look up to")

    def test_refuses_libraries_outside_their_places(self):
        self.refuses_house({"movie/CMakeLists.txt": "lumacheck_room(PUBLIC Qt6::Core)"}, "reserved for")
        self.refuses_house({"check/CMakeLists.txt": "lumacheck_room(PRIVATE PkgConfig::LIBAVCODEC)"}, "reserved for")
        self.refuses_house({"SharedFiles/log/CMakeLists.txt": "lumacheck_room(PRIVATE Qt6::Widgets)"}, "reserved for")

    def test_refuses_circles_of_rooms_and_of_units(self):
        self.refuses_house({"movie/atoms/CMakeLists.txt": "lumacheck_room(PRIVATE movie_save)"}, "rooms in a circle")
        self.refuses_house({"movie/Movie.h": '#include "movie/Track.h"', "movie/Track.h": '#include "movie/Movie.h"'},
                           "units in a circle: movie/Movie.h -> movie/Track.h -> movie/Movie.h")

    def test_refuses_files_in_no_room_and_too_many_in_one(self):
        self.refuses_house({"movie/drawer/Things.h": ""}, "movie/drawer/Things.h: lies in no room")
        self.refuses_house({f"system/Unit{number}.h": "" for number in range(41)}, "42 files")

    def test_accepts_what_points_down(self):
        self.accepts("cli/Command.cpp", '"movie/atoms/AtomReader.h"')
        self.accepts("check/Report.cpp", "<QString>")
        self.accepts("check/Report.cpp", '"SharedFiles/MakerHosts.h"')
        self.accepts("movie/decode/ffmpeg/Backend.cpp", "<libavcodec/avcodec.h>")
        self.accepts("movie/render/IccProfile.cpp", "<lcms2.h>")
        self.accepts("app/Window.h", "<QWidget>")


if __name__ == "__main__":
    unittest.main()

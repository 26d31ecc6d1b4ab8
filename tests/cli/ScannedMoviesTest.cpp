#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/RunProgram.h"
#include "tests/cli/ScanFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

// The command from end to end, on whole movies.

namespace cli {
namespace {

using movie::test::fixtureMovie;
using movie::test::fixtureMovies;
using namespace test;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(ScannedMovies, ARemuxIsIdenticalFrameByFrame) {
  const PrintedJson json = scanned({scanMaster(), scanRemux()});
  EXPECT_EQ(json["frames"], 288);
  EXPECT_EQ(json["identicalFrames"], 288);
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "identical");
  EXPECT_EQ(json["exitStatus"], 0);
}

TEST(ScannedMovies, AnExcerptIsFoundInItsSource) {
  const PrintedJson json =
      scanned({scanMaster(), scanExport("scan-excerpt", "trim=start_frame=90:end_frame=240,setpts=PTS-STARTPTS")});
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["sourceFrom"]["frame"], 90);
  EXPECT_EQ(json["map"][0]["rate"], 1.0);
  EXPECT_EQ(json["map"][0]["pattern"], "frame-for-frame");
  EXPECT_EQ(json["map"][0]["from"]["timecode"], "00:00:00:00");
  EXPECT_EQ(json["exitStatus"], 0);
}

TEST(ScannedMovies, AnExponentIsToldFromWhereItBegins) {
  const std::string dest = scanExport("scan-power", scanHalfPower);
  const PrintedJson json = scanned({scanMaster(), dest});
  ASSERT_EQ(json["segments"].size(), 2U);
  EXPECT_NEAR(json["segments"][1]["from"]["frame"].number(), 168, 2);
  EXPECT_NEAR(json["segments"][1]["exponent"].number(), 1.2, 0.01);
  EXPECT_EQ(json["segments"][1]["causes"][0]["cause"], "power");
  EXPECT_EQ(json["exitStatus"], 1);
  const ProgramRun run = runLumacheck({"scan", scanMaster(), dest});
  EXPECT_THAT(run.out, HasSubstr("Scan: Gamma shift: the destination is darker, by an exponent of 1.20"));
  EXPECT_THAT(run.out, HasSubstr("gamma shift, exponent 1.20"));
  EXPECT_EQ(run.err, "");
}

TEST(ScannedMovies, APictureThatIsHeldIsToldAsThat) {
  const std::string dest = scanExport("scan-held", "loop=loop=24:size=1:start=90,setpts=N/24/TB");
  const PrintedJson map = scanned({scanMaster(), dest})["map"];
  ASSERT_EQ(map.size(), 3U) << map;
  EXPECT_NEAR(map[1]["from"]["frame"].number(), 91, 1);
  EXPECT_NEAR(map[1]["to"]["frame"].number(), 115, 1);
  EXPECT_EQ(map[1]["rate"], 0);
  EXPECT_EQ(map[1]["pattern"], "duplicated");
  EXPECT_NEAR(map[2]["offset"].number(), -1, 0.03);
  EXPECT_THAT(runLumacheck({"scan", scanMaster(), dest}).out,
              HasSubstr("  holds the picture of the source at 00:00:03:1"));
}

TEST(ScannedMovies, OtherPicturesGetNoNumber) {
  const PrintedJson json = scanned({scanMaster(), scanExport("scan-mirrored", "hflip")});
  EXPECT_EQ(json["exitStatus"], 4);
  EXPECT_TRUE(json["segments"].empty());
  EXPECT_TRUE(json["worst"].is_null());
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "different");
}

TEST(ScannedMovies, TheTableHasALineForEveryFrame) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("frames.csv");
  EXPECT_EQ(runLumacheck({"scan", scanMaster(), scanRemux(), "--from", "2", "--to", "4", "--csv", path}).status, 0);
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  EXPECT_THAT(line, HasSubstr("frame,time,sourceFrame,sourceTime"));
  int lines = 0;
  while (std::getline(file, line)) {
    EXPECT_THAT(line, HasSubstr(std::to_string(48 + lines) + ","));
    ++lines;
  }
  EXPECT_EQ(lines, 48);
}

TEST(ScannedMovies, EveryNthFrameIsComparedWhenAsked) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("frames.csv");
  const PrintedJson json = scanned({scanMaster(), scanRemux(), "--sample", "12", "--from", "1", "--csv", path});
  EXPECT_EQ(json["frames"], 22);
  EXPECT_EQ(json["sample"], 12);
  EXPECT_EQ(json["identicalFrames"], 22);
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["pattern"], "frame-for-frame");
  EXPECT_EQ(json["map"][0]["from"]["frame"], 24);
  EXPECT_EQ(json["map"][0]["to"]["frame"], 288);
  EXPECT_EQ(json["exitStatus"], 0);
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  std::getline(file, line);
  EXPECT_THAT(line, StartsWith("24,1.000000,24,"));
  std::getline(file, line);
  EXPECT_THAT(line, StartsWith("36,1.500000,36,"));
  EXPECT_EQ(runLumacheck({"scan", scanMaster(), scanRemux(), "--sample", "0"}).status, 2);
  EXPECT_THAT(runLumacheck({"scan", scanMaster(), scanRemux(), "--sample", "12"}).out,
              HasSubstr("Frames: 24, one of every 12, 24 of them identical"));
}

TEST(ScannedMovies, ATableThatCannotBeWrittenIsAFailure) {
  const ProgramRun run = runLumacheck({"scan", scanMaster(), scanRemux(), "--to", "1", "--csv", "/nowhere/frames.csv"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("/nowhere/frames.csv: The table cannot be written"));
  EXPECT_EQ(run.out, "") << "nobody waits for a scan whose table has no place";
}

TEST(ScannedMovies, APictureIsDrawnAsItsNameSays) {
  const movie::test::TemporaryFolder folder;
  for (const auto& [name, begin] : {std::pair("scan.svg", "<?xml"), std::pair("scan.PNG", "\x89PNG")}) {
    const std::string path = folder.path(name);
    const ProgramRun run = runLumacheck({"scan", scanMaster(), scanRemux(), "--to", "2", "--plot", path});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(movie::test::textOf(path), testing::StartsWith(begin));
  }
  EXPECT_THAT(movie::test::textOf(folder.path("scan.svg")), HasSubstr("identical (sure by 100 %)"));
}

TEST(ScannedMovies, APictureThatCannotBeDrawnIsToldBeforeTheScan) {
  const auto drawn = [](const std::string& path, const std::string& to) {
    return runLumacheck({"scan", scanMaster(), scanRemux(), "--to", to, "--plot", path});
  };
  const movie::test::TemporaryFolder folder;
  const ProgramRun gif = drawn(folder.path("scan.gif"), "1");
  EXPECT_EQ(gif.status, 2);
  EXPECT_EQ(gif.out, "");
  EXPECT_THAT(gif.err, HasSubstr("scan.gif: A picture of a scan is an .svg or a .png file."));
  EXPECT_TRUE(folder.names().empty());
  const ProgramRun nowhere = drawn("/nowhere/scan.svg", "1");
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_EQ(nowhere.out, "");
  EXPECT_THAT(nowhere.err, HasSubstr("/nowhere/scan.svg: The picture cannot be written: No such file"));
}

/// A signal is sent so long after the process was first seen.
std::function<bool(pid_t)> after(std::chrono::milliseconds pause) {
  return [pause, begin = std::optional<std::chrono::steady_clock::time_point>()](pid_t) mutable {
    const auto now = std::chrono::steady_clock::now();
    if (!begin) begin = now;
    return now - *begin >= pause;
  };
}

TEST(ScannedMovies, AnInterruptTellsWhatWasFoundUntilThen) {
  const std::string whole = fixtureMovie("scan-long.mov", {"-stream_loop", "40", "-i", scanMaster(), "-c", "copy"});
  bool wasEarly = false, wasQuicker = false;
  for (std::chrono::milliseconds pause(50); !wasEarly && !wasQuicker; pause *= 2) {
    const ProgramRun run = test::runLumacheckUntil(after(pause), SIGINT, {"scan", whole, whole});
    SCOPED_TRACE(pause.count());
    wasQuicker = run.status == 0;
    if (wasQuicker || run.status == -SIGINT) continue;  // or had not begun
    EXPECT_EQ(run.status, 130);
    if (run.out.empty()) continue;  // before there was anything to tell
    wasEarly = true;
    EXPECT_THAT(run.out, StartsWith("Stopped "));
    EXPECT_THAT(run.out, Not(HasSubstr("Nothing is to be done")));
    EXPECT_THAT(run.out, Not(HasSubstr("same picture"))) << "nothing is known of the rest";
  }
  EXPECT_TRUE(wasEarly) << "no scan was still under way";
}

TEST(ScannedMovies, AMovieThatEndsInTheMiddleIsToldWithThePlace) {
  const movie::test::TemporaryFolder folder;
  const std::string whole =
      fixtureMovies(scanMaster(), {{"scan-front.mov", {"-c", "copy", "-movflags", "faststart"}}}).front();
  const std::string cut = folder.path("cut.mov");
  std::filesystem::copy_file(whole, cut);
  std::filesystem::resize_file(cut, std::filesystem::file_size(whole) * 6 / 10);
  const PrintedJson json = scanned({scanMaster(), cut});
  EXPECT_EQ(json["exitStatus"], 2);
  ASSERT_FALSE(json["failure"].is_null());
  EXPECT_EQ(json["failure"]["side"], "dest");
  EXPECT_GT(json["frames"].number(), 50);
  EXPECT_EQ(json["failure"]["at"]["frame"], json["frames"]);
}

TEST(ScannedMovies, BeginWithTheFrameOfATimecode) {
  const PrintedJson json = scanned({scanMaster(), scanRemux(), "--from", "00:00:02:02", "--to", "00:00:04:07"});
  EXPECT_EQ(json["segments"][0]["from"]["frame"], 50);
  EXPECT_EQ(json["segments"][0]["to"]["frame"], 103);
}

TEST(ScannedMovies, TwoResultsDoNotGoToOneFile) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("both");
  const ProgramRun run = runLumacheck({"scan", scanMaster(), scanRemux(), "--csv", path, "--resume", path});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("both: Two results cannot go to one file."));
  EXPECT_TRUE(folder.names().empty());
}

TEST(ScannedMovies, WhatIsNoMovieIsRefused) {
  const PrintedJson json = scanned({scanMaster(), "/nowhere.mov"});
  EXPECT_EQ(json["exitStatus"], 2);
  EXPECT_EQ(json["error"]["path"], "/nowhere.mov");
  EXPECT_EQ(runLumacheck({"scan", scanMaster(), scanRemux(), "--from", "4", "--to", "3"}).status, 2);
  EXPECT_EQ(runLumacheck({"scan", scanMaster(), scanRemux(), "--from", "4000"}).status, 2);
}

}  // namespace
}  // namespace cli

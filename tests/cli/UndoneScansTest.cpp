#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/RunProgram.h"
#include "tests/cli/ScanFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

// What a scan undoes, and where.

namespace cli {
namespace {

using namespace test;
using testing::HasSubstr;

TEST(UndoneScans, OnlyWhatWasScannedIsUndone) {
  const PrintedJson part =
      scanned({scanMaster(), scanExport("scan-mendable-luma", scanPower), "--to", "4", "--filter"});
  EXPECT_EQ(part["segments"].size(), 1U);
  EXPECT_THAT(part["filter"]["text"].text(), HasSubstr("enable='between(t,-0.0"));
}

TEST(UndoneScans, WhatCannotBeUndoneIsTold) {
  const auto filterLine = [](const std::string& dest) {
    const std::string out = runLumacheck({"scan", scanMaster(), dest, "--filter"}).out;
    return out.substr(out.rfind("Filter: "));
  };
  EXPECT_EQ(filterLine(scanRemux()), "Filter: none. There is nothing to undo.\n");
  EXPECT_EQ(filterLine(scanExport("scan-mirrored", "hflip")),
            "Filter: none. It is not known how the one lies upon the other.\n");
  EXPECT_FALSE(scanned({scanMaster(), scanRemux(), "--to", "1"}).contains("filter")) << "it was not asked for";
}

std::string tableLine(const std::vector<std::string>& arguments) {
  const std::string out = runLumacheck(arguments).out;
  return out.substr(out.rfind("Table: "));
}

TEST(UndoneScans, WhereNoTableIsMadeThereIsNoFile) {
  const movie::test::TemporaryFolder folder;
  const std::string table = folder.path("undo.cube");
  const auto lineOf = [&](const std::string& dest) { return tableLine({"scan", scanMaster(), dest, "--lut", table}); };
  EXPECT_EQ(lineOf(scanRemux()), "Table: none. There is nothing to undo.\n");
  EXPECT_EQ(lineOf(scanExport("scan-mirrored", "hflip")),
            "Table: none. It is not known how the one lies upon the other.\n");
  EXPECT_EQ(lineOf(scanExport("scan-mendable-half", scanHalfPower)),
            "Table: none. No table is made: only a part of the movie needs it, and a table knows of no times.\n");
  EXPECT_TRUE(folder.names().empty());
}

TEST(UndoneScans, ATableIsACubeFileThatHasAPlace) {
  const auto refused = [](const std::string& path) {
    const ProgramRun run = runLumacheck({"scan", scanMaster(), scanRemux(), "--to", "1", "--lut", path});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "") << "nobody waits for a scan whose table has no place";
    return run.err;
  };
  EXPECT_THAT(refused(scanRemux()), HasSubstr(".mov: A lookup table is a .cube file."));
  EXPECT_THAT(refused("/nowhere/undo.CUBE"), HasSubstr("/nowhere/undo.CUBE: The table cannot be written"));
}

TEST(UndoneScans, AProofOfASampledScanIsMeasuredToo) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("proof.mov"), dest = scanExport("scan-mendable-luma", scanPower);
  const PrintedJson proof =
      scanned({scanMaster(), dest, "--from", "0.05", "--to", "3", "--sample", "4", "--proof", path})["proof"];
  EXPECT_GT(proof["compared"].number(), 5) << proof;
  EXPECT_GT(proof["difference"]["before"].number(), 5);
  EXPECT_LT(proof["difference"]["after"].number(), 1);
}

TEST(UndoneScans, AProofIsHeldAgainstTheFramesThatItShows) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("proof.MOV");
  const std::string excerpt = std::string("trim=start_frame=90:end_frame=150,setpts=PTS-STARTPTS,crop=320:136,") +
                              "pad=320:180:0:22," + scanPower;
  const std::string dest = scanExport("scan-proven-excerpt", excerpt);
  const PrintedJson proof = scanned({scanMaster(), dest, "--proof", path})["proof"];
  EXPECT_EQ(proof["frames"], 60);
  EXPECT_GT(proof["compared"].number(), 20);
  EXPECT_EQ(proof["causes"][0]["cause"], "same");
  // And by a scan that has to find its place by itself.
  const PrintedJson again = scanned({scanMaster(), path});
  EXPECT_EQ(again["map"][0]["sourceFrom"]["frame"], 90);
  EXPECT_EQ(again["map"][0]["pattern"], "frame-for-frame");
  EXPECT_NEAR(again["finding"]["difference"].number(), proof["difference"]["after"].number(), 0.3);
}

TEST(UndoneScans, AProofHasTheTagsOfTheSourceAndTheTimesOfTheDestination) {
  const movie::test::TemporaryFolder folder;
  const std::string source =
      fixtureMovies(scanMaster(), {{"scan-tagged.mov",
                                    {"-t", "3", "-r", "24000/1001", "-c:v", "prores_ks", "-color_primaries", "bt709",
                                     "-color_trc", "bt709", "-colorspace", "smpte170m", "-movflags",
                                     "+write_colr+write_gama", "-mov_gamma", "2.2"}}})
          .front();
  const std::string dest =
      fixtureMovies(source, {{"scan-untagged.mp4",
                              {"-vf", "lutyuv=y='64+876*pow(clip((val-64)/876,0,1),1.2)',format=yuv420p", "-c:v",
                               "libx264", "-crf", "16"}}})
          .front();
  const std::string path = folder.path("proof.mov");
  EXPECT_EQ(scanned({source, dest, "--proof", path})["proof"]["causes"][0]["cause"], "same");
  const PrintedJson info = PrintedJson::parse(runLumacheck({"info", "--json", path}).out)[0];
  EXPECT_NEAR(info["gamma"].number(), 2.2, 0.001);
  const std::string words = runLumacheck({"info", path}).out;
  EXPECT_THAT(words, HasSubstr("1-1-6"));
  EXPECT_THAT(words, HasSubstr("320 x 180"));
  EXPECT_THAT(words, HasSubstr("23.976 fps"));
}

TEST(UndoneScans, AProofTakesNoMoviesPlace) {
  const movie::test::TemporaryFolder folder;
  const std::string source = folder.path("source.mov"), dest = folder.path("dest.mov");
  std::filesystem::copy_file(scanRemux(), source);
  std::filesystem::copy_file(scanRemux(), dest);
  std::filesystem::create_symlink(dest, folder.path("link.mov"));
  for (const std::string& path : {source, dest, folder.path("link.mov")}) {
    const ProgramRun run = runLumacheck({"scan", source, dest, "--proof", path});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(path + ": The proof would take the place of a movie that is scanned."));
  }
  EXPECT_THAT(runLumacheck({"scan", source, dest, "--csv", dest}).err, HasSubstr("The table would take the place"));
  EXPECT_EQ(movie::test::contentOf(dest), movie::test::contentOf(scanRemux()));
}

TEST(UndoneScans, WhereNoProofIsMadeThereIsNoFile) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("proof.mov");
  EXPECT_THAT(runLumacheck({"scan", scanMaster(), scanRemux(), "--proof", path}).out,
              HasSubstr("Proof: none. There is nothing to undo.\n"));
  const PrintedJson json = scanned({scanMaster(), scanRemux(), "--to", "2", "--proof", path});
  EXPECT_EQ(json["proof"]["why"], "There is nothing to undo.");
  EXPECT_TRUE(json["proof"]["path"].is_null());
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
}  // namespace cli

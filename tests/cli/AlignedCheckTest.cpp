#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/RunProgram.h"
#include "tests/support/MovieFixture.h"

// A check that looks for the destination's picture.

namespace cli {
namespace {

using movie::test::fixtureMovie;
using movie::test::fixtureMovies;
using test::PrintedJson;
using test::ProgramRun;
using testing::HasSubstr;

/// Ten seconds of something that moves.
std::string alignMaster() {
  return fixtureMovie(
      "align-master.mp4",
      {"-f", "lavfi", "-i",
       "mandelbrot=s=320x180:r=24:start_x=-1.2:start_y=0.2:start_scale=0.5:end_scale=0.01:end_pts=240", "-t", "10",
       "-pix_fmt", "yuv420p", "-c:v", "libx264", "-preset", "ultrafast", "-crf", "16", "-g", "24"});
}

std::string alignExport(const std::string& name, const std::string& filter) {
  return fixtureMovies(alignMaster(),
                       {{name + ".mp4", {"-vf", filter, "-c:v", "libx264", "-preset", "ultrafast", "-crf", "18"}}})
      .front();
}

/// From 2.5 s on, darker.
std::string alignExcerpt() {
  return alignExport("align-excerpt",
                     "trim=start_frame=60,setpts=PTS-STARTPTS,lutyuv=y='16+219*pow(clip((val-16)/219,0,1),1.25)'");
}

ProgramRun aligned(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"check", "--align"});
  return test::runLumacheck(arguments);
}

PrintedJson alignedJson(std::vector<std::string> arguments) {
  arguments.push_back("--json");
  return PrintedJson::parse(aligned(std::move(arguments)).out);
}

TEST(AlignedCheck, IsMadeWhereThePictureWasFound) {
  EXPECT_EQ(test::runLumacheck({"check", alignMaster(), alignExcerpt(), "--at", "3"}).status, 4);
  const PrintedJson json = alignedJson({alignMaster(), alignExcerpt(), "--at", "3"});
  EXPECT_EQ(json["alignment"].dump(), R"({"result":"found","offset":2.5})");
  EXPECT_EQ(json["dest"]["timecode"], "00:00:03:00");
  EXPECT_EQ(json["source"]["timecode"], "00:00:05:12");
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "power");
  EXPECT_NEAR(json["finding"]["causes"][0]["exponent"].number(), 1.25, 0.02);
  EXPECT_EQ(json["pixels"]["shift"], "darker") << "the report is about those frames, too";
  EXPECT_EQ(json["exitStatus"], 1);

  const ProgramRun text = aligned({alignMaster(), alignExcerpt(), "--at", "3"});
  EXPECT_THAT(text.out, HasSubstr("Source: " + alignMaster() + " at 00:00:05:12\n"));
  EXPECT_EQ(text.err, "");
}

TEST(AlignedCheck, LooksForNothingWhereThePicturesAreTheSame) {
  const PrintedJson json = alignedJson({alignMaster(), alignMaster(), "--at", "3"});
  EXPECT_TRUE(json["alignment"].is_null());
  EXPECT_EQ(json["exitStatus"], 0);
}

TEST(AlignedCheck, LooksForNothingWhereOnlyTagsDiffer) {
  const std::string tagged =
      fixtureMovies(alignMaster(), {{"align-tagged.mp4",
                                     {"-c", "copy", "-bsf:v",
                                      "h264_metadata=colour_primaries=9:transfer_characteristics=14:"
                                      "matrix_coefficients=9"}}})
          .front();
  const PrintedJson json = alignedJson({alignMaster(), tagged, "--at", "3"});
  EXPECT_EQ(json["finding"]["causes"][0]["where"], "tags");
  EXPECT_TRUE(json["alignment"].is_null());
}

TEST(AlignedCheck, StaysWhereItIsWhenThatIsThePlace) {
  const PrintedJson json = alignedJson({alignMaster(), alignExport("align-darker", "eq=brightness=-0.1"), "--at", "4"});
  EXPECT_EQ(json["alignment"].dump(), R"({"result":"found","offset":0.0})");
  EXPECT_EQ(json["source"]["timecode"], "00:00:04:00");
}

TEST(AlignedCheck, SaysWhenThePictureIsNotFound) {
  const std::string other = fixtureMovie("align-other.mp4", {"-f", "lavfi", "-i", "cellauto=s=320x180:r=24", "-t", "8",
                                                             "-pix_fmt", "yuv420p", "-c:v", "libx264", "-g", "24"});
  const ProgramRun run = aligned({alignMaster(), other, "--at", "3", "--json"});
  EXPECT_EQ(run.status, 4);
  EXPECT_THAT(run.err, HasSubstr("The destination's picture was not found in the source within 10 seconds."));
  EXPECT_EQ(PrintedJson::parse(run.out)["alignment"].dump(), R"({"result":"notFound","offset":null})");
}

TEST(AlignedCheck, SaysWhenThePictureMayBeAnywhere) {
  const std::string still = fixtureMovie("align-still.mp4", {"-f", "lavfi", "-i", "smptehdbars=s=320x180:r=24", "-t",
                                                             "6", "-pix_fmt", "yuv420p", "-c:v", "libx264"});
  const std::string darker =
      fixtureMovies(still, {{"align-still-darker.mp4", {"-vf", "lutyuv=y='16+219*pow(clip((val-16)/219,0,1),1.3)'"}}})
          .front();
  const ProgramRun run = aligned({still, darker, "--at", "2"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("The pictures do not move: where in the source this one is cannot be told."));
}

TEST(AlignedCheck, IsOfOneFrameWhosePlaceIsNotGiven) {
  EXPECT_EQ(aligned({alignMaster(), alignExcerpt(), "--frames", "3"}).status, 2);
  EXPECT_EQ(aligned({alignMaster(), alignExcerpt(), "--source-at", "3"}).status, 2);
}

}  // namespace
}  // namespace cli

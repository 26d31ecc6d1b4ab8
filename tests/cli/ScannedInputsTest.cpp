#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/RunProgram.h"
#include "tests/cli/ScanFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

// Unusual movies, from end to end.

namespace cli {
namespace {

using namespace movie::test;
using namespace test;
using testing::HasSubstr;
using testing::Not;

/// The master, made over by ffmpeg's options.
std::string madeOver(const std::string& name, const std::vector<std::string>& options) {
  return fixtureMovies(scanMaster(), {{name, options}}).front();
}

std::vector<std::string> encodedWith(const std::vector<std::string>& options) {
  std::vector<std::string> all{"-c:v", "libx264", "-preset", "ultrafast", "-crf", "18"};
  all.insert(all.end(), options.begin(), options.end());
  return all;
}

void expectRefused(const PrintedJson& json) {
  EXPECT_EQ(json["exitStatus"], 4);
  EXPECT_TRUE(json["segments"].empty());
  EXPECT_TRUE(json["worst"].is_null());
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "different");
}

TEST(ScannedInputs, OfOneStillPictureTheShiftIsToldAndTheOffsetNot) {
  const std::string still = madeOver("scan-still.mov", encodedWith({"-vf", "loop=loop=239:size=1,trim=end_frame=240"}));
  const std::string raised =
      fixtureMovies(still, {{"scan-still-power.mov", encodedWith({"-ss", "3", "-vf", scanPower})}}).front();
  const ProgramRun run = runLumacheck({"scan", still, raised});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("The pictures do not move: the offset in time cannot be told; the shift can."));
  EXPECT_NEAR(scanned({still, raised})["segments"][0]["exponent"].number(), 1.2, 0.015);
}

TEST(ScannedInputs, BlackMoviesAreToldToBeBlack) {
  const std::string black = madeOver("scan-black.mov", encodedWith({"-vf", "drawbox=c=black:t=fill"}));
  const std::string other = madeOver("scan-nearly-black.mov", encodedWith({"-vf", "drawbox=c=0x010101:t=fill"}));
  const ProgramRun run = runLumacheck({"scan", black, other});
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.out, HasSubstr("Scan: No verdict: the pictures are black, or of one color."));
  EXPECT_THAT(run.out, Not(HasSubstr("the shift can")));
  expectRefused(scanned({scanMaster(), black}));
  expectRefused(scanned({black, scanMaster()}));
  EXPECT_EQ(scanned({black, black})["finding"]["causes"][0]["cause"], "identical");
}

TEST(ScannedInputs, ABlackPartIsNotMeasuredAndFadesMakeNoSegment) {
  const std::string faded =
      madeOver("scan-faded.mov",
               encodedWith({"-vf", "fade=in:0:24,drawbox=c=black:t=fill:enable='between(t,4,6)',fade=out:264:24"}));
  const std::string raised = fixtureMovies(faded, {{"scan-faded-power.mov", encodedWith({"-vf", scanPower})}}).front();
  const PrintedJson json = scanned({faded, raised});
  ASSERT_EQ(json["segments"].size(), 1U);
  EXPECT_NEAR(json["segments"][0]["exponent"].number(), 1.2, 0.015);
  ASSERT_EQ(json["unmeasured"].size(), 1U);
  EXPECT_EQ(json["unmeasured"][0]["why"], "dark");
  EXPECT_EQ(json["unmeasured"][0]["from"]["frame"], 96);
  EXPECT_THAT(runLumacheck({"scan", faded, raised}).out,
              HasSubstr("of them are not measured: they are black, or of one color."));
}

TEST(ScannedInputs, TheDimEndsOfFadesHaveTheirCounterparts) {
  const std::string faded = madeOver(
      "scan-long-fades.mov", encodedWith({"-preset", "veryfast", "-crf", "12", "-vf", "fade=in:0:60,fade=out:180:72"}));
  const std::string power = "lutyuv=y='16+219*pow(clip((val-16)/219,0,1),1.3)'";
  const std::string darker =
      fixtureMovies(faded,
                    {{"scan-long-fades-darker.mov", encodedWith({"-preset", "veryfast", "-crf", "26", "-vf", power})}})
          .front();
  const PrintedJson json = scanned({faded, darker});
  EXPECT_TRUE(json["unmatched"].empty()) << json["unmatched"];
  EXPECT_TRUE(json["dropped"].empty()) << json["dropped"];
  ASSERT_EQ(json["segments"].size(), 1U);
  EXPECT_NEAR(json["segments"][0]["exponent"].number(), 1.3, 0.015);
}

TEST(ScannedInputs, AFadeOfTheExportAloneIsNoReasonToTellTheRestWrongly) {
  const PrintedJson json =
      scanned({scanMaster(), scanExport("scan-faded-alone", "fade=out:230:58," + std::string(scanPower))});
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "power");
  ASSERT_GE(json["segments"].size(), 2U);
  EXPECT_NEAR(json["segments"][0]["exponent"].number(), 1.2, 0.015);
  EXPECT_NEAR(json["segments"][0]["to"]["frame"].number(), 244, 20);
}

TEST(ScannedInputs, SoundAloneIsNoMovieWithPictures) {
  const std::string sound = fixtureMovie("scan-sound.mov", {"-f", "lavfi", "-i", "sine=d=4", "-c:a", "aac"});
  const ProgramRun run = runLumacheck({"scan", scanMaster(), sound});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("the movie has no video track"));
  EXPECT_EQ(runLumacheck({"scan", sound, scanMaster()}).status, 2);
}

TEST(ScannedInputs, AVariableFrameRateIsFollowedFrameByFrame) {
  const std::string variable =
      madeOver("scan-variable.mov",
               encodedWith({"-vf", std::string("select='gt(random(1),0.4)',") + scanPower, "-fps_mode", "vfr"}));
  const PrintedJson json = scanned({scanMaster(), variable});
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["rate"], 1.0);
  EXPECT_EQ(json["map"][0]["pattern"], "dropped");
  EXPECT_TRUE(json["unmatched"].empty());
  EXPECT_NEAR(json["segments"][0]["exponent"].number(), 1.2, 0.015);
}

TEST(ScannedInputs, AnEditListBeginsWhereItSays) {
  const std::string cut = madeOver("scan-edit.mov", {"-ss", "3.4", "-c", "copy"});
  const PrintedJson json = scanned({scanMaster(), cut});
  EXPECT_EQ(json["identicalFrames"], json["frames"]);
  EXPECT_EQ(json["map"][0]["pattern"], "frame-for-frame");
  EXPECT_NEAR(json["map"][0]["offset"].number(), 3.4, 0.05);
}

TEST(ScannedInputs, AnEmptyEditIsNoFrame) {
  const std::string late =
      fixtureMovie("scan-late.mov", {"-itsoffset", "2", "-i", scanMaster(), "-f", "lavfi", "-i", "sine=d=14", "-map",
                                     "0:v", "-map", "1:a", "-c:v", "copy", "-c:a", "aac"});
  const PrintedJson json = scanned({scanMaster(), late});
  EXPECT_EQ(json["identicalFrames"], 288);
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["pattern"], "frame-for-frame");
  EXPECT_NEAR(json["map"][0]["from"]["seconds"].number(), 2, 0.01);
  EXPECT_EQ(json["map"][0]["sourceFrom"]["frame"], 0);
}

TEST(ScannedInputs, FragmentsWithoutAnEditListBeginWithTheirFirstFrame) {
  const std::string fragments = madeOver("scan-fragments.mp4", encodedWith({"-movflags", "frag_keyframe+empty_moov"}));
  const PrintedJson json = scanned({scanMaster(), fragments});
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["sourceFrom"]["frame"], 0);
  EXPECT_TRUE(json["dropped"].empty());
}

TEST(ScannedInputs, InterlacedPicturesAreComparedWithProgressiveOnes) {
  const std::string fields =
      madeOver("scan-fields.mov", encodedWith({"-vf", "fps=48,tinterlace=interleave_top", "-flags", "+ildct+ilme"}));
  const PrintedJson json = scanned({scanMaster(), fields});
  ASSERT_EQ(json["map"].size(), 1U);
  EXPECT_EQ(json["map"][0]["rate"], 1.0);
  EXPECT_EQ(json["finding"]["causes"][0]["cause"], "same");
}

TEST(ScannedInputs, ATurnThatIsStatedIsUndoneAndOneThatIsNotIsRefused) {
  const std::string turned = madeOver("scan-turned.mov", encodedWith({"-vf", "transpose=2"}));
  const std::string stated =
      fixtureMovies(turned, {{"scan-stated-turn.mov", {"-c", "copy", "-metadata:s:v", "rotate=270"}}}).front();
  EXPECT_EQ(scanned({scanMaster(), stated})["finding"]["causes"][0]["cause"], "same");
  expectRefused(scanned({scanMaster(), turned}));
  expectRefused(scanned({scanMaster(), scanExport("scan-upside-down", "vflip")}));
}

TEST(ScannedInputs, FullRangeIsReadAsItSays) {
  const std::string full =
      madeOver("scan-full.mov",
               encodedWith({"-vf", "scale=in_range=tv:out_range=pc", "-pix_fmt", "yuvj420p", "-color_range", "pc"}));
  EXPECT_EQ(scanned({scanMaster(), full})["finding"]["causes"][0]["cause"], "same");
  const std::string marked =
      madeOver("scan-marked-full.mov", encodedWith({"-vf", "setparams=range=pc", "-color_range", "pc"}));
  const PrintedJson json = scanned({scanMaster(), marked});
  ASSERT_EQ(json["segments"].size(), 1U) << "what the exponent of a range error is differs from shot to shot";
  EXPECT_EQ(json["segments"][0]["causes"][0]["cause"], "range");
}

TEST(ScannedInputs, HighDynamicRangeIsComparedInItsOwnCodes) {
  for (const char* const transfer : {"smpte2084", "arib-std-b67"}) {
    const std::vector<std::string> tags{"-pix_fmt",   "yuv420p10le", "-color_primaries", "bt2020",
                                        "-color_trc", transfer,      "-colorspace",      "bt2020nc"};
    const std::string hdr = madeOver(std::string("scan-") + transfer + ".mov", encodedWith(tags));
    std::vector<std::string> later = encodedWith(tags);
    later.insert(later.end(), {"-vf", "trim=start_frame=31,setpts=PTS-STARTPTS"});
    const std::string again = fixtureMovies(hdr, {{std::string("scan-again-") + transfer + ".mov", later}}).front();
    const PrintedJson json = scanned({hdr, again});
    EXPECT_EQ(json["map"][0]["sourceFrom"]["frame"], 31) << transfer;
    EXPECT_EQ(json["finding"]["causes"][0]["cause"], "same") << transfer;
  }
}

TEST(ScannedInputs, AFewFramesAreFoundInALongMovieAndALongMovieNotInAFewFrames) {
  const std::string few = scanExport("scan-few", "trim=start_frame=170:end_frame=180,setpts=PTS-STARTPTS");
  EXPECT_EQ(scanned({scanMaster(), few})["map"][0]["sourceFrom"]["frame"], 170);
  const ProgramRun run = runLumacheck({"scan", few, scanMaster()});
  EXPECT_EQ(run.status, 4);
  EXPECT_THAT(run.out, HasSubstr("Scan: No verdict: the movies do not show the same pictures."));
  EXPECT_THAT(run.out, HasSubstr("What to do: Compare a movie with the one that it was made from."));
}

TEST(ScannedInputs, AFileThatGrowsWhileItIsReadIsToldOf) {
  const TemporaryFolder folder;
  const std::string path = folder.path("growing.mov");
  std::filesystem::copy_file(fixtureMovie("scan-long.mov", {"-stream_loop", "40", "-i", scanMaster(), "-c", "copy"}),
                             path);
  const auto grow = [&](pid_t) {
    std::ofstream(path, std::ios::app | std::ios::binary).write("\0\0\0\010free", 8).flush();
    return false;
  };
  const ProgramRun run = runLumacheckUntil(grow, 0, {"scan", path, path, "--to", "20"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("The file grew while it was read: scan it again when it is whole."));
}

}  // namespace
}  // namespace cli

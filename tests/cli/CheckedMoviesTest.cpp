#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/RunProgram.h"
#include "tests/support/GradientMovies.h"
#include "tests/support/MovieFixture.h"

// The command from end to end, on movies whose frames decode.

namespace cli {
namespace {

using namespace movie::test;
using test::PrintedJson;
using test::ProgramRun;
using test::runLumacheck;
using testing::HasSubstr;

PrintedJson checkJson(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"check", "--json"});
  const ProgramRun run = runLumacheck(arguments);
  PrintedJson json = PrintedJson::parse(run.out);
  EXPECT_EQ(json["exitStatus"], run.status);
  return json;
}

int statusOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "check");
  return runLumacheck(arguments).status;
}

TEST(CheckedMovies, SetTheExitStatus) {
  EXPECT_EQ(statusOf({plainMovie(), plainMovie()}), 0);
  EXPECT_EQ(statusOf({plainMovie(), darkerMovie()}), 1);
  EXPECT_EQ(statusOf({plainMovie(), retaggedMovie()}), 1);
  EXPECT_EQ(statusOf({plainMovie(), brightMovie()}), 4);
  EXPECT_EQ(statusOf({plainMovie(), soundMovie()}), 2);
  EXPECT_EQ(statusOf({fadingMovie(), plainMovie()}), 3);
}

TEST(CheckedMovies, MayAllExitWithZeroButFailures) {
  EXPECT_EQ(statusOf({"--exit-zero", plainMovie(), darkerMovie()}), 0);
  EXPECT_EQ(statusOf({"--exit-zero", fadingMovie(), plainMovie()}), 0);
  EXPECT_EQ(statusOf({"--exit-zero", plainMovie(), brightMovie()}), 4);
  EXPECT_EQ(checkJson({"--exit-zero", plainMovie(), darkerMovie()})["exitStatus"], 0);
}

TEST(CheckedMovies, PrintTheFindingAndThenTheReport) {
  const ProgramRun run = runLumacheck({"check", plainMovie(), plainMovie()});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(
      run.out,
      "Finding: Identical: the destination's samples are the source's.\n"
      "What to do: Nothing is to be done.\n"
      "Source: " +
          plainMovie() + " at 01:00:00:00\nDestination: " + plainMovie() +
          " at 01:00:00:00\n\n"
          "Checking files...\n\n"
          "Source gamma metadata: 2.20\n\n"
          "Destination gamma metadata: 2.20\n\n"
          "Source and destination gamma metadata match.\n\n"
          "Source color metadata is set.\n\n"
          "Destination color metadata is set.\n\n"
          "Source and destination color metadata match.\n\n"
          "Source file has no color space metadata set.\n\n"
          "Destination file has no color space metadata set.\n\n"
          "Source and destination color space metadata match.\n\n"
          "No noticeable gamma shift detected on destination movie's pixels. This is either because the source and "
          "destination frames do not match closely enough or because the gamma shift is occurring in metadata.\n\n"
          "No noticeable gamma shift was found.\n");
}

TEST(CheckedMovies, SayTheSameInJsonAsInPrint) {
  for (const auto& [source, dest] : {std::pair(plainMovie(), plainMovie()), std::pair(plainMovie(), darkerMovie()),
                                     std::pair(darkerMovie(), retaggedMovie()), std::pair(fadingMovie(), plainMovie()),
                                     std::pair(soundMovie(), plainMovie())}) {
    const PrintedJson json = checkJson({source, dest});
    std::string text;
    for (const PrintedJson& paragraph : json["report"].elements()) {
      text += (text.empty() ? "" : "\n\n") + paragraph["text"].text();
    }
    const std::string out = runLumacheck({"check", source, dest}).out;
    EXPECT_THAT(out, testing::EndsWith("\n\n" + text + "\n"));
    EXPECT_THAT(out, testing::StartsWith("Finding: " + json["finding"]["text"].text() + "\n"));
    EXPECT_THAT(out, HasSubstr("What to do: " + json["finding"]["advice"]["text"].text() + "\n"));
  }
}

TEST(CheckedMovies, DescribeBothSides) {
  const PrintedJson json =
      checkJson({plainMovie(), retaggedMovie(), "--source-at", "0.48", "--dest-at", "01:00:00:13"});
  const std::string rest =
      R"(,"size":[320,240],"codec":"apch","gamma":2.2,"gammaFixed":144179,"color":{"type":"nclc","primaries":1,)"
      R"("transferFunction":1,"matrix":1},"profile":null,"imageDescriptions":1})";
  EXPECT_EQ(json["source"].dump(), R"({"path":")" + plainMovie() +
                                       R"(","time":{"value":485376,"scale":1011200},"timecode":"01:00:00:12")" + rest);
  EXPECT_EQ(json["dest"]["timecode"], "01:00:00:13");
  EXPECT_EQ(json["dest"]["gamma"], 1.8);
  EXPECT_EQ(json["metadata"].dump(),
            R"({"compared":true,"gammaMatch":false,"colorMatch":true,"colorSpaceMatch":true,"mismatch":true})");
  EXPECT_EQ(json["pixels"]["shift"], "none");
  EXPECT_EQ(json["pixels"]["commonDiff"], 1.0);
}

TEST(CheckedMovies, StartAtTheirBeginning) {
  const PrintedJson source = checkJson({plainMovie(), plainMovie()})["source"];
  EXPECT_EQ(source["time"]["value"], 0);
  EXPECT_EQ(source["timecode"], "01:00:00:00");
}

TEST(CheckedMovies, AreComparedAtTheTimesGiven) {
  EXPECT_EQ(checkJson({fadingMovie(), fadingMovie()})["tooDark"], true);
  EXPECT_EQ(checkJson({fadingMovie(), fadingMovie(), "--at", "0.9"})["pixels"]["shift"], "none");
  EXPECT_EQ(checkJson({fadingMovie(), fadingMovie(), "--at", "01:00:00:22"})["pixels"]["shift"], "none");
  EXPECT_EQ(checkJson({fadingMovie(), fadingMovie(), "--source-at", "0.9", "--dest-at", "0.5"})["pixels"]["shift"],
            "darker");
}

TEST(CheckedMovies, TellWhyThereIsNoVerdict) {
  const ProgramRun dark = runLumacheck({"check", fadingMovie(), plainMovie()});
  EXPECT_EQ(dark.err,
            "Source frame is too dark\nThe source frame does not have enough non-black pixels for a valid analysis. "
            "Please move the playhead to a more representative frame.\n");

  const ProgramRun unmatched = runLumacheck({"check", plainMovie(), brightMovie()});
  EXPECT_THAT(unmatched.out, HasSubstr("Finding: No verdict: the two frames do not show the same picture."));
  EXPECT_THAT(unmatched.out, testing::EndsWith("No noticeable gamma shift was found.\n"));
  EXPECT_EQ(checkJson({plainMovie(), brightMovie()})["pixels"]["shift"], "unmatched");

  const ProgramRun sound = runLumacheck({"check", plainMovie(), soundMovie()});
  EXPECT_THAT(sound.err, HasSubstr("The destination frame cannot be had. Cannot read \"" + soundMovie() + "\": "));
  EXPECT_THAT(sound.err, testing::Not(HasSubstr("source frame")));
  const PrintedJson json = checkJson({plainMovie(), soundMovie()});
  EXPECT_TRUE(json["pixels"].is_null());
  EXPECT_EQ(json["metadata"]["compared"], false);
  EXPECT_TRUE(json["dest"]["codec"].is_null());
  EXPECT_TRUE(json["dest"]["timecode"].is_null());
}

TEST(CheckedMovies, AreFoundOutAtSeveralFramesAtOnce) {
  const PrintedJson darker = checkJson({plainMovie(), darkerMovie(), "--frames", "5"})["finding"];
  EXPECT_EQ(darker["frames"], 5);
  EXPECT_EQ(darker["causes"][0]["cause"], "power");
  EXPECT_NEAR(darker["causes"][0]["exponent"].number(), 1.25, 0.01);
  EXPECT_EQ(checkJson({fadingMovie(), fadingMovie(), "--frames", "3"})["finding"]["causes"][0]["cause"], "identical")
      << "what is dark at the beginning is not so later";
}

TEST(CheckedMovies, AreTheSameWithinTheToleranceGiven) {
  EXPECT_EQ(statusOf({plainMovie(), darkerMovie(), "--tolerance", "50"}), 0);
  EXPECT_EQ(statusOf({plainMovie(), darkerMovie(), "--tolerance", "1"}), 1);
  for (const char* const wrong : {"-1", "51", "two", ""}) {
    EXPECT_EQ(statusOf({plainMovie(), darkerMovie(), "--tolerance", wrong}), 2) << wrong;
  }
  for (const char* const wrong : {"0", "1001", "1.5", "x"}) {
    EXPECT_EQ(statusOf({plainMovie(), darkerMovie(), "--frames", wrong}), 2) << wrong;
  }
}

TEST(CheckedMovies, OfTheWorldMatchThemselves) {
  const std::vector<std::string> movies = movie::test::realMovies();
  if (movies.empty()) GTEST_SKIP() << movie::test::whyNoRealMovies();
  for (const std::string& movie : movies) {
    const PrintedJson json = checkJson({movie, movie});
    EXPECT_EQ(json["metadata"]["mismatch"], false) << movie;
    if (json["tooDark"] == false) {
      EXPECT_EQ(json["pixels"]["shift"], "none") << movie;
    }
  }
}

}  // namespace
}  // namespace cli

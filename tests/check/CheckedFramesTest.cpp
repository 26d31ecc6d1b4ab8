#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/FrameAnalysis.h"
#include "check/GammaCheck.h"
#include "check/MetadataSync.h"
#include "tests/check/CapturedLog.h"
#include "tests/support/GradientMovies.h"
#include "tests/support/MovieFixture.h"

// The check on movies whose frames decode.

namespace check {
namespace {

using movie::Movie;
using namespace movie::test;
using testing::ElementsAre;

struct Checked {
  CheckOutcome outcome;
  std::vector<std::string> bold;  ///< the bold paragraphs, red ones too
  std::vector<ReportParagraph> paragraphs;
};

Checked checkOf(const std::string& source, const std::string& dest) {
  const auto sourceMovie = Movie::movieWithFile(source), destMovie = Movie::movieWithFile(dest);
  RecordedReport report;
  Checked checked{runGammaCheck({**sourceMovie, **destMovie, {}, {}}, report), {}, report.paragraphs()};
  for (const ReportParagraph& paragraph : checked.paragraphs) {
    if (paragraph.style != ReportStyle::Normal) checked.bold.push_back(paragraph.text.toStdString());
  }
  return checked;
}

const std::string gammaMatch = "Source and destination gamma metadata match.";
const std::string gammaMismatch = "Source and destination gamma metadata do not match.";
const std::string colorMatch = "Source and destination color metadata match.";
const std::string profileMatch = "Source and destination color space metadata match.";
const auto noPixelShift = testing::StartsWith("No noticeable gamma shift detected on destination movie's pixels.");

TEST(CheckedFrames, OfOneMovieMatchInEverything) {
  const Checked checked = checkOf(plainMovie(), plainMovie());
  EXPECT_EQ(checked.outcome.pixels->commonDiff, 1.0);
  EXPECT_FALSE(checked.outcome.sourceFrameError || checked.outcome.destFrameError);
  EXPECT_THAT(checked.bold,
              ElementsAre(gammaMatch, colorMatch, profileMatch, noPixelShift, "No noticeable gamma shift was found."));
}

TEST(CheckedFrames, WithAnotherGammaTagShiftInMetadataOnly) {
  const Checked checked = checkOf(plainMovie(), retaggedMovie());
  EXPECT_EQ(checked.outcome.pixels->commonDiff, 1.0);
  EXPECT_THAT(checked.bold, ElementsAre(gammaMismatch, colorMatch, profileMatch, noPixelShift,
                                        "Recommendation:\nThe gamma shift is occurring in metadata so click the Sync "
                                        "Metadata button to resolve this."));
}

TEST(CheckedFrames, ThatAreDarkerShiftInPixels) {
  const Checked checked = checkOf(plainMovie(), darkerMovie());
  EXPECT_NEAR(checked.outcome.pixels->commonDiff, 1.25, 0.02);
  EXPECT_THAT(checked.bold, ElementsAre(gammaMatch, colorMatch, profileMatch,
                                        testing::MatchesRegex("Gamma shift: 1\\.2[3-7] \\(darker\\)"),
                                        testing::StartsWith("Recommendation:\nThe gamma shift is occurring within the "
                                                            "pixels of the movie, not within metadata.")));
}

TEST(CheckedFrames, ThatAreLighterShiftTheOtherWay) {
  const Checked checked = checkOf(darkerMovie(), plainMovie());
  EXPECT_NEAR(checked.outcome.pixels->commonDiff, 0.8, 0.02);
  EXPECT_EQ(pixelShiftOf(checked.outcome.pixels->commonDiff), PixelShift::Lighter);
}

TEST(CheckedFrames, OfATooDarkSourceEndTheReportAfterTheMetadata) {
  const test::CapturedLog log;
  const Checked checked = checkOf(blackMovie(), plainMovie());
  EXPECT_TRUE(checked.outcome.tooDark);
  EXPECT_FALSE(checked.outcome.pixels);
  EXPECT_EQ(checked.paragraphs.size(), 10U);
  EXPECT_EQ(checked.bold.back(), profileMatch);
  EXPECT_THAT(log.texts(), testing::Not(testing::Contains(testing::HasSubstr("Gamma: "))));
}

TEST(CheckedFrames, MayBeBlackInTheDestination) {
  const Checked checked = checkOf(plainMovie(), blackMovie());
  EXPECT_FALSE(checked.outcome.tooDark);
  ASSERT_TRUE(checked.outcome.pixels);
}

/// The first image description with other colour parameters, in memory; the samples stay as they are.
void tag(Movie& movie, std::uint16_t primaries, std::uint16_t matrix) {
  movie::Media& media = movie.tracksOfMediaType(movie::videoMedia).front()->media();
  movie::ImageDescription description = *media.imageDescription(1);
  ASSERT_EQ(description.setNclc({movie::fourCC("nclc"), primaries, 1, matrix}, movie::ColorAtomFlavour::Nclc), 0);
  media.setSampleDescription(1, description);
}

TEST(CheckedFrames, OfTheSameSamplesMatchWhateverTheColorsTheyAreTaggedWith) {
  const std::string saturated = "gradients=size=320x240:rate=25:nb_colors=2:c0=0xc02020:c1=0x2020c0:seed=4";
  const auto source = Movie::movieWithFile(encodedMovie("saturated.mov", saturated, "format=yuv422p10", "2.2"));
  const auto dest = (*source)->copy();
  tag(**source, 1, 1);
  tag(*dest, 6, 6);
  constexpr movie::FrameImageRequest request{320, 240, movie::FrameStyle::Measurement};
  const auto asTagged = [&](Movie& movie) { return RgbFrameBitmap(*movie.frameImageAtTime({}, request)); };
  ASSERT_NE(pixelShiftOf(gammaShiftForSourceBitmap(asTagged(**source), asTagged(*dest)).commonDiff), PixelShift::None);
  RecordedReport report;
  const CheckOutcome outcome = runGammaCheck({**source, *dest, {}, {}}, report);
  EXPECT_FALSE(outcome.metadata->colorMatch);
  EXPECT_EQ(outcome.pixels->commonDiff, 1.0);
  EXPECT_EQ(outcome.pixels->average, 1.0);
}

TEST(CheckedFrames, AreMeasuredAt320By240WhateverTheSizeOfTheMovie) {
  const std::string large = "testsrc2=size=400x200:rate=25";
  const std::string darker =
      "format=yuv422p10,lutyuv=y='minval+(maxval-minval)*pow(clip((val-minval)/(maxval-minval)\\,0\\,1)\\,1.25)'";
  const auto source = Movie::movieWithFile(encodedMovie("large.mov", large, "format=yuv422p10", "2.2"));
  const auto dest = Movie::movieWithFile(encodedMovie("large-darker.mov", large, darker, "2.2"));
  const auto averageAt = [&](int width, int height) {
    const auto sourceCopy = (*source)->copy(), destCopy = (*dest)->copy();
    matchMetadata(*sourceCopy, *destCopy);
    const movie::FrameImageRequest request{width, height, movie::FrameStyle::Measurement};
    return gammaShiftForSourceBitmap(RgbFrameBitmap(*sourceCopy->frameImageAtTime({}, request)),
                                     RgbFrameBitmap(*destCopy->frameImageAtTime({}, request)))
        .average;
  };
  RecordedReport report;
  const double average = runGammaCheck({**source, **dest, {}, {}}, report).pixels->average;
  EXPECT_EQ(average, averageAt(320, 240));
  for (const auto& [width, height] : {std::pair(319, 240), std::pair(320, 239), std::pair(400, 200), std::pair(0, 0)}) {
    EXPECT_NE(average, averageAt(width, height)) << width << " x " << height;
  }
}

TEST(CheckedFrames, AreNotScannedWhenOneIsMissing) {
  for (const bool sourceMissing : {true, false}) {
    const test::CapturedLog log;
    const Checked checked = sourceMissing ? checkOf(soundMovie(), plainMovie()) : checkOf(plainMovie(), soundMovie());
    EXPECT_EQ(checked.outcome.sourceFrameError.has_value(), sourceMissing);
    EXPECT_EQ(checked.outcome.destFrameError.has_value(), !sourceMissing);
    EXPECT_EQ(checked.outcome.pixels->commonDiff, 0.0);
    EXPECT_THAT(checked.bold, ElementsAre(noPixelShift, "No noticeable gamma shift was found."));
    EXPECT_THAT(log.texts(), testing::Not(testing::Contains(testing::StartsWith("Exception"))));
  }
}

TEST(CheckedFrames, ComeFromTheTimesAskedFor) {
  const std::string fading = encodedMovie("fading.mov", softTones, "fade=in:0:4,format=yuv422p10", "2.2");
  const auto movie = Movie::movieWithFile(fading);
  RecordedReport report;
  EXPECT_TRUE(runGammaCheck({**movie, **movie, {{0, 25, 0}, {4, 25, 0}}, {}}, report).tooDark);
  EXPECT_EQ(runGammaCheck({**movie, **movie, {{4, 25, 0}, {4, 25, 0}}, {}}, report).pixels->commonDiff, 1.0);
  EXPECT_GT(runGammaCheck({**movie, **movie, {{4, 25, 0}, {2, 25, 0}}, {}}, report).pixels->commonDiff, 1.05);
  const auto stop = [] { return Playheads{{4, 25, 0}, {2, 25, 0}}; };
  EXPECT_GT(runGammaCheck({**movie, **movie, {}, stop}, report).pixels->commonDiff, 1.05);
}

TEST(SyncMetadata, StatesTheRangeOfThePicturesInAnIsoFile) {
  const auto source = Movie::movieWithFile(plainMovie());
  for (const bool full : {true, false}) {
    const std::string range = full ? "pc" : "tv";
    const auto dest = Movie::movieWithFile(
        fixtureMovie("range-" + range + ".mp4", {"-f", "lavfi", "-i", "testsrc=size=64x64:rate=25", "-frames:v", "2",
                                                 "-vf", "scale=out_range=" + range + ",format=yuv420p", "-color_range",
                                                 range, "-c:v", "libx264", "-movflags", "-write_colr"}));
    const auto description = [&] {
      return *(*dest)->tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(1);
    };
    ASSERT_FALSE(description().nclc());
    syncMetadata(**source, **dest);
    ASSERT_TRUE(description().nclc());
    EXPECT_EQ(description().nclxFullRange(), full);
  }
}

}  // namespace
}  // namespace check

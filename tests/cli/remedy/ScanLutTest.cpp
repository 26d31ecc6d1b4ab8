#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/remedy/ScanLut.h"

namespace cli {
namespace {

using diagnosis::CauseKind;
using diagnosis::RangeStep;
using testing::HasSubstr;
using testing::StartsWith;

/// Greys from black to white in a hundred steps, and what a function makes of them.
std::vector<diagnosis::Stratum> greys(double (*made)(double)) {
  std::vector<diagnosis::Stratum> colors;
  for (int i = 0; i <= 100; ++i) {
    const double luma = i / 100.0;
    colors.push_back({.source = {luma, 0, 0}, .dest = {made(luma), 0, 0}, .weight = 1, .samples = 100});
  }
  return colors;
}

double darkened(double luma) {
  return luma * 0.8;
}

/// 16 to 235 become 0 to 255.
double stretched(double luma) {
  return (255 * luma - 16) / 219;
}

scan::Segment segmentWith(const diagnosis::Recipe& recipe, double (*made)(double), scan::FrameRange frames = {0, 48}) {
  scan::Segment segment;
  segment.dest = frames;
  segment.causes = {{.kind = CauseKind::Gain, .confidence = 0.9}};
  segment.recipe = recipe;
  segment.colors = greys(made);
  return segment;
}

diagnosis::Recipe gainOf(double gain) {
  diagnosis::Recipe recipe;
  recipe.gain = diagnosis::GainFit{.gain = gain, .offset = 0, .chroma = gain, .cost = 0};
  return recipe;
}

diagnosis::Recipe rangeOf(RangeStep step) {
  diagnosis::Recipe recipe;
  recipe.hypothesis.rangeAfter = step;
  return recipe;
}

scan::ScanResult resultOf(std::vector<scan::Segment> segments) {
  scan::ScanResult result;
  result.correspondence = scan::Beginning::Result::Found;
  result.segments = std::move(segments);
  return result;
}

ScanLut lutOf(const scan::ScanResult& result) {
  return scanLut(result, {}, "undo.cube");
}

TEST(ScanLut, TellsWhatItLeaves) {
  const ScanLut lut = lutOf(resultOf({segmentWith(gainOf(0.8), darkened)}));
  EXPECT_EQ(lut.why, "");
  EXPECT_GT(lut.before, 10);
  EXPECT_LT(lut.after, 0.01);
  EXPECT_THAT(lutLine(lut), StartsWith("Table: undo.cube, 1024 points. With it 0.0 codes are left of "));
}

TEST(ScanLut, SaysWhatItIsToBeAppliedTo) {
  const std::string text = lutText(lutOf(resultOf({segmentWith(gainOf(0.8), darkened)})));
  EXPECT_THAT(text, StartsWith("TITLE \"Undoes brightness or contrast"));
  EXPECT_THAT(text,
              HasSubstr("# For R'G'B' of the destination, decoded as it is marked: matrix BT.709, video range.\n"));
}

TEST(ScanLut, IsOfNoUseWhereTooMuchIsCutOffBeforeIt) {
  EXPECT_EQ(lutOf(resultOf({segmentWith(rangeOf(RangeStep::Expand), stretched)})).why, "")
      << "of few greys near black and white";
  scan::Segment dark = segmentWith(rangeOf(RangeStep::Expand), stretched);
  dark.colors.resize(5);
  EXPECT_THAT(lutOf(resultOf({dark})).why, HasSubstr("too many colors of the destination lie beyond black and white"));
}

TEST(ScanLut, IsNotMadeOfWhatAlsoNoFilterUndoes) {
  EXPECT_THAT(lutOf({}).why, HasSubstr("not known how the one lies"));
  EXPECT_EQ(lutOf(resultOf({})).why, "There is nothing to go by.");
  scan::Segment unsure = segmentWith(gainOf(0.8), darkened);
  unsure.causes.front().confidence = 0.4;
  EXPECT_THAT(lutOf(resultOf({unsure})).why, HasSubstr("not known surely what was done"));
  EXPECT_THAT(lutOf(resultOf({segmentWith(rangeOf(RangeStep::ExpandRgb), stretched)})).why, HasSubstr("cut off"));
}

TEST(ScanLut, HoldsForAllOfAMovieOrIsNotMade) {
  const scan::Segment one = segmentWith(gainOf(0.8), darkened), other = segmentWith(gainOf(0.9), darkened, {48, 96});
  EXPECT_EQ(lutOf(resultOf({one, other})).why, "No table is made: parts of the movie need different ones.");
  scan::Segment unchanged = other;
  unchanged.causes.front().kind = CauseKind::Same;
  EXPECT_EQ(lutOf(resultOf({one, unchanged})).why,
            "No table is made: only a part of the movie needs it, and a table knows of no times.");
  scan::ScanResult stopped = resultOf({one});
  stopped.stopped = true;
  EXPECT_EQ(lutOf(stopped).why, "No table is made: it is not known what the rest of the movie needs.");
  EXPECT_EQ(lutLine(lutOf(stopped)),
            "Table: none. No table is made: it is not known what the rest of the movie needs.\n");
}

TEST(ScanLut, ChangesNoSamplesThatAreOnlyMarkedWrong) {
  diagnosis::Recipe relabelled;
  relabelled.hypothesis.relabelling = diagnosis::Relabelling();
  EXPECT_EQ(lutOf(resultOf({segmentWith(relabelled, darkened)})).why,
            "No table is made: only what the file says of its samples is wrong, and no sample has to change.");
}

}  // namespace
}  // namespace cli

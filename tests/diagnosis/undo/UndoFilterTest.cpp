#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnosis/undo/UndoFilter.h"

namespace diagnosis {
namespace {

using testing::HasSubstr;

SideTags videoOf(int depth = 8, SampleRange range = SampleRange::Video, std::uint16_t matrix = 1) {
  SideTags tags;
  tags.depth = depth;
  tags.range = range;
  tags.matrixInForce = matrix;
  return tags;
}

UndoFilter undone(const Recipe& recipe, const SideTags& dest = videoOf(), const std::string& enable = "") {
  const SideTags source = videoOf();
  const auto filter = undoFilter(recipe, {source, dest, {}}, enable);
  EXPECT_TRUE(filter) << filter.error();
  return filter.value_or(UndoFilter());
}

std::string refusal(const Recipe& recipe, const SideTags& dest = videoOf()) {
  const SideTags source = videoOf();
  const auto filter = undoFilter(recipe, {source, dest, {}}, "");
  return filter ? "" : filter.error();
}

Recipe toneOf(ToneStep tone, double exponent = 1.25) {
  Recipe recipe;
  recipe.hypothesis.tone = tone;
  recipe.exponent = exponent;
  return recipe;
}

Recipe rangeAfter(RangeStep step) {
  Recipe recipe;
  recipe.hypothesis.rangeAfter = step;
  return recipe;
}

TEST(UndoFilter, UndoesAPowerOfLumaInTheDestinationsCodes) {
  const Recipe recipe = toneOf(ToneStep::PowerLuma);
  EXPECT_EQ(undone(recipe).text, "lutyuv=y='16+219*pow(clip((val-16)/219,0,1),0.8)'");
  EXPECT_EQ(undone(recipe, videoOf(10)).text, "lutyuv=y='64+876*pow(clip((val-64)/876,0,1),0.8)'");
  EXPECT_EQ(undone(recipe, videoOf(8, SampleRange::Full)).text, "lutyuv=y='0+255*pow(clip((val-0)/255,0,1),0.8)'");
  EXPECT_EQ(undone(toneOf(ToneStep::PowerLumaCodes)).text, "lutyuv=y='255*pow(clip(val/255,0,1),0.8)'");
}

TEST(UndoFilter, UndoesAPowerOfRgbInTheDestinationsMatrix) {
  const std::string text = undone(toneOf(ToneStep::PowerRgb), videoOf(10)).text;
  EXPECT_THAT(text, HasSubstr("scale=in_color_matrix=bt709:in_range=tv"));
  EXPECT_THAT(text, HasSubstr("lutrgb=r='maxval*pow(clip(val/maxval,0,1),0.8)':g="));
  EXPECT_THAT(text, HasSubstr("format=yuv420p10|yuv422p10|yuv444p10"));
}

TEST(UndoFilter, UndoesRangesByLines) {
  // 16 + 219 * (255 * (c - 16) / 219 - 16) / 219 of a code c.
  EXPECT_THAT(undone(rangeAfter(RangeStep::Compress)).text, HasSubstr("y='val*1.1643836-18.630137'"));
  EXPECT_THAT(undone(rangeAfter(RangeStep::Compress)).text, HasSubstr("u='val*1.1383929-17.714286'"));
  EXPECT_THAT(undone(rangeAfter(RangeStep::Expand)).text, HasSubstr("y='val*0.85882353+16'"));
}

TEST(UndoFilter, UndoesALineWithItsChroma) {
  Recipe recipe;
  recipe.gain = GainFit{.gain = 0.8, .offset = 0.1, .chroma = 0.5, .cost = 0};
  EXPECT_EQ(undone(recipe).text, "lutyuv=y='val*1.25-31.375':u='val*2-128':v='val*2-128'");
}

TEST(UndoFilter, GoesBackwards) {
  Recipe recipe = toneOf(ToneStep::PowerLuma);
  recipe.hypothesis.rangeAfter = RangeStep::Compress;
  recipe.hypothesis.matrix = {.meant = 6, .taken = 1};
  const std::string text = undone(recipe).text;
  const std::size_t range = text.find("val*1.16"), tone = text.find("pow("), matrix = text.find("scale=");
  EXPECT_LT(range, tone);
  EXPECT_LT(tone, matrix);
  EXPECT_NE(matrix, std::string::npos);
}

TEST(UndoFilter, ConvertsAMatrixBack) {
  Recipe recipe;
  recipe.hypothesis.matrix = {.meant = 6, .taken = 1};
  EXPECT_THAT(undone(recipe).text, testing::StartsWith("scale=in_color_matrix=smpte170m:out_color_matrix=bt709"));
  EXPECT_FALSE(undone(recipe).canBeTimed);
}

TEST(UndoFilter, StatesRightWhatIsOnlyStatedWrong) {
  Recipe recipe;
  recipe.hypothesis.relabelling = Relabelling();
  EXPECT_EQ(undone(recipe, videoOf(8, SampleRange::Full)).text, "setparams=range=tv");
  EXPECT_EQ(undone(recipe, videoOf(8, SampleRange::Video, 6)).text, "setparams=colorspace=bt709");
  EXPECT_EQ(undone(recipe, videoOf(8, SampleRange::Full, 9)).text, "setparams=range=tv:colorspace=bt709");
}

TEST(UndoFilter, SaysWhen) {
  const UndoFilter timed = undone(toneOf(ToneStep::PowerLuma), videoOf(), "between(t,1,2)");
  EXPECT_TRUE(timed.canBeTimed);
  EXPECT_THAT(timed.text, HasSubstr(",0.8)':enable='between(t,1,2)'"));
}

TEST(UndoFilter, RefusesWhatIsLost) {
  EXPECT_EQ(refusal(rangeAfter(RangeStep::ExpandRgb)),
            "It cannot be undone: the shadows and the highlights are cut off.");
  SideTags rgb = videoOf();
  rgb.model = movie::PictureModel::Rgb;
  EXPECT_THAT(refusal(toneOf(ToneStep::PowerRgb), rgb), HasSubstr("not Y'CbCr"));
  EXPECT_THAT(refusal(toneOf(ToneStep::PowerLuma), videoOf(8, SampleRange::Video, 6)),
              HasSubstr("another Y'CbCr matrix"));
  EXPECT_THAT(refusal(toneOf(ToneStep::PowerLumaCodes), videoOf(8, SampleRange::Full)), HasSubstr("full range"));
}

}  // namespace
}  // namespace diagnosis

#include <cmath>

#include <gtest/gtest.h>

#include "diagnosis/undo/CorrectedPicture.h"
#include "tests/diagnosis/undo/UndoneRecipe.h"

namespace diagnosis {
namespace {

/// A row of codes of 8 bits, of video range; odd, so that it does not share out evenly.
movie::Picture rowOf(const std::vector<int>& luma, int blue, int red) {
  movie::Picture picture;
  picture.width = static_cast<int>(luma.size());
  picture.height = 1;
  picture.matrix = 1;
  for (auto& plane : picture.planes) plane.resize(luma.size());
  for (std::size_t i = 0; i < luma.size(); ++i) {
    picture.planes[0][i] = static_cast<std::uint16_t>(luma[i] * 256);
    picture.planes[1][i] = static_cast<std::uint16_t>(blue * 256);
    picture.planes[2][i] = static_cast<std::uint16_t>(red * 256);
  }
  return picture;
}

TEST(CorrectedPicture, UndoesAPowerInEveryPixel) {
  const SideTags tags;
  const UndoColors undo(test::toneRecipe(ToneStep::PowerLuma, 1.25), {});
  const std::vector<int> codes{16, 20, 60, 100, 150, 200, 235};
  const CorrectedPicture picture = corrected(rowOf(codes, 100, 150), tags, undo, {}, 1);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    EXPECT_EQ(picture.planes[0][i], std::lround(64 + 876 * std::pow((codes[i] - 16) / 219.0, 0.8))) << codes[i];
    EXPECT_EQ(picture.planes[1][i], 400);
    EXPECT_EQ(picture.planes[2][i], 600);
  }
}

TEST(CorrectedPicture, IsInTheMatrixThatIsAskedFor) {
  const SideTags tags;
  const UndoColors undo(test::gainRecipe(0.5, 0, 0.5), {});
  // R'G'B' of (1, 0, 0) at half of its signal.
  const CorrectedPicture picture = corrected(rowOf({39}, 115, 184), tags, undo, {}, 6);
  EXPECT_NEAR(picture.planes[0][0], 64 + 876 * 0.299, 5);
  EXPECT_NEAR(picture.planes[1][0], 512 - 896 * 0.1687, 5);
  EXPECT_NEAR(picture.planes[2][0], 960, 5);
}

TEST(CorrectedPicture, KeepsToTheCodesThatMayBeUsed) {
  const SideTags tags;
  const UndoColors undo(test::gainRecipe(0.5, 0.25, 0.1), {});
  const CorrectedPicture picture = corrected(rowOf({1, 254}, 20, 240), tags, undo, {}, 1);
  EXPECT_EQ(picture.planes[0][0], 4);
  EXPECT_EQ(picture.planes[0][1], 1019);
  EXPECT_EQ(picture.planes[1][0], 4);
  EXPECT_EQ(picture.planes[2][0], 1019);
}

}  // namespace
}  // namespace diagnosis

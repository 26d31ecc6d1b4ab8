#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/render/Orientation.h"

namespace movie {
namespace {

using testing::ElementsAreArray;

constexpr std::int32_t one = 0x10000;

TransformMatrix matrix(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t tx = 0,
                       std::int32_t ty = 0) {
  return {a, b, 0, c, d, 0, tx, ty, 0x40000000};
}

/// A frame of 3 x 2 pixels, marked 1 2 3 / 4 5 6.
RgbFrame marked() {
  RgbFrame frame{.width = 3, .height = 2, .samples = {}};
  for (std::uint8_t i = 1; i <= 6; ++i) frame.samples.insert(frame.samples.end(), {i, std::uint8_t(i + 100), 7});
  return frame;
}

std::vector<int> marksOf(const RgbFrame& frame) {
  std::vector<int> marks;
  for (std::size_t i = 0; i < frame.samples.size(); i += 3) {
    EXPECT_EQ(frame.samples[i + 1], frame.samples[i] + 100) << "pixels stay whole";
    EXPECT_EQ(frame.samples[i + 2], 7);
    marks.push_back(frame.samples[i]);
  }
  return marks;
}

int markAt(const RgbFrame& frame, int x, int y) {
  return frame.samples.at(3 * static_cast<std::size_t>(y * frame.width + x));
}

TEST(Orientation, TurnsPicturesAsTheMatrixDoes) {
  const struct {
    const char* what;
    TransformMatrix matrix;
    int width;
    std::vector<int> marks;
  } rows[] = {
      {"upright", matrix(one, 0, 0, one), 3, {1, 2, 3, 4, 5, 6}},
      {"a quarter turn clockwise", matrix(0, one, -one, 0, 2 * one), 2, {4, 1, 5, 2, 6, 3}},
      {"half a turn", matrix(-one, 0, 0, -one, 3 * one, 2 * one), 3, {6, 5, 4, 3, 2, 1}},
      {"a quarter turn anticlockwise", matrix(0, -one, one, 0, 0, 3 * one), 2, {3, 6, 2, 5, 1, 4}},
      {"mirrored left to right", matrix(-one, 0, 0, one, 3 * one), 3, {3, 2, 1, 6, 5, 4}},
      {"mirrored top to bottom", matrix(one, 0, 0, -one, 0, 2 * one), 3, {4, 5, 6, 1, 2, 3}},
      {"across the main diagonal", matrix(0, one, one, 0), 2, {1, 4, 2, 5, 3, 6}},
      {"across the other diagonal", matrix(0, -one, -one, 0, 2 * one, 3 * one), 2, {6, 3, 5, 2, 4, 1}},
  };
  for (const auto& row : rows) {
    const RgbFrame turned = oriented(marked(), orientationOf(row.matrix));
    EXPECT_EQ(turned.width, row.width) << row.what;
    EXPECT_EQ(turned.height, 5 - row.width) << row.what;
    EXPECT_THAT(marksOf(turned), ElementsAreArray(row.marks)) << row.what;
  }
}

// Every pixel goes where x' = a x + c y + tx, y' = b x + d y + ty puts its centre.
TEST(Orientation, AgreesWithTheMatrixArithmeticPixelByPixel) {
  for (const int sign1 : {-1, 1}) {
    for (const int sign2 : {-1, 1}) {
      for (const bool swapped : {false, true}) {
        const int a = swapped ? 0 : sign1, d = swapped ? 0 : sign2, b = swapped ? sign1 : 0, c = swapped ? sign2 : 0;
        const RgbFrame frame = marked();
        const RgbFrame turned = oriented(frame, orientationOf(matrix(a * one, b * one, c * one, d * one)));
        // Translated so that the turned picture begins at the origin.
        const int tx = (a < 0 ? frame.width : 0) + (c < 0 ? frame.height : 0);
        const int ty = (b < 0 ? frame.width : 0) + (d < 0 ? frame.height : 0);
        for (int y = 0; y < frame.height; ++y) {
          for (int x = 0; x < frame.width; ++x) {
            const double toX = a * (x + 0.5) + c * (y + 0.5) + tx, toY = b * (x + 0.5) + d * (y + 0.5) + ty;
            EXPECT_EQ(markAt(turned, static_cast<int>(toX), static_cast<int>(toY)), markAt(frame, x, y));
          }
        }
      }
    }
  }
}

TEST(Orientation, CountsScaleAndTranslationForNothing) {
  EXPECT_EQ(orientationOf(matrix(2 * one, 0, 0, one / 2, 77, -5)), Orientation{});
  EXPECT_EQ(orientationOf(matrix(0, 3 * one, -one / 4, 0)), (Orientation{.transposed = true, .mirroredX = true}));
  EXPECT_EQ(orientationOf(matrix(0, one - 1, -one, 3)), (Orientation{.transposed = true, .mirroredX = true}))
      << "a rest of rounding";
}

TEST(Orientation, TakesWhatIsNoRightAngleAsUpright) {
  constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
  for (const TransformMatrix& skewed :
       {matrix(0, 0, 0, 0), matrix(one, one, -one, one), matrix(one, 0, 0, 0), matrix(0, one, 0, 0),
        matrix(one, 0, one, one), matrix(lowest, lowest, lowest, lowest), matrix(0, 0, one, one)})
    EXPECT_EQ(orientationOf(skewed), Orientation{});
  EXPECT_EQ(orientationOf(matrix(lowest, 0, 0, lowest)), (Orientation{.mirroredX = true, .mirroredY = true}));
}

}  // namespace
}  // namespace movie

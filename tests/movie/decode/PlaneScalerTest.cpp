#include <algorithm>
#include <cstdlib>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/decode/ffmpeg/PlaneScaler.h"

namespace movie {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Le;

/// A plane that counts: the sample at (x, y) is y * stride + x.
struct Plane {
  int width, height;
  std::vector<std::uint16_t> samples;

  RowReader reader() const {
    return [this](int y, int x, int count, std::uint16_t*) {
      EXPECT_GE(x, 0);
      EXPECT_GE(y, 0);
      EXPECT_LE(x + count, width);
      EXPECT_LT(y, height);
      return samples.data() + static_cast<std::ptrdiff_t>(y) * width + x;
    };
  }
};

Plane rampOf(int width, int height, int step) {
  Plane plane{width, height, {}};
  for (int i = 0; i < width * height; ++i) plane.samples.push_back(static_cast<std::uint16_t>((i % width) * step));
  return plane;
}

std::vector<std::uint16_t> rowOf(const Plane& plane, double begin, double length, int result, double factor = 1) {
  return scalePlane(plane.reader(), {begin, length, plane.width, result},
                    {0, static_cast<double>(plane.height), plane.height, 1}, factor);
}

TEST(PlaneScaler, CopiesWhenTheSizeStays) {
  const Plane plane{3, 2, {1, 2, 3, 40, 50, 60}};
  EXPECT_THAT(scalePlane(plane.reader(), {0, 3, 3, 3}, {0, 2, 2, 2}, 256),
              ElementsAre(256, 512, 768, 10240, 12800, 15360));
}

TEST(PlaneScaler, TakesMeansWhereItShrinks) {
  const Plane plane{6, 1, {0, 30, 60, 90, 120, 150}};
  EXPECT_THAT(rowOf(plane, 0, 6, 3), ElementsAre(15, 75, 135));
  EXPECT_THAT(rowOf(plane, 0, 6, 1), ElementsAre(75));
}

TEST(PlaneScaler, WeighsPartsOfSamplesByTheirPart) {
  const Plane plane{5, 1, {100, 200, 300, 400, 500}};
  // 2.5 samples each: 100 200 and half of 300; half of 300, 400 and 500.
  EXPECT_THAT(rowOf(plane, 0, 5, 2), ElementsAre(180, 420));
  // From a quarter into the first sample on.
  EXPECT_THAT(rowOf(plane, 0.25, 2, 1), ElementsAre((75 + 200 + 75) / 2));
}

TEST(PlaneScaler, RoundsOnceToNearest) {
  const Plane plane{2, 1, {0, 1}};
  EXPECT_THAT(rowOf(plane, 0, 2, 1), ElementsAre(1));
  EXPECT_THAT(rowOf(plane, 0, 2, 1, 256), ElementsAre(128));
  EXPECT_THAT(rowOf(plane, 0, 2, 1, 0.9), ElementsAre(0));
}

TEST(PlaneScaler, HoldsTheResultWithin16Bits) {
  const Plane plane{2, 1, {65535, 65535}};
  EXPECT_THAT(rowOf(plane, 0, 2, 1, 2), ElementsAre(65535));
}

TEST(PlaneScaler, InterpolatesBetweenCentresWhereItGrows) {
  const Plane plane{2, 1, {0, 400}};
  EXPECT_THAT(rowOf(plane, 0, 2, 8), ElementsAre(0, 0, 50, 150, 250, 350, 400, 400));
}

TEST(PlaneScaler, GrowsARampWithoutSteps) {
  const Plane plane = rampOf(48, 36, 200);
  const auto result = scalePlane(plane.reader(), {0, 48, 48, 320}, {0, 36, 36, 240}, 1);
  for (std::size_t i = 1; i < 320; ++i) {
    const int step = result[i] - result[i - 1];
    EXPECT_GE(step, 0);
    EXPECT_LE(step, 31);  // 200 * 48 / 320, rounded up
  }
}

TEST(PlaneScaler, NeverLooksAcrossTheEdgeOfThePartTaken) {
  const Plane plane{6, 1, {60000, 60000, 10, 20, 60000, 60000}};
  EXPECT_THAT(rowOf(plane, 2, 2, 8), Each(Le(20)));
  EXPECT_THAT(rowOf(plane, 2, 2, 1), ElementsAre(15));
}

TEST(PlaneScaler, StaysInsideThePlane) {
  const Plane plane{3, 1, {7, 8, 9}};
  for (const double begin : {-2.0, -0.5, 1.5, 2.9, 3.0, 40.0}) {
    for (const double length : {0.001, 0.5, 3.0, 10.0}) {
      for (const int result : {1, 2, 7}) {
        const auto row = rowOf(plane, begin, length, result);
        EXPECT_EQ(row.size(), static_cast<std::size_t>(result));
        for (const std::uint16_t sample : row) {
          EXPECT_GE(sample, 7);
          EXPECT_LE(sample, 9);
        }
      }
    }
  }
}

TEST(PlaneScaler, OneCodeStaysThatCodeAtAnySize) {
  for (const std::uint16_t code : std::vector<std::uint16_t>{1, 255, 1023, 40001, 65535}) {
    for (const auto& [width, result] :
         {std::pair{7, 3}, std::pair{1920, 320}, std::pair{317, 320}, std::pair{4096, 1}}) {
      const Plane plane{width, 9, std::vector<std::uint16_t>(static_cast<std::size_t>(width) * 9, code)};
      EXPECT_THAT(scalePlane(plane.reader(), {0.3, width - 0.7, width, result}, {0.1, 8.5, 9, 4}, 1), Each(code));
    }
  }
}

TEST(PlaneScaler, IsOffByOneAtMostWhenQuick) {
  std::mt19937 random(9);
  Plane plane{97, 31, {}};
  for (int i = 0; i < plane.width * plane.height; ++i) plane.samples.push_back(static_cast<std::uint16_t>(random()));
  for (const double factor : {1.0, 0.37}) {
    for (const int width : {1, 20, 47, 48, 60, 96, 97, 98, 150, 401}) {
      for (const int height : {1, 9, 31, 64}) {
        for (const double begin : {0.0, 3.6}) {
          const AxisScale across{begin, plane.width - begin * 1.5, plane.width, width};
          const AxisScale down{begin, plane.height - begin, plane.height, height};
          const auto exact = scalePlane(plane.reader(), across, down, factor);
          const auto quick = scalePlaneQuickly({plane.reader()}, across, down, factor);
          ASSERT_EQ(quick.size(), exact.size());
          for (std::size_t i = 0; i < exact.size(); ++i) ASSERT_NEAR(quick[i], exact[i], 1) << width << 'x' << height;
        }
      }
    }
  }
}

TEST(PlaneScaler, IsOffByOneAtMostWhenBlocksAreWhole) {
  std::mt19937 random(11);
  Plane plane{290, 50, {}};
  std::vector<std::uint8_t> bytes;
  for (int i = 0; i < plane.width * plane.height; ++i) bytes.push_back(static_cast<std::uint8_t>(random()));
  plane.samples.assign(bytes.begin(), bytes.end());
  std::vector<std::uint16_t> words = plane.samples;
  for (std::uint16_t& word : words) word = static_cast<std::uint16_t>(word | 0x3300U);
  for (const int size : {1, 2, 4, 5, 6, 8, 12, 24}) {
    const int columns = 288 / size, lines = 48 / size;
    const AxisScale across{1, static_cast<double>(columns * size), plane.width, columns};
    const AxisScale down{2, static_cast<double>(lines * size), plane.height, lines};
    const auto exact = scalePlane(plane.reader(), across, down, 256);
    const auto quick = scalePlaneQuickly({plane.reader()}, across, down, 256);
    EXPECT_EQ(scalePlaneQuickly({plane.reader(), {bytes.data(), plane.width}}, across, down, 256), quick) << size;
    const auto* const masked = reinterpret_cast<const std::uint8_t*>(words.data());
    EXPECT_EQ(scalePlaneQuickly({plane.reader(), {masked, 2 * plane.width, 2, 0xFF}}, across, down, 256), quick)
        << size;
    ASSERT_EQ(quick.size(), exact.size());
    for (std::size_t i = 0; i < exact.size(); ++i) ASSERT_NEAR(quick[i], exact[i], 1) << size;
  }
}

TEST(PlaneScaler, TellsWhatItReadsNext) {
  const Plane plane = rampOf(24, 12, 10);
  std::vector<int> told;
  scalePlaneQuickly({plane.reader(), {}, [&](int end) { told.push_back(end); }}, {0, 24, 24, 2}, {0, 12, 12, 3}, 256);
  EXPECT_THAT(told, ElementsAre(4, 8, 12));
}

TEST(PlaneScaler, IsExactWhenQuickAndNotScaling) {
  const Plane plane = rampOf(97, 5, 675);
  EXPECT_EQ(scalePlaneQuickly({plane.reader()}, {0, 97, 97, 97}, {0, 5, 5, 5}, 1), plane.samples);
}

}  // namespace
}  // namespace movie

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/render/FrameRenderer.h"
#include "tests/movie/render/TestPicture.h"

namespace movie {
namespace {

using test::Codes;
using test::nclc;
using test::pictureOf;
using testing::ElementsAre;

std::vector<std::uint8_t> measured(const Picture& picture, std::uint16_t matrix = 1) {
  return renderMeasurementFrame(picture, nclc(1, 1, matrix)).samples;
}

std::vector<std::uint8_t> measuredPixel(PictureModel model, PictureRange range, int depth, const Codes& codes,
                                        std::uint16_t matrix = 1) {
  return measured(pictureOf(model, range, depth, {codes}), matrix);
}

/// round(numerator / denominator), halves up, within 0..255; in integers, so that nothing is lost.
int rounded(long numerator, long denominator) {
  const long quotient = (2 * numerator + denominator) / (2 * denominator);
  return static_cast<int>(std::clamp(2 * numerator + denominator < 0 ? 0L : quotient, 0L, 255L));
}

TEST(MeasurementRenderer, KeepsEveryVideoRangeGreyOfEveryDepth) {
  constexpr std::uint16_t matrices[]{1, 6, 9};
  for (const int depth : {8, 10, 12, 16}) {
    const unsigned perCode = 1U << (depth - 8);
    const unsigned step = depth == 16 ? 61 : 1;
    for (unsigned code = 0; code < 256 * perCode; code += step) {
      const int expected = rounded(code, perCode);
      for (const std::uint16_t matrix : matrices) {
        const Codes codes{code, 128 * perCode, 128 * perCode};
        ASSERT_THAT(measuredPixel(PictureModel::YCbCr, PictureRange::Video, depth, codes, matrix),
                    ElementsAre(expected, expected, expected))
            << code << " of " << depth << " bits";
      }
    }
  }
}

TEST(MeasurementRenderer, MapsEveryFullRangeGreyIntoVideoRange) {
  for (const int depth : {8, 10, 12}) {
    const unsigned white = (1U << depth) - 1, centre = 1U << (depth - 1);
    for (unsigned code = 0; code <= white; ++code) {
      const int expected = rounded(16L * white + 219L * code, white);
      ASSERT_THAT(measuredPixel(PictureModel::YCbCr, PictureRange::Full, depth, {code, centre, centre}),
                  ElementsAre(expected, expected, expected))
          << code << " of " << depth << " bits";
      ASSERT_THAT(measuredPixel(PictureModel::Grey, PictureRange::Full, depth, {code}),
                  ElementsAre(expected, expected, expected))
          << code << " of " << depth << " bits";
      ASSERT_THAT(measuredPixel(PictureModel::Rgb, PictureRange::Full, depth, {code, 0, white}),
                  ElementsAre(expected, 16, 235))
          << code << " of " << depth << " bits";
    }
  }
}

TEST(MeasurementRenderer, TakesAnUnspecifiedRangeAsVideoForYCbCrAndFullForTheRest) {
  constexpr auto unspecified = PictureRange::Unspecified;
  EXPECT_THAT(measuredPixel(PictureModel::YCbCr, unspecified, 8, {16, 128, 128}), ElementsAre(16, 16, 16));
  EXPECT_THAT(measuredPixel(PictureModel::Rgb, unspecified, 8, {0, 255, 128}), ElementsAre(16, 235, 126));
  EXPECT_THAT(measuredPixel(PictureModel::Grey, unspecified, 8, {255}), ElementsAre(235, 235, 235));
}

TEST(MeasurementRenderer, LeavesVideoRangeRgbAndGreyAsTheyAre) {
  EXPECT_THAT(measuredPixel(PictureModel::Rgb, PictureRange::Video, 8, {3, 235, 254}), ElementsAre(3, 235, 254));
  EXPECT_THAT(measuredPixel(PictureModel::Grey, PictureRange::Video, 10, {4 * 100 + 2}), ElementsAre(101, 101, 101));
}

// The expected codes come from exact rational arithmetic outside of this program.
TEST(MeasurementRenderer, DecodesColoursWithEachMatrix) {
  const struct {
    std::uint16_t matrix;
    Codes yCbCr;
    std::array<int, 3> rgb;
  } rows[] = {
      {1, {63, 102, 240}, {235, 17, 16}},  {1, {173, 42, 26}, {16, 235, 17}},     {1, {32, 240, 118}, {17, 16, 235}},
      {1, {219, 16, 138}, {234, 235, 16}}, {1, {100, 60, 200}, {211, 80, 0}},     {1, {180, 200, 90}, {121, 184, 255}},
      {4, {63, 102, 240}, {216, 0, 18}},   {4, {173, 42, 26}, {33, 255, 23}},     {4, {32, 240, 118}, {18, 3, 227}},
      {4, {219, 16, 138}, {233, 248, 24}}, {4, {100, 60, 200}, {199, 72, 0}},     {4, {180, 200, 90}, {128, 183, 255}},
      {6, {63, 102, 240}, {217, 0, 18}},   {6, {173, 42, 26}, {33, 255, 24}},     {6, {32, 240, 118}, {18, 1, 226}},
      {6, {219, 16, 138}, {233, 250, 25}}, {6, {100, 60, 200}, {199, 73, 0}},     {6, {180, 200, 90}, {128, 182, 255}},
      {7, {63, 102, 240}, {236, 17, 17}},  {7, {173, 42, 26}, {16, 240, 19}},     {7, {32, 240, 118}, {17, 12, 232}},
      {7, {219, 16, 138}, {234, 239, 19}}, {7, {100, 60, 200}, {211, 82, 0}},     {7, {180, 200, 90}, {121, 182, 255}},
      {8, {100, 90, 160}, {168, 63, 106}}, {8, {150, 128, 128}, {150, 150, 150}}, {9, {63, 102, 240}, {224, 5, 15}},
      {9, {173, 42, 26}, {26, 244, 15}},   {9, {32, 240, 118}, {18, 20, 238}},    {9, {219, 16, 138}, {233, 231, 13}},
      {9, {100, 60, 200}, {204, 71, 0}},   {9, {180, 200, 90}, {125, 190, 255}},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(measuredPixel(PictureModel::YCbCr, PictureRange::Video, 8, row.yCbCr, row.matrix),
                ElementsAre(row.rgb[0], row.rgb[1], row.rgb[2]))
        << "matrix " << row.matrix << ", luma " << row.yCbCr[0];
  }
}

TEST(MeasurementRenderer, DecodesColoursOfOtherDepthsAndRanges) {
  constexpr auto yCbCr = PictureModel::YCbCr;
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Full, 8, {76, 85, 255}, 6), ElementsAre(234, 16, 16));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Full, 8, {150, 44, 21}, 6), ElementsAre(16, 235, 17));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Full, 8, {29, 255, 107}, 6), ElementsAre(16, 16, 234));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Full, 8, {100, 60, 200}, 6), ElementsAre(189, 78, 0));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Video, 10, {250, 409, 960}, 1), ElementsAre(235, 16, 16));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Video, 10, {694, 169, 105}, 1), ElementsAre(17, 236, 18));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Video, 10, {127, 960, 470}, 1), ElementsAre(16, 16, 235));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Video, 10, {401, 300, 777}, 1), ElementsAre(202, 80, 4));
  EXPECT_THAT(measuredPixel(yCbCr, PictureRange::Full, 12, {1000, 1800, 2900}, 9), ElementsAre(137, 46, 45));
}

TEST(MeasurementRenderer, RoundsOnceAndOnlyAfterTheMatrix) {
  // Luma 100.25 and a red of 0.25 from chroma: two roundings would lose both quarters.
  Picture picture =
      pictureOf(PictureModel::YCbCr, PictureRange::Video, 16, {{100 * 256 + 64, 128 * 256, 128 * 256 + 42}});
  EXPECT_EQ(measured(picture)[0], 101);
  picture.planes[2][0] = 128 * 256 + 41;
  EXPECT_EQ(measured(picture)[0], 100) << "100.25 + 41/256 * 1.5396 lies below the half";
}

TEST(MeasurementRenderer, KeepsRowsFromTheTop) {
  Picture picture = pictureOf(PictureModel::Grey, PictureRange::Video, 8, {{20}, {30}, {40}, {50}, {60}, {70}});
  picture.width = 2;
  picture.height = 3;
  const RgbFrame frame = renderMeasurementFrame(picture, std::nullopt);
  EXPECT_EQ(frame.width, 2);
  EXPECT_EQ(frame.height, 3);
  EXPECT_THAT(frame.samples, ElementsAre(20, 20, 20, 30, 30, 30, 40, 40, 40, 50, 50, 50, 60, 60, 60, 70, 70, 70));
}

/// The exponent between two grey codes, as the check takes it from luma: ln(dest) / ln(source) of (L - 16) / 219.
double exponentBetween(int source, int dest) {
  return std::log((dest - 16) / 219.0) / std::log((source - 16) / 219.0);
}

TEST(MeasurementRenderer, GivesBackAnExponentThatWasAppliedToLuma) {
  for (const double exponent : {0.5, 0.8, 0.9, 1.1, 1.25, 1.5, 2.0}) {
    for (unsigned code = 60; code <= 180; ++code) {
      const double light = std::pow((code - 16) / 219.0, exponent);
      const auto tenBits = static_cast<unsigned>(std::lround(4 * (16 + 219 * light)));
      const auto full = static_cast<unsigned>(std::lround(1023 * light));
      const auto fullSource = static_cast<unsigned>(std::lround(1023 * (code - 16) / 219.0));
      const int source = measuredPixel(PictureModel::YCbCr, PictureRange::Video, 8, {code, 128, 128})[1];
      const int video = measuredPixel(PictureModel::YCbCr, PictureRange::Video, 10, {tenBits, 512, 512})[1];
      const int sourceOfFull = measuredPixel(PictureModel::YCbCr, PictureRange::Full, 10, {fullSource, 512, 512})[1];
      const int mapped = measuredPixel(PictureModel::YCbCr, PictureRange::Full, 10, {full, 512, 512})[1];

      ASSERT_EQ(source, static_cast<int>(code));
      ASSERT_EQ(sourceOfFull, static_cast<int>(code)) << "a full-range master measures as its video-range twin";
      // Half a code of the result, plus the eighth that 10 bits lose, is all the error there is.
      const double expected = 16 + 219 * light;
      ASSERT_NEAR(video, expected, 0.5 + 0.125) << code << " ^ " << exponent;
      ASSERT_NEAR(mapped, expected, 0.5 + 0.125) << code << " ^ " << exponent;
      const double tolerance = exponentBetween(static_cast<int>(code), static_cast<int>(expected)) -
                               exponentBetween(static_cast<int>(code), static_cast<int>(expected) + 1);
      ASSERT_NEAR(exponentBetween(source, video), exponent, tolerance) << code;
      ASSERT_NEAR(exponentBetween(sourceOfFull, mapped), exponent, tolerance) << code;
    }
  }
}

}  // namespace
}  // namespace movie

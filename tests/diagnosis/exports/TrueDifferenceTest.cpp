#include <gtest/gtest.h>

#include "tests/diagnosis/exports/TrueDifference.h"

namespace diagnosis::test {
namespace {

constexpr int side = 48;

/// Samples of three codes of 8 bits everywhere.
movie::Picture plain(movie::PictureModel model, int first, int second, int third) {
  movie::Picture picture{.width = side, .height = side, .model = model, .planes = {}};
  const int codes[] = {first, second, third};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    picture.planes[plane].assign(side * side, static_cast<std::uint16_t>(codes[plane] * 256));
  }
  return picture;
}

SideTags tagged(movie::PictureModel model, SampleRange range, std::uint16_t matrix) {
  SideTags tags;
  tags.model = model;
  tags.range = range;
  tags.matrixInForce = matrix;
  return tags;
}

const SideTags video601Tags = tagged(movie::PictureModel::YCbCr, SampleRange::Video, 6);
const SideTags video709Tags = tagged(movie::PictureModel::YCbCr, SampleRange::Video, 1);
const SideTags rgbTags = tagged(movie::PictureModel::Rgb, SampleRange::Full, 0);

double between(const movie::Picture& source, const SideTags& sourceTags, const movie::Picture& dest,
               const SideTags& destTags, const Placement& placement = {}, double covered = 0) {
  Question question;
  question.frames = {{&source, &dest}};
  question.source = sourceTags;
  question.dest = destTags;
  return trueDifference(question, placement, covered);
}

const movie::Picture grey = plain(movie::PictureModel::YCbCr, 100, 128, 128);

TEST(TrueDifference, OfLumaIsInItsCodes) {
  EXPECT_NEAR(between(grey, video709Tags, plain(movie::PictureModel::YCbCr, 110, 128, 128), video709Tags), 10, 1e-6);
}

TEST(TrueDifference, OfChromaCountsHalf) {
  EXPECT_NEAR(between(grey, video709Tags, plain(movie::PictureModel::YCbCr, 100, 148, 128), video709Tags), 10, 1e-6);
}

TEST(TrueDifference, IsOfColorsAsTheyAreMeant) {
  // Red of half the light: RGB 188, 0, 0, and its Y'CbCr of BT.601, each to the nearest code.
  const movie::Picture red = plain(movie::PictureModel::Rgb, 188, 0, 0);
  const movie::Picture encoded = plain(movie::PictureModel::YCbCr, 64, 100, 211);
  EXPECT_LT(between(red, rgbTags, encoded, video601Tags), 0.6);
  EXPECT_GT(between(red, rgbTags, encoded, video709Tags), 5);
}

TEST(TrueDifference, LeavesOutBarsAndWhatCovers) {
  movie::Picture covered = grey;
  for (std::size_t i = 0; i < side * side / 4; ++i) covered.planes[0][i] = 16 * 256;
  Placement below;
  below.dest = {0, 0.25, 1, 1};
  EXPECT_GT(between(grey, video709Tags, covered, video709Tags), 20);
  EXPECT_EQ(between(grey, video709Tags, covered, video709Tags, below), 0);
  EXPECT_EQ(between(grey, video709Tags, covered, video709Tags, {}, 0.25), 0);
}

}  // namespace
}  // namespace diagnosis::test

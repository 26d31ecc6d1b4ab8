#include <gtest/gtest.h>

#include "diagnosis/Tags.h"
#include "tests/diagnosis/PaintedPicture.h"

namespace diagnosis::test {
namespace {

SideTags with(std::uint16_t primaries, std::uint16_t transferFunction, std::uint16_t matrix) {
  SideTags tags;
  tags.primaries = primaries;
  tags.transferFunction = transferFunction;
  tags.matrix = matrix;
  return tags;
}

struct CodesRow {
  std::uint16_t source, dest;
  Comparison primaries, transferFunction, matrix;
};

TEST(Tags, CompareByMeaning) {
  using enum Comparison;
  const CodesRow rows[] = {
      {1, 1, Equal, Equal, Equal},     {2, 2, Equal, Equal, Equal},       {1, 2, Lost, Lost, Lost},
      {2, 1, Added, Added, Added},     {1, 9, Differs, Differs, Differs}, {6, 7, Equal, Differs, Differs},
      {5, 6, Differs, Differs, Equal}, {1, 6, Differs, Equal, Differs},   {14, 15, Differs, Equal, Differs},
  };
  for (const CodesRow& row : rows) {
    const TagComparison tags =
        compareTags(with(row.source, row.source, row.source), with(row.dest, row.dest, row.dest));
    EXPECT_EQ(tags.primaries, row.primaries) << row.source << " to " << row.dest;
    EXPECT_EQ(tags.transferFunction, row.transferFunction) << row.source << " to " << row.dest;
    EXPECT_EQ(tags.matrix, row.matrix) << row.source << " to " << row.dest;
  }
}

TEST(Tags, CountWhereAPlayerMayGoByThem) {
  const SideTags plain = with(1, 1, 1), silent = with(2, 2, 2);
  EXPECT_FALSE(compareTags(plain, plain).counts());
  EXPECT_TRUE(compareTags(plain, silent).counts()) << "they were lost";
  EXPECT_FALSE(compareTags(silent, plain).counts()) << "what is said now is not against what was";
  EXPECT_FALSE(compareTags(plain, with(1, 6, 1)).counts()) << "the same curve by another number";
  EXPECT_FALSE(compareTags(plain, with(1, 1, 6)).counts()) << "the pixels tell";
  SideTags gamma = plain;
  gamma.gamma = 144179;
  EXPECT_TRUE(compareTags(gamma, plain).counts());
  EXPECT_TRUE(compareTags(plain, gamma).counts());
  SideTags profile = plain;
  profile.iccProfile = movie::Bytes(1);
  EXPECT_TRUE(compareTags(plain, profile).counts());
}

TEST(Tags, SayWhichRangeIsInForce) {
  const auto rangeOf = [](movie::PictureModel model, movie::PictureRange range) {
    movie::Picture picture;
    picture.model = model;
    picture.range = range;
    return tagsOf(movie::ImageDescription(movie::Bytes(86)), picture).range;
  };
  using Model = movie::PictureModel;
  using Range = movie::PictureRange;
  EXPECT_EQ(rangeOf(Model::YCbCr, Range::Unspecified), SampleRange::Video);
  EXPECT_EQ(rangeOf(Model::YCbCr, Range::Full), SampleRange::Full);
  EXPECT_EQ(rangeOf(Model::Rgb, Range::Unspecified), SampleRange::Full);
  EXPECT_EQ(rangeOf(Model::Rgb, Range::Video), SampleRange::Video);
}

}  // namespace
}  // namespace diagnosis::test

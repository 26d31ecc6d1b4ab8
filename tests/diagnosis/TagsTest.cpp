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
  EXPECT_FALSE(compareTags(silent, with(6, 6, 6)).counts());
  EXPECT_TRUE(compareTags(silent, with(1, 16, 1)).counts()) << "nobody takes silence for PQ";
  EXPECT_TRUE(compareTags(silent, with(9, 1, 1)).counts()) << "nor for BT.2020";
  SideTags gamma = plain;
  gamma.gamma = 144179;
  EXPECT_TRUE(compareTags(gamma, plain).counts());
  EXPECT_TRUE(compareTags(plain, gamma).counts());
  SideTags profile = plain;
  profile.iccProfile = movie::Bytes(1);
  EXPECT_TRUE(compareTags(plain, profile).counts());
}

TEST(Tags, AreWhatASyncMakesOfThem) {
  SideTags source, dest;
  source.gamma = 144179;
  source.nclc = movie::NclcParameters{0, 9, 16, 2};
  dest.nclc = movie::NclcParameters{0, 1, 1, 1};
  dest.iccProfile = movie::Bytes(1);
  dest.coded = {0, 6, 6, 6};
  SideTags after = synced(source, dest);
  EXPECT_EQ(after.gamma, source.gamma);
  EXPECT_EQ(after.nclc, source.nclc);
  EXPECT_EQ(after.iccProfile, dest.iccProfile) << "there is none to copy";
  EXPECT_EQ(after.primaries, 9);
  EXPECT_EQ(after.matrix, 6) << "the record that came names none, and the bitstream's is heard";
  EXPECT_EQ(after.matrixInForce, 6);
  dest.coded.matrix = 2;
  EXPECT_EQ(synced(source, dest).matrixInForce, 1);
  dest.codedHeight = 576;
  EXPECT_EQ(synced(source, dest).matrixInForce, 6);

  after = synced(SideTags(), dest);
  EXPECT_EQ(after.nclc, dest.nclc) << "a sync removes none";
  EXPECT_EQ(synced(SideTags(), source).gamma, std::nullopt);
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

#include <gtest/gtest.h>

#include "movie/render/YCbCrMatrix.h"
#include "tests/movie/render/TestPicture.h"

namespace movie {
namespace {

using test::nclc;

TEST(YCbCrMatrix, KnowsTheWeightsOfTheNonConstantLuminanceMatrices) {
  const struct {
    std::uint16_t matrix;
    LumaWeights weights;
  } rows[] = {{1, {0.2126, 0.0722}}, {4, {0.30, 0.11}},   {5, {0.299, 0.114}},
              {6, {0.299, 0.114}},   {7, {0.212, 0.087}}, {9, {0.2627, 0.0593}}};
  for (const auto& row : rows) EXPECT_EQ(lumaWeights(row.matrix), row.weights) << row.matrix;
  constexpr std::uint16_t others[]{0, 2, 3, 8, 10, 11, 12, 13, 14, 65535};
  for (const std::uint16_t unknown : others) EXPECT_FALSE(lumaWeights(unknown)) << unknown;
}

TEST(YCbCrMatrix, GivesLumaBackFromTheRgbItMakes) {
  constexpr std::uint16_t known[]{1, 4, 5, 6, 7, 9};
  for (const std::uint16_t matrix : known) {
    const auto luma = *lumaWeights(matrix);
    const auto chroma = *chromaWeights(matrix);
    const double kg = 1 - luma.kr - luma.kb;
    EXPECT_NEAR(luma.kr * chroma.cb[0] + kg * chroma.cb[1] + luma.kb * chroma.cb[2], 0, 1e-12) << matrix;
    EXPECT_NEAR(luma.kr * chroma.cr[0] + kg * chroma.cr[1] + luma.kb * chroma.cr[2], 0, 1e-12) << matrix;
    EXPECT_NEAR(chroma.cr[0] / 2, 1 - luma.kr, 1e-12) << "Cr of 0.5 lifts red from kr to 1";
    EXPECT_NEAR(chroma.cb[2] / 2, 1 - luma.kb, 1e-12) << "Cb of 0.5 lifts blue from kb to 1";
  }
}

TEST(YCbCrMatrix, TakesYCgCoAsAMatrixAndTheIdentityAsNone) {
  ASSERT_TRUE(chromaWeights(std::uint16_t{8}));
  EXPECT_EQ(chromaWeights(std::uint16_t{8})->cb, (std::array<double, 3>{-1, 1, -1}));
  EXPECT_EQ(chromaWeights(std::uint16_t{8})->cr, (std::array<double, 3>{1, 0, -1}));
  EXPECT_FALSE(chromaWeights(std::uint16_t{0}));
}

TEST(YCbCrMatrix, ComesFromTheRecordThenTheBitstreamThenTheNumberOfLines) {
  const struct {
    const char* what;
    std::optional<NclcParameters> record;
    std::uint16_t bitstream;
    int lines;
    std::uint16_t expected;
  } rows[] = {
      {"the record wins", nclc(1, 1, 1), 6, 480, 1},
      {"the record wins over lines too", nclc(6, 1, 6), 2, 1080, 6},
      {"an unspecified record does not count", nclc(2, 2, 2), 9, 480, 9},
      {"nor one of a matrix without weights", nclc(9, 16, 10), 9, 480, 9},
      {"nor an empty record", NclcParameters{}, 6, 1080, 6},
      {"the bitstream", std::nullopt, 7, 480, 7},
      {"719 lines", std::nullopt, 2, 719, 6},
      {"720 lines", std::nullopt, 2, 720, 1},
      {"4320 lines", std::nullopt, 0, 4320, 1},
      {"no lines known", std::nullopt, 2, 0, 6},
  };
  for (const auto& row : rows) {
    Picture picture;
    picture.matrix = row.bitstream;
    picture.codedHeight = row.lines;
    const auto inForce = matrixInForce(row.record, picture);
    EXPECT_EQ(inForce.cb, chromaWeights(row.expected)->cb) << row.what;
    EXPECT_EQ(inForce.cr, chromaWeights(row.expected)->cr) << row.what;
  }
}

}  // namespace
}  // namespace movie

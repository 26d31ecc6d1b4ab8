#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/render/FrameRenderer.h"
#include "movie/render/PictureRgb.h"
#include "tests/movie/render/TestPicture.h"
#include "tests/movie/render/TestProfiles.h"

namespace movie {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr std::int32_t fixed(double gamma) {
  return static_cast<std::int32_t>(gamma * 65536);
}

/// What full-range greys of 8 bits show as.
std::vector<int> shownGreys(const ColorSet& colors, const std::vector<unsigned>& codes) {
  std::vector<Codes> pixels(codes.size());
  for (std::size_t i = 0; i < codes.size(); ++i) pixels[i][0] = codes[i];
  const auto frame = renderDisplayFrame(pictureOf(PictureModel::Grey, PictureRange::Full, 8, pixels), colors);
  std::vector<int> shown;
  for (std::size_t i = 0; i < frame.samples.size(); i += 3) {
    EXPECT_EQ(frame.samples[i], frame.samples[i + 1]);
    EXPECT_EQ(frame.samples[i], frame.samples[i + 2]);
    shown.push_back(frame.samples[i]);
  }
  return shown;
}

const std::vector<unsigned> probes{0, 1, 5, 16, 64, 128, 186, 200, 254, 255};
// Computed outside of this program: 255 times the sRGB encoding of (code / 255) ^ power.
const std::vector<int> underLinear{0, 13, 38, 71, 137, 188, 222, 229, 255, 255};
const std::vector<int> under18{0, 0, 3, 20, 81, 146, 198, 210, 254, 255};
const std::vector<int> under1961{0, 0, 1, 14, 73, 139, 194, 207, 254, 255};
const std::vector<int> under22{0, 0, 1, 7, 62, 129, 187, 201, 254, 255};
const std::vector<int> under28{0, 0, 0, 1, 40, 106, 172, 189, 254, 255};
const std::vector<int> asTheyAre{0, 1, 5, 16, 64, 128, 186, 200, 254, 255};

TEST(DisplayRenderer, ShowsTheTransferOfTheColourRecord) {
  const struct {
    std::uint16_t transfer;
    const std::vector<int>& shown;
  } rows[] = {{1, under1961},  {6, under1961},   {14, under1961}, {15, under1961}, {4, under22},
              {5, under28},    {8, underLinear}, {13, asTheyAre}, {2, asTheyAre},  {7, asTheyAre},
              {16, asTheyAre}, {18, asTheyAre},  {0, asTheyAre}};
  for (const auto& row : rows) {
    EXPECT_THAT(shownGreys({.gamma = {}, .nclc = nclc(1, row.transfer, 1), .iccProfile = {}}, probes),
                ElementsAreArray(row.shown))
        << row.transfer;
  }
}

TEST(DisplayRenderer, ShowsGammaAsAPower) {
  EXPECT_THAT(shownGreys({.gamma = fixed(1.8), .nclc = {}, .iccProfile = {}}, probes), ElementsAreArray(under18));
  EXPECT_THAT(shownGreys({.gamma = fixed(2.2), .nclc = {}, .iccProfile = {}}, probes), ElementsAreArray(under22));
  EXPECT_THAT(shownGreys({.gamma = fixed(1.0), .nclc = {}, .iccProfile = {}}, probes), ElementsAreArray(underLinear));
  for (const std::int32_t none : {0, -1, fixed(-2.2)})
    EXPECT_THAT(shownGreys({.gamma = none, .nclc = {}, .iccProfile = {}}, probes), ElementsAreArray(asTheyAre));
  EXPECT_THAT(shownGreys({.gamma = 0x7FFFFFFF, .nclc = {}, .iccProfile = {}}, {0, 254, 255}), ElementsAre(0, 0, 255));
}

TEST(DisplayRenderer, LetsTheProfileWinThenTheRecordThenGamma) {
  const auto profile = rgbProfile(1.8);
  const Bytes broken(300, 0x20);
  using Kind = TransferInForce::Kind;
  const struct {
    const char* what;
    ColorSet colors;
    Kind kind;
    double power;
  } rows[] = {
      {"nothing", {}, Kind::AsIs, 1},
      {"gamma alone", {.gamma = fixed(2.5), .nclc = {}, .iccProfile = {}}, Kind::Power, 2.5},
      {"an unknown transfer leaves it to gamma", {fixed(2.5), nclc(1, 2, 1), {}}, Kind::Power, 2.5},
      {"a known one wins over gamma", {fixed(2.5), nclc(1, 1, 1), {}}, Kind::Power, 1.961},
      {"linear light", {fixed(2.5), nclc(1, 8, 1), {}}, Kind::Linear, 1},
      {"sRGB", {fixed(2.5), nclc(1, 13, 1), {}}, Kind::Srgb, 1},
      {"a profile wins over all", {fixed(2.5), nclc(1, 1, 1), profile}, Kind::Profile, 1},
      {"a profile that does not open counts for nothing", {fixed(2.5), nclc(1, 1, 1), broken}, Kind::Power, 1.961},
      {"and leaves it to gamma", {fixed(2.5), {}, broken}, Kind::Power, 2.5},
      {"gamma 0 is none", {0, {}, {}}, Kind::AsIs, 1},
  };
  for (const auto& row : rows) {
    const TransferInForce transfer = transferInForce(row.colors);
    EXPECT_EQ(transfer.kind, row.kind) << row.what;
    EXPECT_DOUBLE_EQ(transfer.power, row.power) << row.what;
  }
}

TEST(DisplayRenderer, ShowsTheCurveOfAProfile) {
  const auto shown = shownGreys({.gamma = {}, .nclc = nclc(1, 5, 1), .iccProfile = rgbProfile(1.8)}, probes);
  ASSERT_EQ(shown.size(), under18.size());
  for (std::size_t i = 0; i < shown.size(); ++i) EXPECT_NEAR(shown[i], under18[i], 1) << probes[i];
}

TEST(DisplayRenderer, ShowsVideoRangeInFullAndClipsItsExcursions) {
  const auto picture = pictureOf(PictureModel::YCbCr, PictureRange::Video, 8,
                                 {{16, 128, 128},
                                  {60, 128, 128},
                                  {126, 128, 128},
                                  {200, 128, 128},
                                  {235, 128, 128},
                                  {1, 128, 128},
                                  {254, 128, 128}});
  const auto plain = renderDisplayFrame(picture, {}).samples;
  const auto tagged = renderDisplayFrame(picture, {.gamma = {}, .nclc = nclc(1, 1, 1), .iccProfile = {}}).samples;
  const std::vector<int> expectedPlain{0, 51, 128, 214, 255, 0, 255}, expectedTagged{0, 58, 139, 219, 255, 0, 255};
  for (std::size_t i = 0; i < expectedPlain.size(); ++i) {
    EXPECT_EQ(plain[3 * i], expectedPlain[i]) << i;
    EXPECT_EQ(tagged[3 * i], expectedTagged[i]) << i;
  }
}

TEST(DisplayRenderer, DecodesColoursWithTheMatrixInForce) {
  const auto full = [](const Picture& picture, std::uint16_t matrix) {
    return renderDisplayFrame(picture, {.gamma = {}, .nclc = nclc(2, 2, matrix), .iccProfile = {}}).samples;
  };
  EXPECT_THAT(full(pictureOf(PictureModel::YCbCr, PictureRange::Video, 10, {{401, 300, 777}}), 1),
              ElementsAre(217, 74, 0));
  EXPECT_THAT(full(pictureOf(PictureModel::YCbCr, PictureRange::Full, 8, {{100, 60, 200}}), 6),
              ElementsAre(201, 72, 0));
  EXPECT_THAT(full(pictureOf(PictureModel::Rgb, PictureRange::Full, 8, {{10, 20, 30}}), 6), ElementsAre(10, 20, 30));
}

/// Pixels all over the range that a depth has.
Picture scatteredPicture(PictureModel model, PictureRange range, int depth) {
  std::mt19937 random(static_cast<unsigned>(depth));
  std::vector<Codes> pixels(20011);
  for (Codes& codes : pixels) {
    for (unsigned& code : codes) code = static_cast<unsigned>(random()) % (1U << depth);
  }
  return pictureOf(model, range, depth, pixels);
}

// The rule in double precision, step by step.
TEST(DisplayRenderer, IsWithinOneCodeOfTheExactRendering) {
  const std::vector<ColorSet> sets{{},
                                   {.gamma = fixed(1.8), .nclc = {}, .iccProfile = {}},
                                   {.gamma = {}, .nclc = nclc(1, 1, 1), .iccProfile = {}},
                                   {.gamma = {}, .nclc = nclc(9, 13, 9), .iccProfile = {}},
                                   {.gamma = {}, .nclc = nclc(5, 5, 6), .iccProfile = {}}};
  for (const PictureModel model : {PictureModel::YCbCr, PictureModel::Rgb, PictureModel::Grey}) {
    for (const PictureRange range : {PictureRange::Video, PictureRange::Full}) {
      for (const int depth : {8, 10, 12, 16}) {
        for (const ColorSet& colors : sets) {
          const Picture picture = scatteredPicture(model, range, depth);
          const auto exact =
              rgbSamplesOf<std::uint16_t>(picture, matrixInForce(colors.nclc, picture), {.black = 0, .white = 65535});
          const TransferInForce transfer = transferInForce(colors);
          const bool tabled = transfer.kind == TransferInForce::Kind::Power;
          const auto shown = renderDisplayFrame(picture, colors).samples;
          ASSERT_EQ(shown.size(), exact.size());
          for (std::size_t i = 0; i < shown.size(); ++i) {
            const double value = exact[i] / 65535.0;
            const double light = std::pow(value, transfer.power);
            const double encoded = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            ASSERT_NEAR(shown[i], 255 * (tabled ? encoded : value), 1.0) << i << " of depth " << depth;
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace movie

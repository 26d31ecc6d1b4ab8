#include <cmath>

#include <gtest/gtest.h>

#include "diagnosis/CauseFit.h"
#include "diagnosis/Difference.h"
#include "tests/diagnosis/PaintedPicture.h"

namespace diagnosis::test {
namespace {

std::vector<Stratum> strataOf(const Signal& source, const Signal& dest) {
  StrataBuilder builder;
  builder.add(blocksOf({source, dest}));
  return builder.strata();
}

Signal asTagged(const movie::Picture& picture, SideTags tags) {
  return signalOf(picture, tags, 1);
}

constexpr ComparedIn deep{.fullCodes = 255.75};  // of 10 bits

TEST(CauseModel, PredictsSamplesUnderTheOtherSidesTags) {
  for (const movie::PictureRange range : {movie::PictureRange::Video, movie::PictureRange::Full}) {
    for (const std::uint16_t matrix : {std::uint16_t{1}, std::uint16_t{6}, std::uint16_t{9}}) {
      const movie::Picture source = painted(colorful());
      movie::Picture dest = source;
      dest.range = range;
      const SideTags sourceTags = taggedAs(source, 1), destTags = taggedAs(dest, matrix);
      const auto hypothesis = relabelled(sourceTags, destTags, deep);
      const bool alike = range == movie::PictureRange::Video && matrix == 1;
      ASSERT_EQ(hypothesis.has_value(), !alike);
      if (!hypothesis) continue;
      const std::vector<Stratum> strata = strataOf(asTagged(source, sourceTags), asTagged(dest, destTags));
      EXPECT_LT(fitCause(*hypothesis, strata, deep).cost, 0.05) << matrix;
      EXPECT_GT(fitCause(Hypothesis(), strata, {}).cost, 1) << matrix;
    }
  }
}

TEST(CauseModel, TurnsLightIntoSignalsAndBack) {
  const TransferCurve curves[] = {{Transfer::Srgb}, {Transfer::Bt709}, {Transfer::Linear}, {Transfer::Power, 2.4}};
  for (const TransferCurve& curve : curves) {
    for (const double signal : {-0.1, 0.0, 0.01, 0.05, 0.0809, 0.5, 1.0}) {
      EXPECT_NEAR(signalOf(curve, lightOf(curve, signal)), signal, 1e-3);
    }
  }
  EXPECT_NEAR(lightOf({Transfer::Srgb}, 0.5), 0.21404, 1e-5) << "IEC 61966-2-1";
  EXPECT_NEAR(lightOf({Transfer::Bt709}, 0.5), 0.25959, 1e-5) << "ITU-R BT.709";
}

TEST(CauseModel, SignalsOfEveryMatrixMeanTheSameColors) {
  const Signal expected = asTagged(painted(colorful()), taggedAs(painted(colorful()), 1));
  for (const Coding& coding : {Coding{.matrix = 6}, Coding{.matrix = 9}, Coding{.range = movie::PictureRange::Full},
                               Coding{.matrix = 0, .range = movie::PictureRange::Full}}) {
    const movie::Picture picture = painted(colorful(), coding);
    const Signal found = asTagged(picture, taggedAs(picture, coding.matrix));
    for (std::size_t plane = 0; plane < 3; ++plane) {
      EXPECT_NEAR(double{found.planes[plane][5000]}, double{expected.planes[plane][5000]}, 0.004) << coding.matrix;
    }
  }
}

TEST(CauseFit, FindsALineAndWhatBecameOfChroma) {
  const auto changed = [](double x, double y) {
    const Vector3 rgb = colorful()(x, y);
    Vector3 signal = product(fromRgbMatrix(1), rgb);
    signal = {0.9 * signal[0] + 0.05, 0.5 * signal[1], 0.5 * signal[2]};
    return product(toRgbMatrix(1), signal);
  };
  const Signal source = asTagged(painted(colorful()), taggedAs(painted(colorful()), 1));
  const GainFit fit = fitGain(strataOf(source, asTagged(painted(changed), taggedAs(painted(changed), 1))));
  EXPECT_NEAR(fit.gain, 0.9, 0.003);
  EXPECT_NEAR(fit.offset, 0.05, 0.002);
  EXPECT_NEAR(fit.chroma, 0.5, 0.01);
  EXPECT_LT(fit.cost, 0.15);
}

TEST(CauseFit, CountsOnlyWhatGoesOneWayAsADifference) {
  std::vector<Stratum> strata;
  for (int i = 0; i < 50; ++i) {
    const double luma = 0.1 + 0.016 * i, up = i % 2 == 0 ? 0.02 : -0.02;
    strata.push_back({.source = {luma, 0.01, 0}, .dest = {luma + up, 0.01, 0}, .weight = 1, .samples = 10});
  }
  EXPECT_LT(differenceOf(strata), 2.5);
  for (Stratum& stratum : strata) stratum.dest[0] = stratum.source[0] + 0.02;
  EXPECT_NEAR(differenceOf(strata), 0.02 * lumaCodes, 0.01);
}

}  // namespace
}  // namespace diagnosis::test

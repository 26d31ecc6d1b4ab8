#include <cmath>

#include <gtest/gtest.h>

#include "scan/align/Signature.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

LumaPlane planeAt(const Shown& shown, const Laid& laid = {}) {
  PaintedRow row({shown}, 24, laid);
  return lumaOf(row.thumbnail(0)->signal);
}

TEST(Signature, OfTwoEncodingsOfOnePictureAreNear) {
  const Signature one = signatureOf(planeAt({.content = 1}));
  EXPECT_EQ(distance(one, one), 0);
  EXPECT_LT(distance(one, signatureOf(planeAt({.content = 1, .coded = true}))), 0.5);
}

TEST(Signature, OfOtherShotsAreFar) {
  const Signature one = signatureOf(planeAt({.content = 1}));
  for (const double other : {5.0, 9.0, 13.0, 101.0}) {
    EXPECT_GT(distance(one, signatureOf(planeAt({.content = other}))), 15) << other;
  }
}

TEST(Signature, OfMirroredPicturesAreFar) {
  EXPECT_GT(distance(signatureOf(planeAt({.content = 1})), signatureOf(planeAt({.content = 1}, {.mirrored = true}))),
            15);
}

TEST(Signature, HardlyChangesWithAnExponentAndGoesBackWithItsReverse) {
  const Signature one = signatureOf(planeAt({.content = 1}));
  EXPECT_LT(distance(one, signatureOf(planeAt({.content = 1, .exponent = 1.2}))), 4);
  const LumaPlane raised = planeAt({.content = 1, .exponent = 2});
  EXPECT_LT(distance(one, signatureOf(raised, {}, 0.5)), 0.7);
}

TEST(Signature, OfAPartIsThatOfThePartAlone) {
  const diagnosis::Region part{0.1, 0.2, 0.7, 0.8};
  const Signature cut = signatureOf(planeAt({.content = 1}), part);
  EXPECT_LT(distance(cut, signatureOf(planeAt({.content = 1}, {.part = part}))), 0.5);
}

TEST(Signature, IsFlatWithoutAnythingInIt) {
  EXPECT_TRUE(signatureOf(planeAt({.black = true})).isFlat());
  EXPECT_FALSE(signatureOf(planeAt({.content = 1})).isFlat());
}

TEST(Signature, OfBlackAndOfAnotherColorAreFar) {
  const auto plain = [](float luma) { return signatureOf(LumaPlane{32, 18, std::vector<float>(32UL * 18, luma)}); };
  EXPECT_EQ(distance(plain(0), plain(0)), 0);
  EXPECT_LT(distance(plain(0), plain(0.005F)), 1);
  EXPECT_LT(distance(plain(0.5F), plain(0.435F)), 1) << "raised to 1.2";
  EXPECT_GT(distance(plain(0), plain(0.5F)), 15);
}

TEST(Signature, TellsTheShareOfAMixture) {
  const Signature first = signatureOf(planeAt({.content = 1})), second = signatureOf(planeAt({.content = 1.3}));
  const Signature mixed = signatureOf(planeAt({.content = 1, .mixed = 0.4, .other = 1.3}));
  const Mixture mixture = mixtureOf(first, second, mixed);
  EXPECT_NEAR(mixture.share, 0.4, 0.1);
  EXPECT_LT(mixture.distance, 0.5 * distance(first, mixed));
}

TEST(AreaMeans, KeepTheMeanOfAPart) {
  LumaPlane ramp{10, 2, {}};
  for (int i = 0; i < 20; ++i) ramp.samples.push_back(static_cast<float>(i % 10));
  const LumaPlane halves = areaMeans(ramp, {0.05, 0, 0.95, 1}, 2, 1);
  EXPECT_FLOAT_EQ(halves.samples[0], (0.5F * 0 + 1 + 2 + 3 + 4) / 4.5F);
  EXPECT_FLOAT_EQ(halves.samples[1], (5 + 6 + 7 + 8 + 0.5F * 9) / 4.5F);
}

}  // namespace
}  // namespace scan::test

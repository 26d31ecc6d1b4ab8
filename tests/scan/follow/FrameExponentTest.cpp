#include <cmath>

#include <gtest/gtest.h>

#include "scan/follow/FrameExponent.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

diagnosis::Signal signalAt(const Shown& shown) {
  PaintedRow row({shown}, 24);
  return row.thumbnail(0)->signal;
}

TEST(FrameExponent, IsThatOfThePower) {
  for (const double exponent : {0.6, 0.9, 1.0, 1.1, 1.2, 1.8}) {
    for (const double content : {1.0, 8.0, 33.0}) {
      const auto found = exponentOf(signalAt({.content = content}),
                                    signalAt({.content = content, .exponent = exponent, .coded = true}));
      ASSERT_TRUE(found);
      EXPECT_NEAR(std::exp(found->logExponent), exponent, 0.01) << content;
    }
  }
}

TEST(FrameExponent, SpreadsWhereItIsNoPower) {
  const diagnosis::Signal source = signalAt({.content = 1});
  diagnosis::Signal dest = source;
  for (float& value : dest.planes[0]) value = (219 * value + 16) / 255;
  const auto power = exponentOf(source, signalAt({.content = 1, .exponent = 1.2})), range = exponentOf(source, dest);
  ASSERT_TRUE(power && range);
  EXPECT_GT(range->spread, 10 * power->spread + 0.02);
}

TEST(FrameExponent, IsNoneOfBlackAndOfEdgesAlone) {
  EXPECT_FALSE(exponentOf(signalAt({.black = true}), signalAt({.black = true})));
  diagnosis::Signal stripes = signalAt({.content = 1});
  for (std::size_t i = 0; i < stripes.size(); ++i) stripes.planes[0][i] = i % 2 == 0 ? 0.2F : 0.8F;
  EXPECT_FALSE(exponentOf(stripes, stripes));
}

}  // namespace
}  // namespace scan::test

#include <cmath>

#include <gtest/gtest.h>

#include "scan/follow/LatestExponent.h"

namespace scan::test {
namespace {

Matches measured(std::size_t frames, double exponent, double apart = 0) {
  Matches matches;
  for (std::size_t i = 0; i < frames; ++i) {
    FrameMatch match{.source = static_cast<std::int32_t>(i)};
    match.logExponent = static_cast<float>(std::log(exponent) + (i % 2 == 0 ? apart : -apart));
    matches.frames.push_back(match);
  }
  return matches;
}

TEST(LatestExponent, IsThatOfTheFramesBeforeAPlace) {
  Matches matches = measured(100, 1.2);
  const Matches later = measured(100, 1.6);
  matches.frames.insert(matches.frames.end(), later.frames.begin(), later.frames.end());
  EXPECT_NEAR(latestExponent(matches, 100).value(), 1.2, 1e-6);
  EXPECT_NEAR(latestExponent(matches, 170).value(), 1.6, 1e-6);
  EXPECT_NEAR(latestExponent(matches, 1000).value(), 1.6, 1e-6);
}

TEST(LatestExponent, IsNotTakenFromFewFrames) {
  EXPECT_FALSE(latestExponent(measured(20, 1.2), 20));
  EXPECT_FALSE(latestExponent(measured(100, 1.2), 20));
  Matches matches = measured(48, 1.2);
  for (std::size_t i = 0; i < 48; i += 2) matches.frames[i].source = -1;
  EXPECT_FALSE(latestExponent(matches, 48));
}

TEST(LatestExponent, IsNotTakenFromFramesThatDisagree) {
  EXPECT_TRUE(latestExponent(measured(48, 1.2, 0.01), 48));
  EXPECT_FALSE(latestExponent(measured(48, 1.2, 0.2), 48));
}

TEST(LatestExponent, IsNotTakenWhereItIsOutOfAllBounds) {
  EXPECT_FALSE(latestExponent(measured(48, 9), 48));
}

}  // namespace
}  // namespace scan::test

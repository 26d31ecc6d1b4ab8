#include <cmath>

#include <gtest/gtest.h>

#include "scan/Segments.h"
#include "tests/scan/PaintedRow.h"
#include "tests/support/Noise.h"

namespace scan::test {
namespace {

/// Frames of these exponents, each a little off.
Matches measured(const std::vector<double>& exponents, double noise = 0.01) {
  Matches matches;
  for (std::size_t i = 0; i < exponents.size(); ++i) {
    FrameMatch match;
    match.source = static_cast<std::int32_t>(i);
    const double off = noise * (2 * movie::test::hash01(static_cast<int>(i), 0, 3) - 1);
    match.logExponent = static_cast<float>(std::log(exponents[i]) + off);
    match.spread = 0.02F;
    match.weight = 200;
    matches.frames.push_back(match);
  }
  return matches;
}

std::vector<double> steps(const std::vector<std::pair<std::size_t, double>>& parts) {
  std::vector<double> exponents;
  for (const auto& [count, exponent] : parts) exponents.insert(exponents.end(), count, exponent);
  return exponents;
}

std::vector<ExponentSegment> segmentsOf(const Matches& matches) {
  const PaintedRow dest(std::vector<Shown>(matches.frames.size()), 24);
  return scan::segmentsOf(matches, dest);
}

TEST(Segments, AreOneWhereNothingChanges) {
  const auto segments = segmentsOf(measured(std::vector<double>(2400, 1.2)));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments[0].dest, (FrameRange{0, 2400}));
  EXPECT_NEAR(std::exp(segments[0].logExponent), 1.2, 0.005);
  EXPECT_LE(segments[0].interval.low, 1.2);
  EXPECT_GE(segments[0].interval.high, 1.2);
}

TEST(Segments, PartWhereTheExponentDoes) {
  for (const std::size_t cut : {600U, 611U, 1000U, 2300U}) {
    const auto segments = segmentsOf(measured(steps({{cut, 1.0}, {2400 - cut, 1.2}})));
    ASSERT_EQ(segments.size(), 2U) << cut;
    EXPECT_NEAR(static_cast<double>(segments[0].dest.end), static_cast<double>(cut), 1);
    EXPECT_EQ(segments[0].dest.end, segments[1].dest.first);
    EXPECT_NEAR(std::exp(segments[0].logExponent), 1.0, 0.005);
    EXPECT_NEAR(std::exp(segments[1].logExponent), 1.2, 0.005);
  }
}

TEST(Segments, AreThreeForOnePartInTheMiddle) {
  const auto segments = segmentsOf(measured(steps({{700, 1.0}, {48, 0.85}, {700, 1.0}})));
  ASSERT_EQ(segments.size(), 3U);
  EXPECT_NEAR(static_cast<double>(segments[1].dest.first), 700, 1);
  EXPECT_NEAR(static_cast<double>(segments[1].dest.end), 748, 1);
}

TEST(Segments, DoNotPartForLittleOrForAFewFrames) {
  EXPECT_EQ(segmentsOf(measured(steps({{700, 1.0}, {700, 1.02}}))).size(), 1U);
  EXPECT_EQ(segmentsOf(measured(steps({{700, 1.0}, {5, 1.3}, {700, 1.0}}))).size(), 1U);
}

TEST(Segments, LeaveOutFades) {
  Matches matches = measured(steps({{700, 1.0}, {48, 1.5}, {700, 1.0}}));
  for (std::size_t i = 700; i < 748; ++i) matches.frames[i].level = 0.05F * static_cast<float>(i - 699);
  for (std::size_t i = 748; i < 1448; ++i) matches.frames[i].level = 2.4F;
  EXPECT_EQ(segmentsOf(matches).size(), 1U);
}

TEST(Segments, AreNoneOfFramesWithoutAnExponent) {
  Matches matches;
  matches.frames.resize(500);
  EXPECT_TRUE(segmentsOf(matches).empty());
  EXPECT_TRUE(segmentsOf(Matches()).empty());
}

TEST(Partition, OfALongSeriesIsTheCheapest) {
  std::vector<ExponentBin> bins;
  for (std::size_t i = 0; i < 4000; ++i) {
    const double value = (i / 500) % 2 == 0 ? 0.0 : 0.1;
    bins.push_back({{i, i + 1}, value + 0.01 * (2 * movie::test::hash01(static_cast<int>(i), 0, 9) - 1), 0.008});
  }
  const std::vector<std::size_t> begins = partitionOf(bins, 80, 4);
  EXPECT_EQ(begins, (std::vector<std::size_t>{0, 500, 1000, 1500, 2000, 2500, 3000, 3500}));
}

}  // namespace
}  // namespace scan::test

#include <gtest/gtest.h>

#include "scan/align/LineFit.h"

namespace scan {
namespace {

constexpr double frame = 1.0 / 24;

BurstFit at(double destTime, double sourceTime) {
  return {.rate = 1,
          .destTime = destTime,
          .sourceTime = sourceTime,
          .low = sourceTime - frame / 2,
          .high = sourceTime + frame / 2,
          .cost = 1,
          .framePeriod = frame};
}

std::vector<BurstFit> on(const TimeLine& line, const std::vector<double>& times) {
  std::vector<BurstFit> fits;
  for (const double time : times) fits.push_back(at(time, line.at(time)));
  return fits;
}

const std::vector<double> equal = usualRates({7200, 300}, {7200, 300});
const std::vector<double> speedUp = usualRates({7200, 300}, {7200, 288});

TEST(LineFit, GoesThroughPlacesThatAgree) {
  const auto line = bestLine(on({1, 12.5}, {20, 100, 200}), equal);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->agreeing.size(), 3U);
  EXPECT_EQ(line->line.rate, 1);
  EXPECT_NEAR(line->line.offset, 12.5, 1e-6);
  EXPECT_NEAR(line->span, 180, 1e-6);
}

TEST(LineFit, LeavesOutWhatLiesElsewhere) {
  std::vector<BurstFit> fits = on({1, 0}, {20, 60, 100, 140});
  fits.push_back(at(80, 212));
  const auto line = bestLine(fits, equal);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->agreeing, (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(LineFit, FindsAnotherSpeedWhereTheRatesDiffer) {
  const auto line = bestLine(on({25.0 / 24, 3}, {20, 100, 200}), speedUp);
  ASSERT_TRUE(line);
  EXPECT_NEAR(line->line.rate, 25.0 / 24, 1e-9);
  EXPECT_NEAR(line->line.offset, 3, 0.02);
}

TEST(LineFit, FindsASpeedThatIsNotUsual) {
  const auto line = bestLine(on({1.1, 2}, {20, 100, 150, 200}), equal);
  ASSERT_TRUE(line);
  EXPECT_NEAR(line->line.rate, 1.1, 1e-6);
}

TEST(LineFit, TakesACutForACutNotForASpeed) {
  // Two places before it and two after: no speed explains more than two and the rest.
  std::vector<BurstFit> fits = on({1, 0}, {20, 60});
  for (const BurstFit& fit : on({1, 8}, {100, 140})) fits.push_back(fit);
  const auto line = bestLine(fits, equal);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->line.rate, 1);
  EXPECT_EQ(line->agreeing.size(), 2U);
}

TEST(LineFit, NeedsPlaces) {
  EXPECT_FALSE(bestLine({}, equal));
}

}  // namespace
}  // namespace scan

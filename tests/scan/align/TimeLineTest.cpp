#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "scan/align/TimeLine.h"

namespace scan {
namespace {

RowShape shapeOf(double rate, double seconds) {
  return {static_cast<std::size_t>(std::lround(rate * seconds)), seconds, 16.0 / 9};
}

bool suggests(const RowShape& source, const RowShape& dest, const TimeLine& wanted) {
  const std::vector<TimeLine> lines = suggestedLines(source, dest);
  return std::any_of(lines.begin(), lines.end(), [&](const TimeLine& line) {
    return std::abs(line.rate - wanted.rate) < 1e-6 && std::abs(line.offset - wanted.offset) < 1e-3;
  });
}

TEST(TimeLine, IsSuggestedForMoviesThatBeginTogether) {
  EXPECT_EQ(suggestedLines(shapeOf(24, 60), shapeOf(24, 60)).front(), (TimeLine{1, 0}));
  EXPECT_EQ(suggestedLines(shapeOf(24, 60), shapeOf(24, 60)).size(), 1U);
}

TEST(TimeLine, IsSuggestedForMoviesThatEndTogether) {
  EXPECT_TRUE(suggests(shapeOf(24, 60), shapeOf(24, 50), {1, 10}));
  EXPECT_TRUE(suggests(shapeOf(24, 60), shapeOf(24, 65), {1, -5}));
}

TEST(TimeLine, OfASpeedUpRunsByTheRatioOfTheRates) {
  EXPECT_TRUE(suggests(shapeOf(24, 60), shapeOf(25, 57.6), {25.0 / 24, 0}));
  EXPECT_TRUE(suggests(shapeOf(24, 60), shapeOf(23.976024, 60.06), {1 / 1.001, 0}));
}

TEST(TimeLine, RatesComeOnceEachAndTheFirstIsOne) {
  const std::vector<double> rates = usualRates(shapeOf(24, 60), shapeOf(25, 57.6));
  EXPECT_EQ(rates.front(), 1);
  for (std::size_t i = 0; i < rates.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) EXPECT_GT(std::abs(rates[i] / rates[j] - 1), 1e-6) << rates[i];
  }
  EXPECT_EQ(std::count_if(rates.begin(), rates.end(), [](double rate) { return std::abs(rate - 25.0 / 24) < 1e-9; }),
            1);
}

TEST(TimeLine, TakesAMeasuredRateForTheUsualOneNextToIt) {
  const std::vector<double> usual = usualRates(shapeOf(24, 60), shapeOf(24, 60));
  EXPECT_EQ(settledRate(1.00003, usual), 1);
  EXPECT_EQ(settledRate(1.0416, usual), 25.0 / 24);
  EXPECT_EQ(settledRate(1.2345, usual), 1.2345);
}

TEST(TimeLine, LeadsNowhereWithoutFrames) {
  EXPECT_FALSE(suggestedLines({}, {}).empty());
  for (const TimeLine& line : suggestedLines({}, {}))
    EXPECT_TRUE(std::isfinite(line.rate) && std::isfinite(line.offset));
}

}  // namespace
}  // namespace scan

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/plot/PlotScale.h"

namespace cli {
namespace {

using testing::Contains;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PlotScale, LaysValuesOnPaper) {
  const PlotAxis axis{.low = -1, .high = 1, .from = 100, .to = 0};
  EXPECT_EQ(axis.at(-1), 100);
  EXPECT_EQ(axis.at(0.5), 25);
  EXPECT_EQ((PlotAxis{.low = 3, .high = 3, .from = 0, .to = 10}).at(3), 5) << "a single frame";
}

TEST(PlotScale, LabelsExponentsOnBothSidesOfOne) {
  EXPECT_THAT(exponentTicks(std::log(0.88), std::log(1.23)),
              ElementsAre(DoubleNear(0.9, 1e-9), DoubleNear(0.95, 1e-9), 1, DoubleNear(1.05, 1e-9),
                          DoubleNear(1.1, 1e-9), DoubleNear(1.15, 1e-9), DoubleNear(1.2, 1e-9)));
}

TEST(PlotScale, LabelsOneWhateverTheReach) {
  for (const double reach : {0.05, 0.12, 0.3, 0.8, 1.7}) {
    const std::vector<double> ticks = exponentTicks(-reach, reach);
    EXPECT_THAT(ticks, Contains(1.0));
    EXPECT_GE(ticks.size(), 3U) << reach;
    EXPECT_LE(ticks.size(), 9U) << reach;
    for (const double tick : ticks) EXPECT_LE(std::abs(std::log(tick)), reach + 1e-9);
  }
}

TEST(PlotScale, LabelsRoundTimes) {
  EXPECT_THAT(timeTicks(0, 12, 8), ElementsAre(0, 2, 4, 6, 8, 10, 12));
  EXPECT_THAT(timeTicks(33, 90, 8), ElementsAre(40, 50, 60, 70, 80, 90));
  EXPECT_THAT(timeTicks(0, 7200, 8), ElementsAre(0, 900, 1800, 2700, 3600, 4500, 5400, 6300));
  EXPECT_THAT(timeTicks(0, 0.04, 8), IsEmpty());
}

}  // namespace
}  // namespace cli

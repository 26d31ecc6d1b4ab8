#include <cmath>

#include <gtest/gtest.h>

#include "cli/plot/PlotColumns.h"
#include "tests/scan/PaintedRow.h"

namespace cli {
namespace {

using scan::test::PaintedRow;

scan::FrameMatch measuredFrame(double logExponent, double spread = 0.01) {
  scan::FrameMatch match;
  match.source = 0;
  match.logExponent = static_cast<float>(logExponent);
  match.spread = static_cast<float>(spread);
  return match;
}

PaintedRow rowOf(std::size_t frames) {
  return {std::vector<scan::test::Shown>(frames), 24};
}

TEST(PlotColumns, KeepsEveryFrameWhereThereIsRoom) {
  const scan::Matches matches{0, {measuredFrame(0.1), measuredFrame(0.2), measuredFrame(0.3)}};
  const std::vector<PlotRun> runs = plotRuns(matches, rowOf(3), 1000);
  ASSERT_EQ(runs.size(), 1U);
  ASSERT_EQ(runs[0].size(), 3U);
  EXPECT_NEAR(runs[0][1].middle, 0.2, 1e-6);
  EXPECT_NEAR(runs[0][1].low, 0.19, 1e-6);
  EXPECT_NEAR(runs[0][1].high, 0.21, 1e-6);
  EXPECT_NEAR(runs[0][1].time, 1.5 / 24.0, 1e-9);
}

TEST(PlotColumns, GathersManyFramesInFewColumns) {
  scan::Matches matches;
  for (int i = 0; i < 172800; ++i) matches.frames.push_back(measuredFrame(i % 2 == 0 ? 0.1 : 0.2, 0));
  const std::vector<PlotRun> runs = plotRuns(matches, rowOf(172800), 1000);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs[0].size(), 1000U);
  EXPECT_NEAR(runs[0][500].low, 0.1, 1e-6);
  EXPECT_NEAR(runs[0][500].high, 0.2, 1e-6);
}

TEST(PlotColumns, BreaksWhereNothingWasMeasured) {
  scan::Matches matches{10, {measuredFrame(0.1), {}, measuredFrame(0.1), measuredFrame(0.1), {}}};
  const std::vector<PlotRun> runs = plotRuns(matches, rowOf(20), 1000);
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[0].size(), 1U);
  EXPECT_EQ(runs[1].size(), 2U);
  EXPECT_NEAR(runs[0][0].time, 10.5 / 24.0, 1e-9);
}

TEST(PlotColumns, AreNoneOfNoFrames) {
  EXPECT_TRUE(plotRuns({}, rowOf(0), 1000).empty());
}

}  // namespace
}  // namespace cli

// What a scan tells of rows of many kinds. Its threads do the same in all of them: ScanTest has what they do otherwise.

#include <cmath>

#include <gtest/gtest.h>

#include "tests/scan/PaintedScan.h"

namespace scan::test {
namespace {

using Result = Beginning::Result;
using diagnosis::CauseKind;

/// Share of frames of a shot whose camera stands still that are matched to the right one, give or take one.
double rightOfStanding(const ScanResult& result, const std::vector<Shown>& dest) {
  std::size_t right = 0;
  for (std::size_t i = 0; i < dest.size(); ++i) {
    if (std::abs(result.matches.at(i).source - dest[i].other * 24) <= 1.01) ++right;
  }
  return static_cast<double>(right) / static_cast<double>(dest.size());
}

TEST(ScanOfRows, CountsIdenticalFrames) {
  const ScanResult result = scannedMovies(master(0, 30), master(0, 30));
  EXPECT_EQ(result.correspondence, Result::Found);
  EXPECT_EQ(result.identicalFrames, 720U);
  EXPECT_EQ(result.finding.main().kind, CauseKind::Identical);
  EXPECT_EQ(result.map.pieces.size(), 1U);
  EXPECT_TRUE(result.map.unmatched.empty());
}

TEST(ScanOfRows, TellsIdenticalFramesInWhichNothingCanBeMeasured) {
  std::vector<Shown> black = master(0, 10);
  for (Shown& frame : black) frame.black = true;
  const ScanResult result = scannedMovies(black, black);
  EXPECT_EQ(result.identicalFrames, 240U);
  EXPECT_TRUE(result.segments.empty());
  EXPECT_EQ(result.finding.main().kind, CauseKind::Identical);
  std::vector<Shown> other = black;
  for (Shown& frame : other) frame.coded = true, frame.noise = 1e-4;
  EXPECT_EQ(scannedMovies(black, other).finding.main().kind, CauseKind::Dark);
}

TEST(ScanOfRows, CallsAnUnchangedExportTheSame) {
  const ScanResult result = scannedMovies(master(0, 30), exported(master(0, 30)));
  EXPECT_EQ(result.identicalFrames, 0U);
  ASSERT_EQ(result.segments.size(), 1U);
  EXPECT_EQ(result.segments[0].causes.front().kind, CauseKind::Same);
  EXPECT_EQ(result.finding.main().kind, CauseKind::Same);
}

TEST(ScanOfRows, FindsWhereAnExponentBegins) {
  const std::vector<Shown> dest = joined(exported(master(0, 17)), exported(master(17, 40), 1.2));
  const ScanResult result = scannedMovies(master(0, 40), dest);
  ASSERT_EQ(result.segments.size(), 2U);
  EXPECT_NEAR(static_cast<double>(result.segments[1].dest.first), 17 * 24, 2);
  EXPECT_NEAR(*result.segments[0].exponent, 1, 0.01);
  EXPECT_NEAR(*result.segments[1].exponent, 1.2, 0.01);
  EXPECT_EQ(result.segments[1].causes.front().kind, CauseKind::Power);
  EXPECT_EQ(result.finding.main().kind, CauseKind::Power);
}

TEST(ScanOfRows, FollowsACutOfTheSource) {
  const std::vector<Shown> dest = exported(joined(master(0, 15), master(24, 50)));
  const ScanResult result = scannedMovies(master(0, 50), dest);
  EXPECT_GT(rightShare(result, dest), 0.98);
  ASSERT_EQ(result.map.pieces.size(), 2U);
  ASSERT_EQ(result.map.dropped.size(), 1U);
  EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.first), 15 * 24, 1);
  EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.end), 24 * 24, 1);
}

TEST(ScanOfRows, FollowsACutWhereTheCameraStandsStill) {
  for (const double cut : {2.0, 5.0}) {
    const std::vector<Shown> dest = exported(joined(standing(0, 10), standing(10 + cut, 30)));
    const ScanResult result = scannedMovies(standing(0, 30), dest);
    ASSERT_EQ(result.map.dropped.size(), 1U) << cut;
    EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.first), 240, 2);
    EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.count()), 24 * cut, 1);
    EXPECT_GT(rightOfStanding(result, dest), 0.99) << cut;
  }
}

TEST(ScanOfRows, FollowsACutWhereTheCameraStandsStillInADarkerExport) {
  for (const double exponent : {0.7, 1.4}) {
    const std::vector<Shown> dest = exported(joined(standing(0, 10), standing(13, 30)), exponent);
    const ScanResult result = scannedMovies(standing(0, 30), dest);
    ASSERT_EQ(result.map.dropped.size(), 1U) << exponent;
    EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.first), 240, 2) << exponent;
    EXPECT_NEAR(static_cast<double>(result.map.dropped[0].source.count()), 72, 1) << exponent;
    EXPECT_GT(rightOfStanding(result, dest), 0.99) << exponent;
  }
}

TEST(ScanOfRows, StaysWhereOfAShotWhoseCameraStandsStillNothingFitsClearlyBetter) {
  const std::vector<Shown> dest = exported(joined(standing(0, 10), standing(200, 204)));
  const ScanResult result = scannedMovies(standing(0, 30), dest);
  for (std::size_t i = 0; i < dest.size(); ++i) {
    EXPECT_NEAR(result.matches.at(i).source, static_cast<double>(i), 17) << "what lies next to it looks alike";
  }
}

TEST(ScanOfRows, FollowsFramesThatAreDropped) {
  const std::vector<Shown> dest = exported(joined(master(0, 15), master(15 + 26.0 / 24, 40)));
  const ScanResult result = scannedMovies(master(0, 40), dest);
  EXPECT_GT(rightShare(result, dest), 0.98);
  ASSERT_EQ(result.map.dropped.size(), 1U);
  EXPECT_EQ(result.map.dropped[0].source.count(), 26U);
}

TEST(ScanOfRows, TellsBlackFramesAsUnmeasured) {
  std::vector<Shown> dest = exported(master(0, 30)), source = master(0, 30);
  for (std::size_t i = 300; i < 360; ++i) source[i].black = dest[i].black = true;
  const ScanResult result = scannedMovies(source, dest);
  ASSERT_EQ(result.unmeasured.size(), 1U);
  EXPECT_EQ(result.unmeasured[0].why, Unmeasured::Dark);
  EXPECT_NEAR(static_cast<double>(result.unmeasured[0].dest.first), 300, 1);
}

}  // namespace
}  // namespace scan::test

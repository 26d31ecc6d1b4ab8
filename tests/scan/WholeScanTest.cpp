#include <cmath>
#include <optional>

#include <gtest/gtest.h>

#include "tests/scan/PaintedScan.h"

namespace scan::test {
namespace {

using Result = Beginning::Result;
using diagnosis::CauseKind;

/// A shot that moves so slowly that one frame is nearly as the next.
std::vector<Shown> slowShot(double from, std::size_t frames) {
  std::vector<Shown> shot;
  for (std::size_t i = 0; i < frames; ++i) shot.push_back({.content = from + 0.25 * static_cast<double>(i) / 24});
  return shot;
}

TEST(WholeScan, TellsAPictureOfASlowShotThatIsHeld) {
  const std::vector<Shown> source = slowShot(0.2, 300);
  std::vector<Shown> dest(source.begin(), source.begin() + 120);
  dest.insert(dest.end(), 48, source[119]);
  dest.insert(dest.end(), source.begin() + 120, source.end());
  const ScanResult result = scannedMovies(source, dest);
  ASSERT_EQ(result.map.pieces.size(), 3U);
  EXPECT_EQ(result.map.pieces[1].line.rate, 0);
  EXPECT_NEAR(static_cast<double>(result.map.pieces[1].dest.first), 120, 3);
  EXPECT_NEAR(static_cast<double>(result.map.pieces[1].dest.end), 168, 3);
  EXPECT_EQ(result.map.pieces[2].line.rate, 1);
  EXPECT_NEAR(result.map.pieces[2].line.offset, -2, 1.01 / 24);
  EXPECT_TRUE(result.map.unmatched.empty());
}

TEST(WholeScan, TellsALeaderAndWhatWasSetIn) {
  const std::vector<Shown> dest =
      exported(joined(joined(master(1000, 1005), master(0, 20)), joined(master(2000, 2004), master(20, 40))));
  const ScanResult result = scannedMovies(master(0, 40), dest);
  ASSERT_EQ(result.map.unmatched.size(), 2U);
  EXPECT_NEAR(static_cast<double>(result.map.unmatched[0].end), 5 * 24, 2);
  EXPECT_NEAR(static_cast<double>(result.map.unmatched[1].first), 25 * 24, 2);
  EXPECT_NEAR(static_cast<double>(result.map.unmatched[1].end), 29 * 24, 2);
}

TEST(WholeScan, FollowsASpeedUp) {
  const std::vector<Shown> dest = exported(master(0, 60), 1.1);
  const ScanResult result = scannedMovies(master(0, 60), dest, 25);
  EXPECT_GT(rightShare(result, dest), 0.98);
  ASSERT_EQ(result.map.pieces.size(), 1U);
  EXPECT_EQ(result.map.pieces[0].pattern, Pattern::Retimed);
  EXPECT_NEAR(result.map.pieces[0].line.rate, 25.0 / 24, 1e-9);
}

TEST(WholeScan, FollowsAnotherFrameRate) {
  std::vector<Shown> dest;
  for (int i = 0; i < 900; ++i) dest.push_back({.content = std::floor(i * 0.8 + 1e-9) / 24, .coded = true});
  const ScanResult result = scannedMovies(master(0, 30), dest, 30);
  EXPECT_GT(rightShare(result, dest), 0.98);
  ASSERT_EQ(result.map.pieces.size(), 1U);
  EXPECT_EQ(result.map.pieces[0].pattern, Pattern::Duplicated);
}

TEST(WholeScan, TellsASlowerSpeedExactly) {
  std::vector<Shown> dest;
  for (int i = 0; i < 900; ++i) dest.push_back({.content = std::floor(i * 0.8 + 1e-9) / 24, .coded = true});
  const ScanResult result = scannedMovies(master(0, 30), dest);
  ASSERT_EQ(result.map.pieces.size(), 1U);
  EXPECT_NEAR(result.map.pieces[0].line.rate, 0.8, 1e-6);
  EXPECT_NEAR(result.map.pieces[0].line.offset, 0, 1.0 / 24);
}

/// One picture for so many frames.
std::vector<Shown> held(double content, std::size_t frames) {
  return std::vector<Shown>(frames, Shown{.content = content});
}

/// Eight pictures of five seconds, none of which moves.
std::vector<Shown> slideShow() {
  std::vector<Shown> frames;
  for (int slide = 0; slide < 8; ++slide) frames = joined(std::move(frames), held(10 * slide, 120));
  return frames;
}

TEST(WholeScan, FollowsASlideShow) {
  const std::vector<Shown> all = slideShow(), part(all.begin() + 70, all.begin() + 850);
  const ScanResult result = scannedMovies(all, exported(part, 1.2));
  EXPECT_EQ(result.correspondence, Result::Found);
  ASSERT_EQ(result.map.pieces.size(), 1U);
  EXPECT_NEAR(result.map.pieces[0].line.offset, 70.0 / 24, 0.05);
  EXPECT_TRUE(result.map.unmatched.empty());
  ASSERT_EQ(result.segments.size(), 1U);
  EXPECT_NEAR(*result.segments[0].exponent, 1.2, 0.01);
}

TEST(WholeScan, MeasuresAPictureThatIsHeldLongerThanInItsSource) {
  const ScanResult result = scannedMovies(slideShow(), exported(held(20, 600), 1.2));
  EXPECT_EQ(result.correspondence, Result::Still);
  EXPECT_TRUE(result.map.unmatched.empty());
  ASSERT_EQ(result.segments.size(), 1U);
  EXPECT_NEAR(*result.segments[0].exponent, 1.2, 0.01);
}

TEST(WholeScan, FollowsAShotThatIsRepeated) {
  const std::vector<Shown> repeating = joined(master(0, 18), joined(master(4, 8), master(18, 30)));
  const ScanResult once = scannedMovies(repeating, exported(master(0, 30)));
  EXPECT_GT(rightShare(once, joined(master(0, 18), master(22, 34))), 0.98);
  const ScanResult twice = scannedMovies(master(0, 30), exported(repeating));
  EXPECT_GT(rightShare(twice, repeating), 0.98);
  EXPECT_TRUE(twice.map.dropped.empty());
  EXPECT_TRUE(twice.map.unmatched.empty());
}

TEST(WholeScan, GivesNoNumberWhereOnlyASlateIsTheSame) {
  const std::vector<Shown> slate = held(2, 96);
  const ScanResult result =
      scannedMovies(joined(slate, master(100, 124)), exported(joined(slate, master(500, 524)), 1.2));
  EXPECT_EQ(result.correspondence, Result::NotFound);
  EXPECT_EQ(result.finding.main().kind, CauseKind::Different);
  EXPECT_TRUE(result.segments.empty());
  EXPECT_FALSE(result.worst);
  for (const FrameMatch& match : result.matches.frames) EXPECT_FALSE(match.isMeasured());
}

TEST(WholeScan, KeepsAShortPartThatWasFoundInManyPlaces) {
  const std::vector<Shown> dest = exported(joined(master(500, 525), master(10, 30)));
  const ScanResult result = scannedMovies(master(0, 40), dest);
  EXPECT_EQ(result.correspondence, Result::Found);
  EXPECT_GT(rightShare(result, dest), 0.43);
  EXPECT_FALSE(result.segments.empty());
}

TEST(WholeScan, TellsBlackMoviesWithoutANumber) {
  const std::vector<Shown> black(480, Shown{.black = true});
  const ScanResult same = scannedMovies(black, exported(black));
  EXPECT_EQ(same.finding.main().kind, CauseKind::Dark);
  EXPECT_TRUE(same.segments.empty());
  EXPECT_EQ(scannedMovies(black, master(0, 20)).correspondence, Result::NotFound);
  EXPECT_EQ(scannedMovies(master(0, 20), black).correspondence, Result::NotFound);
}

TEST(WholeScan, ComparesASingleFrame) {
  const ScanResult identical = scannedMovies(master(0, 1.0 / 24), master(0, 1.0 / 24));
  EXPECT_EQ(identical.finding.main().kind, CauseKind::Identical);
  EXPECT_EQ(identical.map.pieces.front().pattern, Pattern::FrameForFrame);
  const ScanResult raised = scannedMovies(master(0, 20), exported(master(12, 12 + 1.0 / 24), 1.2));
  ASSERT_EQ(raised.segments.size(), 1U);
  EXPECT_NEAR(*raised.segments[0].exponent, 1.2, 0.01);
  EXPECT_EQ(scannedMovies(master(0, 1.0 / 24), master(500, 500 + 1.0 / 24)).correspondence, Result::NotFound);
}

TEST(WholeScan, RefusesAMovieOfWhichTheSourceHasAFewFrames) {
  const ScanResult result = scannedMovies(master(10, 10.5), exported(master(0, 60)));
  EXPECT_EQ(result.correspondence, Result::NotFound);
  EXPECT_TRUE(result.segments.empty());
}

TEST(WholeScan, ComparesEveryNthFrameWhenAsked) {
  const std::vector<Shown> dest = joined(exported(master(0, 24)), exported(master(24 + 26.0 / 24, 60), 1.2));
  for (const std::size_t every : {3U, 12U, 24U}) {
    SCOPED_TRACE(every);
    PaintedRow source(master(0, 60), 24), destRow(dest, 24);
    const ScanResult result = scannedRows(source, destRow, {.from = 2, .every = every});
    EXPECT_EQ(result.matches.frames.size(), (dest.size() - 48 + every - 1) / every);
    EXPECT_EQ(result.scanned, (FrameRange{48, dest.size()}));
    for (std::size_t i = 0; i < result.matches.frames.size(); ++i) {
      const double wanted = dest[result.matches.frameOf(i)].content * 24;
      EXPECT_NEAR(result.matches.frames[i].source, wanted, 1.01) << i;
    }
    ASSERT_EQ(result.map.pieces.size(), 2U);
    EXPECT_EQ(result.map.pieces[0].pattern, Pattern::FrameForFrame);
    EXPECT_NEAR(static_cast<double>(result.map.pieces[1].dest.first), 24 * 24, static_cast<double>(every));
    ASSERT_EQ(result.map.dropped.size(), 1U);
    EXPECT_EQ(result.map.dropped[0].source.count(), 26U);
    ASSERT_EQ(result.segments.size(), 2U);
    EXPECT_NEAR(static_cast<double>(result.segments[1].dest.first), 24 * 24, static_cast<double>(every) + 2);
    EXPECT_NEAR(*result.segments[0].exponent, 1, 0.01);
    EXPECT_NEAR(*result.segments[1].exponent, 1.2, 0.01);
    ASSERT_TRUE(result.worst);
    EXPECT_GE(result.worst->frame, 24U * 24);
    EXPECT_EQ((result.worst->frame - 48) % every, 0U);
  }
}

TEST(WholeScan, FollowsAPlainCopyOfWhichItComparesSomeFrames) {
  for (const std::size_t every : {5U, 10U, 50U}) {
    PaintedRow source(master(0, 16), 24), dest(exported(master(0, 16)), 24);
    const ScanResult result = scannedRows(source, dest, {.every = every});
    ASSERT_EQ(result.map.pieces.size(), 1U) << every;
    EXPECT_EQ(result.map.pieces[0].pattern, Pattern::FrameForFrame) << every;
  }
}

TEST(WholeScan, TakesFramesThatWereDroppedForNoSpeed) {
  std::vector<Shown> frames = master(0, 16);
  for (const int dropped : {300, 240, 180, 120, 60}) frames.erase(frames.begin() + dropped);
  for (const std::size_t every : {1U, 2U}) {
    PaintedRow source(master(0, 16), 24), dest(exported(frames), 24);
    const ScanResult result = scannedRows(source, dest, {.every = every});
    ASSERT_FALSE(result.map.pieces.empty());
    for (const MapPiece& piece : result.map.pieces) {
      EXPECT_EQ(piece.line.rate, 1) << every;
      EXPECT_EQ(piece.pattern, Pattern::FrameForFrame) << every;
    }
  }
}

TEST(WholeScan, KeepsToTheRateOfAMovieOfWhichItComparesSomeFrames) {
  PaintedRow source(master(0, 60), 24), dest(exported(master(0, 60)), 25);
  const ScanResult result = scannedRows(source, dest, {.every = 10});
  ASSERT_EQ(result.map.pieces.size(), 1U);
  EXPECT_EQ(result.map.pieces[0].pattern, Pattern::Retimed);
  EXPECT_EQ(result.map.pieces[0].dest.first, 0U);
  EXPECT_EQ(result.map.pieces[0].dest.end, dest.shape().frames);
  EXPECT_TRUE(result.map.unmatched.empty());
}

TEST(WholeScan, FindsAPlaceAgainOfWhichItComparesSomeFrames) {
  const std::vector<Shown> dest = exported(joined(master(0, 40), master(80, 140)));
  PaintedRow source(master(0, 140), 24), destRow(dest, 24);
  const ScanResult result = scannedRows(source, destRow, {.every = 8});
  ASSERT_EQ(result.map.pieces.size(), 2U);
  EXPECT_NEAR(static_cast<double>(result.map.pieces[1].dest.first), 40 * 24, 8);
  EXPECT_TRUE(result.map.unmatched.empty());
}

}  // namespace
}  // namespace scan::test

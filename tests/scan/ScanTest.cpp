#include <optional>

#include <gtest/gtest.h>

#include "tests/scan/PaintedScan.h"

namespace scan::test {
namespace {

using Result = Beginning::Result;
using diagnosis::CauseKind;

TEST(Scan, RefusesOtherMovies) {
  const ScanResult result = scannedMovies(master(0, 30), exported(master(300, 330)));
  EXPECT_EQ(result.correspondence, Result::NotFound);
  EXPECT_EQ(result.finding.main().kind, CauseKind::Different);
  EXPECT_TRUE(result.segments.empty());
}

TEST(Scan, KeepsWhatItHasWhenASideCannotBeReadOn) {
  for (const bool isSource : {true, false}) {
    PaintedRow source(master(0, 40), 24), dest(exported(master(0, 40), 1.2), 24);
    (isSource ? source : dest).breakAt(500);
    const ScanResult result = scannedRows(source, dest);
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->side == ReadFailure::Side::Source, isSource);
    EXPECT_EQ(result.failure->frame, 500U);
    EXPECT_GE(result.scanned.end, 490U);
    EXPECT_LE(result.scanned.end, 501U);
    ASSERT_EQ(result.segments.size(), 1U);
    EXPECT_NEAR(*result.segments[0].exponent, 1.2, 0.01);
  }
}

TEST(Scan, StopsWhenAskedAndKeepsWhatItHas) {
  PaintedRow source(master(0, 40), 24), dest(exported(master(0, 40), 1.2), 24);
  const ScanResult result =
      scannedRows(source, dest, {}, [](const ScanProgress& progress) { return progress.done > 300; });
  EXPECT_TRUE(result.stopped);
  EXPECT_GT(result.scanned.end, 300U);
  EXPECT_LT(result.scanned.end, 700U);
  EXPECT_EQ(result.segments.size(), 1U);
}

TEST(Scan, ShowsWhatItHasWhileItGoesOn) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(0, 20), 1.2), 24);
  std::size_t seen = 0;
  scannedRows(source, dest, {}, [&](const ScanProgress& progress) {
    const bool isComparing = progress.stage == ScanProgress::Stage::Comparing;
    EXPECT_EQ(progress.matches != nullptr, isComparing);
    if (progress.matches != nullptr) {
      EXPECT_EQ(progress.matches->frames.size(), progress.done);
      seen = progress.matches->frames.size();
    }
    return false;
  });
  EXPECT_EQ(seen, 480U);
}

TEST(Scan, CanBeStoppedWhileAPlaceIsLookedFor) {
  // Of which the second half is nowhere in the source.
  PaintedRow source(master(0, 100), 24), dest(exported(joined(master(0, 20), master(300, 320))), 24);
  std::optional<std::size_t> before;
  const ScanResult result = scannedRows(source, dest, {}, [&](const ScanProgress& progress) {
    if (progress.matches == nullptr) return false;
    const bool isSearching = before == progress.done;
    before = progress.done;
    return isSearching;
  });
  EXPECT_TRUE(result.stopped) << "it asks between frames alone";
  EXPECT_LT(result.scanned.end, 600U);
}

TEST(Scan, KeepsToTheTimesThatItIsGiven) {
  PaintedRow source(master(0, 40), 24), dest(exported(master(0, 40)), 24);
  const ScanResult result = scannedRows(source, dest, {.from = 10, .to = 20});
  EXPECT_EQ(result.scanned, (FrameRange{240, 480}));
}

}  // namespace
}  // namespace scan::test

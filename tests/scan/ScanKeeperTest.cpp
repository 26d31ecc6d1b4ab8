#include "tests/scan/MemoryKeeper.h"

namespace scan::test {
namespace {

TEST(ScanKeeper, HearsNothingOfAScanThatIsRefused) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(500, 520)), 24);
  MemoryKeeper keeper;
  EXPECT_EQ(scanned(source, dest, {}, {}, {}, &keeper).correspondence, Beginning::Result::NotFound);
  EXPECT_TRUE(keeper.states.empty());
}

TEST(ScanKeeper, KeepsNothingThatAnInterruptDecided) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(0, 20), 1.2), 24);
  const ScanResult whole = scannedRows(source, dest);
  for (const std::size_t end : {100U, 300U}) {
    SCOPED_TRACE(end);
    MemoryKeeper keeper;
    const ScanResult part = scanned(
        source, dest, {}, {}, [&](const ScanProgress& progress) { return progress.done >= end; }, &keeper);
    EXPECT_TRUE(part.stopped);
    EXPECT_LT(keeper.states.back().frames.size(), part.matches.frames.size());
    MemoryKeeper again(keeper.states.back());
    std::size_t known = 0;
    const ScanResult rest = scanned(
        source, dest, {}, {},
        [&](const ScanProgress& progress) {
          known = progress.known;
          return false;
        },
        &again);
    EXPECT_EQ(known, keeper.states.back().frames.size());
    expectSame(rest, whole);
  }
}

TEST(ScanKeeper, KeepsNoEndOfWhatCouldNotBeReadOn) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(0, 20), 1.2), 24), broken = dest;
  broken.breakAt(300);
  MemoryKeeper keeper;
  EXPECT_TRUE(scanned(source, broken, {}, {}, {}, &keeper).failure);
  ASSERT_FALSE(keeper.states.empty());
  MemoryKeeper again(keeper.states.back());
  expectSame(scanned(source, dest, {}, {}, {}, &again), scannedRows(source, dest));
}

TEST(ScanKeeper, IsNotToldThatAllIsFinalWhereItCannotBeGoneOnWith) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(0, 20), 1.2), 24), broken = dest;
  MemoryKeeper keeper;
  scanned(source, dest, {}, {}, {}, &keeper);
  const SavedScan& saved = keeper.states[keeper.states.size() / 2];
  broken.breakAt(saved.frames.size() - 1);
  MemoryKeeper again(saved);
  const ScanResult result = scanned(source, broken, {}, {}, {}, &again);
  ASSERT_TRUE(result.failure);
  EXPECT_EQ(result.failure->side, ReadFailure::Side::Dest);
  EXPECT_EQ(result.failure->frame, saved.frames.size() - 1);
  EXPECT_EQ(result.matches.frames.size(), saved.frames.size()) << "what is known stays";
  EXPECT_TRUE(again.states.empty());
}

/// Colours of some frames are not kept, and read again.
TEST(ScanKeeper, TellsWhatCannotBeReadAgain) {
  PaintedRow source(master(0, 20), 24), dest(exported(master(0, 20), 1.2), 24), broken = source;
  MemoryKeeper keeper;
  scanned(source, dest, {}, {}, {}, &keeper);
  const SavedScan& saved = keeper.states[keeper.states.size() / 2];
  ASSERT_GT(saved.frames.size(), 150U);
  broken.breakAt(100);
  MemoryKeeper again(saved);
  const ScanResult result = scanned(broken, dest, {}, {}, {}, &again);
  ASSERT_TRUE(result.failure);
  EXPECT_EQ(result.failure->side, ReadFailure::Side::Source);
  EXPECT_NEAR(static_cast<double>(result.failure->frame), 100, 2);
  EXPECT_EQ(result.matches.frames.size(), saved.frames.size()) << "what is known stays";
}

}  // namespace
}  // namespace scan::test

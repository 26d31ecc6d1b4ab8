#include <gtest/gtest.h>

#include "scan/align/Counterpart.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

Counterpart found(const std::vector<Shown>& source, const std::vector<Shown>& dest, std::size_t frame,
                  const Laid& laid = {}, double destRate = 24) {
  PaintedRow sourceRow(source, 24), destRow(dest, destRate, laid);
  return scan::counterpartOf(sourceRow, destRow, frame, {});
}

void expectFrame(const Counterpart& counterpart, std::size_t wanted) {
  ASSERT_EQ(counterpart.result, Counterpart::Result::Found);
  EXPECT_NEAR(static_cast<double>(counterpart.frame), static_cast<double>(wanted), 1);
}

TEST(Counterpart, IsFoundBeforeAndBehindTheSameTime) {
  const auto source = master(0, 60);
  for (const int seconds : {-9, -1, 4}) {
    const auto dest = exported(master(20 + seconds, 45 + seconds));  // begins 20 s late, so that both ways have room
    const auto shifted = joined(master(500, 520), dest);
    SCOPED_TRACE(seconds);
    expectFrame(found(source, shifted, 30 * 24), static_cast<std::size_t>(24 * (30 + seconds)));
  }
}

TEST(Counterpart, IsNotLookedForFarAway) {
  const auto source = master(0, 60);
  EXPECT_EQ(found(source, exported(master(14, 60)), 24).result, Counterpart::Result::NotFound);
  EXPECT_EQ(found(source, joined(master(500, 590), master(0, 20)), 95 * 24).result, Counterpart::Result::NotFound);
}

TEST(Counterpart, IsFoundNearTheEnds) {
  const auto source = master(0, 30);
  expectFrame(found(source, exported(master(2, 30)), 0), 2 * 24);
  expectFrame(found(source, exported(master(2, 30)), 28 * 24 - 1), 30 * 24 - 1);
}

TEST(Counterpart, IsFoundInAnotherSpeedAndWithinBars) {
  const auto source = master(0, 60);
  expectFrame(found(source, exported(master(5, 60)), 25 * 10, {}, 25), 24 * 5 + 250);
  expectFrame(found(source, exported(master(5, 60)), 24 * 10, {.part = {}, .box = {0, 0.125, 1, 0.875}}), 24 * 15);
}

TEST(Counterpart, IsNoneOfAnotherMovie) {
  EXPECT_EQ(found(master(0, 40), exported(master(500, 540)), 24 * 20).result, Counterpart::Result::NotFound);
  EXPECT_EQ(found(master(0, 40), std::vector<Shown>(900, Shown{.black = true}), 24 * 20).result,
            Counterpart::Result::NotFound);
}

TEST(Counterpart, MayBeAnyWhereNothingMoves) {
  const std::vector<Shown> still(900, Shown{.content = 2});
  EXPECT_EQ(found(still, exported(still), 24 * 20).result, Counterpart::Result::Still);
}

}  // namespace
}  // namespace scan::test

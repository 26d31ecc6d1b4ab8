#include <gtest/gtest.h>

#include "scan/align/Start.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

using Result = Beginning::Result;

Beginning beginningOf(const std::vector<Shown>& source, const std::vector<Shown>& dest, double destRate = 24,
                      const Laid& laid = {}) {
  PaintedRow sourceRow(source, 24), destRow(dest, destRate, laid);
  return scan::beginningOf(sourceRow, destRow, {.range = {0, dest.size()}}, {});
}

void expectLine(const Beginning& found, const TimeLine& wanted) {
  ASSERT_EQ(found.result, Result::Found);
  EXPECT_NEAR(found.lines.front().rate, wanted.rate, 1e-4);
  EXPECT_NEAR(found.lines.front().offset, wanted.offset, 1.0 / 24);
}

TEST(Start, TakesWhatBeginsTogetherWithoutLookingFurther) {
  const Beginning found = beginningOf(master(0, 60), exported(master(0, 60)));
  expectLine(found, {1, 0});
  EXPECT_FALSE(found.isProbed);
  EXPECT_TRUE(found.placement.isPlain());
}

TEST(Start, TakesWhatBeganTogetherFarFromTheBeginning) {
  const std::vector<Shown> shown = master(0, 400);
  const auto fromLateOn = [&](double destRate) {
    PaintedRow source(shown, 24), dest(exported(shown), destRate);
    return scan::beginningOf(source, dest, {.range = {300 * 24, shown.size()}}, {});
  };
  const Beginning same = fromLateOn(24), faster = fromLateOn(25);
  expectLine(same, {1, 0});
  expectLine(faster, {25.0 / 24, 0});
  EXPECT_FALSE(same.isProbed);
  EXPECT_FALSE(faster.isProbed);
}

/// So much slower that a frame is hardly unlike the next ones.
std::vector<Shown> slowed(std::vector<Shown> frames) {
  for (Shown& frame : frames) frame.content *= 0.15;
  return frames;
}

TEST(Start, TakesTheFirstSecondsAtAnotherFrameRateForNoOtherSpeed) {
  expectLine(beginningOf(slowed(master(0, 60)), exported(slowed(master(0, 6, 25))), 25), {1, 0});
  expectLine(beginningOf(slowed(master(0, 60)), exported(slowed(master(0, 6))), 25), {25.0 / 24, 0});
}

TEST(Start, FindsAnExcerpt) {
  const Beginning found = beginningOf(master(0, 60), exported(master(21, 47)));
  expectLine(found, {1, 21});
  EXPECT_TRUE(found.isProbed);
}

TEST(Start, FindsWhatComesAfterALeader) {
  expectLine(beginningOf(master(0, 60), exported(joined(master(1000, 1007), master(0, 60)))), {1, -7});
}

TEST(Start, FindsASpeedUp) {
  expectLine(beginningOf(master(0, 60), exported(master(0, 60)), 25), {25.0 / 24, 0});
  expectLine(beginningOf(master(0, 60), exported(master(20, 60)), 25), {25.0 / 24, 20});
}

TEST(Start, FindsAPictureWithinBars) {
  const Beginning found =
      beginningOf(master(0, 60), exported(master(10, 50)), 24, {.part = {}, .box = {0, 0.125, 1, 0.875}});
  expectLine(found, {1, 10});
  EXPECT_NEAR(found.placement.dest.top, 0.125, 0.03);
}

TEST(Start, FindsACropThatLiesAnywhere) {
  const diagnosis::Region part{0.2, 0.05, 0.9, 0.75};
  const Beginning found = beginningOf(master(0, 60), exported(master(10, 50)), 24, {.part = part});
  expectLine(found, {1, 10});
  EXPECT_NEAR(found.placement.source.left, part.left, 0.004);
  EXPECT_NEAR(found.placement.source.bottom, part.bottom, 0.004);
}

TEST(Start, SeesThroughAStrongExponent) {
  expectLine(beginningOf(master(0, 60), exported(master(10, 50), 2.0)), {1, 10});
}

TEST(Start, RefusesOtherMoviesAndMirroredOnes) {
  EXPECT_EQ(beginningOf(master(0, 40), exported(master(500, 540))).result, Result::NotFound);
  EXPECT_EQ(beginningOf(master(0, 40), exported(master(0, 40)), 24, {.mirrored = true}).result, Result::NotFound);
  EXPECT_EQ(beginningOf(master(0, 40), std::vector<Shown>(900, Shown{.black = true})).result, Result::NotFound);
}

TEST(Start, KnowsAPictureThatNeverMoves) {
  EXPECT_EQ(
      beginningOf(std::vector<Shown>(900, Shown{.content = 2}), exported(std::vector<Shown>(700, Shown{.content = 2})))
          .result,
      Result::Still);
}

TEST(Start, FindsTenFramesInALongMovie) {
  expectLine(beginningOf(master(0, 120), exported(master(61, 61.5))), {1, 61});
}

}  // namespace
}  // namespace scan::test

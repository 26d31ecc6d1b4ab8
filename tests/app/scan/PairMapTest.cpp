// Which frame of the one movie shows which of the other.

#include <gtest/gtest.h>

#include "app/scan/PairMap.h"
#include "tests/scan/PaintedRow.h"

namespace {

/// Frames of a tenth of a second.
FrameStarts tenths(std::size_t frames) {
  std::vector<std::int64_t> micros;
  for (std::size_t i = 0; i <= frames; ++i) micros.push_back(static_cast<std::int64_t>(i) * 100000);
  return FrameStarts(micros);
}

constexpr std::int64_t tenth = 100000;

TEST(FrameStarts, KnowWhichFrameIsOnScreen) {
  const FrameStarts starts = tenths(10);
  struct Row {
    std::int64_t time;
    std::size_t frame;
  };
  const Row rows[] = {{-5, 0},        {0, 0},          {tenth - 2, 0}, {tenth - 1, 1}, {tenth, 1}, {2 * tenth - 2, 1},
                      {9 * tenth, 9}, {10 * tenth, 9}, {99 * tenth, 9}};
  for (const Row& row : rows) EXPECT_EQ(starts.frameAt(row.time), row.frame) << row.time;
  EXPECT_EQ(starts.frames(), 10U);
  EXPECT_EQ(starts.startOf(10), 10 * tenth) << "where the last one ends";
  EXPECT_EQ(starts.startOf(11), 10 * tenth);
}

TEST(FrameStarts, AreNoneOfNothing) {
  EXPECT_EQ(FrameStarts().frames(), 0U);
  EXPECT_EQ(FrameStarts().startOf(3), 0);
  EXPECT_EQ(FrameStarts().frameAt(3), 0U);
}

TEST(FrameStarts, AreThoseOfARow) {
  const scan::test::PaintedRow row(scan::test::master(0, 2), 24);
  const FrameStarts starts = FrameStarts::of(row);
  EXPECT_EQ(starts.frames(), 48U);
  EXPECT_EQ(starts.startOf(1), 41667);
}

/// Two frames of leader, frames 5 to 8 of the source, and 5 again.
PairMap withLeader() {
  return {tenths(20), tenths(7), {0, {-1, -1, 5, 6, 8, 8, 5}}, {{{2, 6}, {1, 0.3}}}};
}

TEST(PairMap, GoesFromTheDestinationToTheFrameItShows) {
  const PairMap map = withLeader();
  EXPECT_EQ(map.sourceOf(2 * tenth), 5 * tenth);
  EXPECT_EQ(map.sourceOf(2 * tenth + 40000), 5 * tenth) << "within the frame";
  EXPECT_EQ(map.sourceOf(4 * tenth), 8 * tenth);
  EXPECT_EQ(map.sourceOf(0), std::nullopt);
  EXPECT_TRUE(map.reaches(0)) << "it was looked for";
}

TEST(PairMap, GoesFromTheSourceToTheNearestFrameThatShowsIt) {
  const PairMap map = withLeader();
  EXPECT_EQ(map.destOf(6 * tenth, 0), 3 * tenth);
  EXPECT_EQ(map.destOf(5 * tenth, 0), 2 * tenth);
  EXPECT_EQ(map.destOf(5 * tenth, 5 * tenth), 6 * tenth) << "shown twice";
  EXPECT_EQ(map.destOf(8 * tenth, 0), 4 * tenth);
}

TEST(PairMap, GoesByTheLineForAFrameThatWasLeftOutAmongOthers) {
  EXPECT_EQ(withLeader().destOf(7 * tenth, 0), 4 * tenth);
}

TEST(PairMap, GoesThroughNothingWhereAPictureIsHeld) {
  const PairMap map(tenths(20), tenths(6), {0, {4, 5, 5, 5, 5, 7}}, {{{0, 2}, {1, 0.4}}, {{2, 5}, {0, 0.5}}});
  EXPECT_EQ(map.destOf(6 * tenth, 0), std::nullopt);
  EXPECT_EQ(map.destOf(5 * tenth, 4 * tenth), 4 * tenth);
}

TEST(PairMap, KnowsWhatTheDestinationDoesNotShow) {
  const PairMap map = withLeader();
  EXPECT_EQ(map.destOf(0, 0), std::nullopt);
  EXPECT_EQ(map.destOf(15 * tenth, 0), std::nullopt);
}

TEST(PairMap, KnowsNothingOfFramesThatWereNotGoneThrough) {
  const PairMap map(tenths(20), tenths(20), {4, {0, 1}}, {});
  EXPECT_FALSE(map.reaches(3 * tenth));
  EXPECT_TRUE(map.reaches(4 * tenth));
  EXPECT_TRUE(map.reaches(5 * tenth));
  EXPECT_FALSE(map.reaches(6 * tenth));
  EXPECT_EQ(map.sourceOf(6 * tenth), std::nullopt);
  EXPECT_EQ(map.sourceOf(5 * tenth), tenth);
  EXPECT_FALSE(PairMap().reaches(0));
  EXPECT_EQ(PairMap().destOf(0, 0), std::nullopt);
}

}  // namespace

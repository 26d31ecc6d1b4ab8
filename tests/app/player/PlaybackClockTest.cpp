#include <limits>

#include <gtest/gtest.h>

#include "app/player/PlaybackClock.h"

namespace player {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr std::int64_t second = 1000000;
const PlaybackClock::TimePoint beginning{};

PlaybackClock movingFrom(std::int64_t position, double rate) {
  PlaybackClock clock(10 * second);
  clock.setPosition(position, beginning);
  clock.setRate(rate, beginning);
  return clock;
}

TEST(PlaybackClock, StandsStillUntilItIsGivenARate) {
  PlaybackClock clock(10 * second);
  EXPECT_EQ(clock.position(beginning + seconds(5)), 0);
  clock.setPosition(3 * second, beginning);
  EXPECT_EQ(clock.position(beginning + seconds(5)), 3 * second);
  EXPECT_EQ(clock.whenAt(4 * second), PlaybackClock::TimePoint::max());
  EXPECT_FALSE(clock.isAtEnd(beginning + seconds(100)));
}

TEST(PlaybackClock, MovesAtItsRateAndEndsAtTheEnds) {
  const struct {
    double rate;
    std::int64_t from, afterTwoSeconds, afterAMinute;
  } rows[] = {{1, 2 * second, 4 * second, 10 * second}, {-1, 5 * second, 3 * second, 0},
              {2, 0, 4 * second, 10 * second},          {-0.5, 5 * second, 4 * second, 0},
              {0.25, 0, second / 2, 10 * second},       {8, second, 10 * second, 10 * second},
              {100, 0, 10 * second, 10 * second},       {-100, 9 * second, 0, 0}};
  for (const auto& row : rows) {
    const PlaybackClock clock = movingFrom(row.from, row.rate);
    EXPECT_EQ(clock.position(beginning), row.from) << row.rate;
    EXPECT_EQ(clock.position(beginning + seconds(2)), row.afterTwoSeconds) << row.rate;
    EXPECT_EQ(clock.position(beginning + seconds(60)), row.afterAMinute) << row.rate;
    EXPECT_TRUE(clock.isAtEnd(beginning + seconds(60))) << row.rate;
    EXPECT_FALSE(clock.isAtEnd(beginning)) << row.rate;
  }
}

TEST(PlaybackClock, KeepsItsPositionWhenTheRateChanges) {
  PlaybackClock clock = movingFrom(0, 1);
  clock.setRate(-2, beginning + seconds(4));
  EXPECT_EQ(clock.position(beginning + seconds(4)), 4 * second);
  EXPECT_EQ(clock.position(beginning + seconds(5)), 2 * second);
  clock.setRate(0, beginning + seconds(5));
  EXPECT_EQ(clock.position(beginning + seconds(50)), 2 * second);
}

TEST(PlaybackClock, GoesOnFromAPositionSetWhileItMoves) {
  PlaybackClock clock = movingFrom(0, 1);
  clock.setPosition(7 * second, beginning + seconds(1));
  EXPECT_EQ(clock.position(beginning + seconds(2)), 8 * second);
}

TEST(PlaybackClock, HoldsPositionsAndRatesWithinBounds) {
  PlaybackClock clock(10 * second);
  clock.setPosition(-5, beginning);
  EXPECT_EQ(clock.position(beginning), 0);
  clock.setPosition(std::numeric_limits<std::int64_t>::max(), beginning);
  EXPECT_EQ(clock.position(beginning), 10 * second);
  clock.setRate(std::numeric_limits<double>::quiet_NaN(), beginning);
  EXPECT_EQ(clock.rate(), 0);
  clock.setRate(std::numeric_limits<double>::infinity(), beginning);
  EXPECT_EQ(clock.rate(), 8);
}

TEST(PlaybackClock, IsAtAPositionWhenItSaysSo) {
  for (const double rate : {1.0, 2.0, 0.3, 7.9, -1.0, -0.7}) {
    const std::int64_t from = rate > 0 ? 0 : 10 * second;
    const PlaybackClock clock = movingFrom(from, rate);
    for (std::int64_t moved = 1; moved < 10 * second; moved += 41708) {
      const std::int64_t to = rate > 0 ? moved : from - moved;
      const auto when = clock.whenAt(to);
      ASSERT_EQ(clock.position(when), to) << rate;
      ASSERT_NE(clock.position(when - nanoseconds(1200 * 10)), to) << rate;
    }
  }
  EXPECT_EQ(movingFrom(5 * second, 1).whenAt(4 * second), PlaybackClock::TimePoint::max()) << "it moves away";
}

}  // namespace
}  // namespace player

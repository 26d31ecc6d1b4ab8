#include <limits>

#include <gtest/gtest.h>

#include "movie/atoms/MovieTime.h"

namespace movie {
namespace {

constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

TEST(MovieTime, KeepsItsInstantInAnotherScale) {
  struct Row {
    MovieTime time;
    std::int32_t scale;
    MovieTime scaled;
  };
  const Row rows[] = {
      {{6000, 600}, 600, {6000, 600}},
      {{6000, 600}, 25, {250, 25}},
      {{1001, 30000}, 600, {20, 600}},
      {{1025, 1000}, 20, {21, 20}},    // 20.5 goes away from 0
      {{-1025, 1000}, 20, {-21, 20}},  // on both sides
      {{0, 0}, 600, {0, 600}},
      {{7, 600}, 0, {7, 600}},
      {{highest, 1}, 600, {highest, 600}},
      {{-highest, 1}, 600, {-highest - 1, 600}},
      {{5, 600, 3}, 1200, {10, 1200, 3}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(timeScaled(row.time, row.scale), row.scaled) << row.time.value << "/" << row.time.scale;
  }
}

TEST(MovieTime, IsOrderedByInstants) {
  EXPECT_EQ(compareTimes({1, 25}, {24, 600}), 0);
  EXPECT_LT(compareTimes({1, 25}, {25, 600}), 0);
  EXPECT_GT(compareTimes({1, 25}, {23, 600}), 0);
  EXPECT_EQ(compareTimes({}, {0, 600}), 0);
  EXPECT_LT(compareTimes({}, {1, 600}), 0);
  EXPECT_GT(compareTimes({1, 600}, {}), 0);
  EXPECT_EQ(compareTimes({5, 0}, {}), 0);
  EXPECT_LT(compareTimes({highest - 1, 1}, {highest, 1}), 0);
  EXPECT_GT(compareTimes({highest, 600}, {highest, 601}), 0);
}

}  // namespace
}  // namespace movie

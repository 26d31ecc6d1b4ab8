#include <algorithm>

#include <gtest/gtest.h>

#include "scan/follow/Track.h"

namespace scan {
namespace {

constexpr std::int64_t reach = 4;

/// Frame `shown` is near, those beside it farther and farther; none within reach: all far.
Candidates candidates(std::int64_t expected, std::int64_t shown, float step = 1) {
  Candidates result{expected, expected - reach, {}};
  for (std::int64_t i = expected - reach; i <= expected + reach; ++i) {
    const auto away = static_cast<float>(std::abs(i - shown));
    result.distances.push_back(std::min(0.3F + step * away, 20.0F));
  }
  return result;
}

std::vector<Tracked> tracked(const std::vector<Candidates>& all) {
  Track track;
  std::vector<Tracked> result;
  for (const Candidates& each : all) {
    track.add(each);
    for (const Tracked& decided : track.decided()) result.push_back(decided);
  }
  for (const Tracked& decided : track.finish()) result.push_back(decided);
  return result;
}

TEST(Track, FollowsTheTimeLine) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 300; ++i) all.push_back(candidates(i + 10, i + 10));
  const std::vector<Tracked> path = tracked(all);
  ASSERT_EQ(path.size(), 300U);
  for (std::size_t i = 0; i < path.size(); ++i) EXPECT_EQ(path[i].source, static_cast<std::int64_t>(i) + 10);
}

TEST(Track, StepsAsideWhereFramesAreDropped) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 200; ++i) all.push_back(candidates(i, i < 77 ? i : i + 2));
  const std::vector<Tracked> path = tracked(all);
  for (std::int64_t i = 0; i < 200; ++i) EXPECT_EQ(path[static_cast<std::size_t>(i)].source, i < 77 ? i : i + 2) << i;
}

TEST(Track, IsNotLedAsideByOneFrameThatFitsALittleBetterElsewhere) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 100; ++i) all.push_back(candidates(i, i == 50 ? i + 1 : i));
  EXPECT_EQ(tracked(all)[50].source, 50);
}

/// Of a slow shot of which one frame is held for a while.
std::vector<Tracked> trackedHold(std::int64_t from, std::int64_t count, float change) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 200; ++i) {
    const std::int64_t held = std::clamp<std::int64_t>(i - from, 0, count);
    all.push_back(candidates(i - held / 2, i - held, 0.1F));
    all.back().change = held > 0 && i < from + count ? change : 0.2F;
  }
  return tracked(all);
}

TEST(Track, HoldsAPictureThatIsShownOnceMore) {
  const std::vector<Tracked> path = trackedHold(60, 8, 0.01F);
  for (std::int64_t i = 0; i < 200; ++i) {
    const std::int64_t shown = i - std::clamp<std::int64_t>(i - 60, 0, 8);
    EXPECT_EQ(path[static_cast<std::size_t>(i)].source, shown) << i;
  }
}

TEST(Track, HoldsNoPictureThatChanges) {
  const std::vector<Tracked> path = trackedHold(60, 8, 1);
  const auto held =
      std::count_if(path.begin() + 60, path.begin() + 69, [](const Tracked& each) { return each.source == 60; });
  EXPECT_LT(held, 9) << "by jumps, where they pay";
}

TEST(Track, TellsFramesThatAreInNone) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 200; ++i) all.push_back(candidates(i, i >= 60 && i < 90 ? i + 100 : i));
  const std::vector<Tracked> path = tracked(all);
  for (std::int64_t i = 0; i < 200; ++i) {
    EXPECT_EQ(path[static_cast<std::size_t>(i)].source.has_value(), i < 60 || i >= 90) << i;
  }
}

TEST(Track, StaysOnTheLineWhereNothingMoves) {
  std::vector<Candidates> all;
  for (std::int64_t i = 0; i < 150; ++i) all.push_back(candidates(i, i, 0));
  const std::vector<Tracked> path = tracked(all);
  for (std::int64_t i = 0; i < 150; ++i) EXPECT_EQ(path[static_cast<std::size_t>(i)].source, i);
}

TEST(Track, GoesOnWithoutCandidates) {
  const std::vector<Tracked> path = tracked(std::vector<Candidates>(120, Candidates{-5, 0, {}}));
  ASSERT_EQ(path.size(), 120U);
  for (const Tracked& each : path) EXPECT_FALSE(each.source);
}

TEST(Track, KeepsFewFramesUndecided) {
  Track track;
  for (std::int64_t i = 0; i < 1000; ++i) {
    track.add(candidates(i, i));
    track.decided();
    ASSERT_LT(track.pending(), 100U);
  }
}

}  // namespace
}  // namespace scan

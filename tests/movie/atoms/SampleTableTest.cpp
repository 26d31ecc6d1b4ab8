#include <algorithm>
#include <chrono>
#include <random>

#include <gtest/gtest.h>

#include "movie/atoms/SampleTable.h"

namespace movie {
namespace {

constexpr std::int64_t latest = SampleTable::maximumTime;

/// Every sample written out, and looked through from the first to the last.
struct LiteralTable {
  std::vector<PresentedSample> samples;

  explicit LiteralTable(const std::vector<TimeRun>& runs) {
    std::int64_t time = 0;
    for (const TimeRun& run : runs) {
      time = run.count > 0 ? run.decodeStart.value_or(time) : time;
      for (std::uint64_t i = 0; i < run.count; ++i, time += run.duration) {
        samples.push_back({samples.size(), time, time + run.compositionOffset, run.duration});
      }
    }
  }

  PresentedSample presentedAt(std::int64_t time) const {
    std::int64_t first = samples.front().presentationTime;
    for (const PresentedSample& sample : samples) first = std::min(first, sample.presentationTime);
    PresentedSample best;
    bool found = false;
    for (const PresentedSample& sample : samples) {
      if (sample.presentationTime > std::max(first, time)) continue;
      if (!found || sample.presentationTime >= best.presentationTime) best = sample;
      found = true;
    }
    std::int64_t next = INT64_MAX;
    for (const PresentedSample& sample : samples) {
      if (sample.presentationTime > best.presentationTime) next = std::min(next, sample.presentationTime);
    }
    if (next != INT64_MAX) best.duration = next - best.presentationTime;
    return best;
  }
};

void expectSame(const PresentedSample& left, const PresentedSample& right, std::int64_t time) {
  EXPECT_EQ(left.index, right.index) << "at " << time;
  EXPECT_EQ(left.decodeTime, right.decodeTime) << "at " << time;
  EXPECT_EQ(left.presentationTime, right.presentationTime) << "at " << time;
  EXPECT_EQ(left.duration, right.duration) << "at " << time;
}

TEST(SampleTable, IsEmptyWithoutSamples) {
  const SampleTable table;
  EXPECT_EQ(table.sampleCount(), 0U);
  EXPECT_EQ(table.duration(), 0);
  EXPECT_FALSE(table.presentedAt(0));
  EXPECT_EQ(table.decodeTimeOf(3), 0);
  EXPECT_EQ(table.presentationTimeOf(3), 0);
  EXPECT_EQ(table.syncSampleAtOrBefore(3), 0U);
}

TEST(SampleTable, FindsTheSampleOnScreen) {
  const SampleTable table({{3, 10, 0}, {2, 5, 0}});
  EXPECT_EQ(table.sampleCount(), 5U);
  EXPECT_EQ(table.duration(), 40);
  const std::vector<std::pair<std::int64_t, std::uint64_t>> rows{
      {INT64_MIN, 0}, {-1, 0}, {0, 0}, {9, 0}, {10, 1}, {29, 2}, {30, 3}, {34, 3}, {35, 4}, {40, 4}, {INT64_MAX, 4}};
  for (const auto& [time, index] : rows) EXPECT_EQ(table.presentedAt(time)->index, index) << time;
  EXPECT_EQ(table.presentedAt(20)->duration, 10);
  EXPECT_EQ(table.presentedAt(30)->duration, 5);
  EXPECT_EQ(table.presentedAt(99)->duration, 5);
}

TEST(SampleTable, TakesAnyTimeBesideNegativePresentations) {
  const SampleTable table({{3, 10, -100}});
  EXPECT_EQ(table.presentedAt(INT64_MAX)->index, 2U);
  EXPECT_EQ(table.presentedAt(INT64_MIN)->index, 0U);
}

TEST(SampleTable, FollowsReorderedSamples) {
  // I P B B P B B, shown as I B B P B B P.
  const SampleTable table({{1, 1, 1}, {1, 1, 3}, {2, 1, 0}, {1, 1, 3}, {2, 1, 0}});
  const std::vector<std::uint64_t> shown{0, 2, 3, 1, 5, 6, 4};
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const auto sample = table.presentedAt(static_cast<std::int64_t>(i) + 1);
    EXPECT_EQ(sample->index, shown[i]);
    EXPECT_EQ(sample->presentationTime, static_cast<std::int64_t>(i) + 1);
    EXPECT_EQ(sample->duration, 1);
    EXPECT_EQ(table.presentationTimeOf(shown[i]), static_cast<std::int64_t>(i) + 1);
    EXPECT_EQ(table.decodeTimeOf(shown[i]), static_cast<std::int64_t>(shown[i]));
  }
  EXPECT_EQ(table.presentedAt(0)->index, 0U) << "before the first";
}

TEST(SampleTable, LeavesAGapToTheSampleBeforeIt) {
  const SampleTable table({{2, 10, 0}, {2, 10, 0, 100}});
  EXPECT_EQ(table.duration(), 120);
  EXPECT_EQ(table.presentedAt(60)->index, 1U);
  EXPECT_EQ(table.presentedAt(60)->duration, 90);
  EXPECT_EQ(table.presentedAt(100)->index, 2U);
}

TEST(SampleTable, AgreesWithEverySampleWrittenOut) {
  std::mt19937 random(20240611);
  const auto upTo = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit + 1)); };
  for (int round = 0; round < 600; ++round) {
    const bool reordered = round % 3 != 0;
    std::vector<TimeRun> runs;
    for (int i = upTo(12); i >= 0; --i) {
      TimeRun run{static_cast<std::uint64_t>(upTo(5)), static_cast<std::uint32_t>(upTo(4)),
                  reordered ? upTo(16) - 8 : 0};
      if (round % 5 == 0 && upTo(3) == 0) run.decodeStart = upTo(60);
      runs.push_back(run);
    }
    const LiteralTable literal(runs);
    const SampleTable table(runs);
    ASSERT_EQ(table.sampleCount(), literal.samples.size());
    if (literal.samples.empty()) continue;
    for (std::int64_t time = -15; time < 90; ++time) {
      expectSame(*table.presentedAt(time), literal.presentedAt(time), time);
    }
    for (const PresentedSample& sample : literal.samples) {
      EXPECT_EQ(table.decodeTimeOf(sample.index), sample.decodeTime);
      EXPECT_EQ(table.presentationTimeOf(sample.index), sample.presentationTime);
    }
    if (HasFailure()) FAIL() << "round " << round;
  }
}

TEST(SampleTable, NeverExpandsItsSamples) {
  const SampleTable table({{UINT32_MAX, UINT32_MAX, 0}, {UINT32_MAX, 1, 5}});
  EXPECT_LE(table.duration(), latest);
  EXPECT_EQ(table.presentedAt(UINT32_MAX)->index, 1U);
  EXPECT_LE(table.presentedAt(INT64_MAX)->presentationTime, latest);
}

TEST(SampleTable, LeavesOutWhatNoTimeCanExpress) {
  const SampleTable table({{2, 10, 0}, {5, 10, 0, latest - 25}, {3, 10, 0, 40}});
  EXPECT_EQ(table.sampleCount(), 4U) << "none of those behind the limit";
  EXPECT_EQ(SampleTable({{1, 1, 0, -5}}).sampleCount(), 0U);
  EXPECT_EQ(SampleTable({{1, 1, 0, latest}}).sampleCount(), 0U);
}

TEST(SampleTable, IsQuickOnALongReorderedMovie) {
  std::vector<TimeRun> runs;
  runs.reserve(500'000);
  for (int i = 0; i < 500'000; ++i) runs.push_back({1, 1, i % 3 == 0 ? 2 : (i % 3 == 1 ? 3 : -1)});
  const SampleTable table(runs);
  const auto begin = std::chrono::steady_clock::now();
  std::int64_t sum = 0;
  for (std::int64_t time = 0; time < 500'000; ++time) sum += table.presentedAt(time)->duration;
  EXPECT_GT(sum, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(SampleTable, TakesEverySampleAsSyncWithoutAList) {
  const SampleTable table({{4, 1, 0}});
  for (std::uint64_t i = 0; i < 4; ++i) EXPECT_EQ(table.syncSampleAtOrBefore(i), i);
  EXPECT_EQ(table.syncSampleAtOrBefore(99), 3U);
}

TEST(SampleTable, FindsTheSyncSampleBefore) {
  const SampleTable table({{20, 1, 0}}, std::vector<SampleRange>{{12, 3}, {2, 1}, {8, 1}, {13, 1}, {99, 1}});
  const std::vector<std::pair<std::uint64_t, std::uint64_t>> rows{
      {0, 0}, {1, 0}, {2, 2}, {7, 2}, {8, 8}, {11, 8}, {12, 12}, {13, 13}, {14, 14}, {15, 14}, {19, 14}, {99, 14}};
  for (const auto& [index, sync] : rows) EXPECT_EQ(table.syncSampleAtOrBefore(index), sync) << index;
}

TEST(SampleTable, PassesOverEmptyRangesOfSyncSamples) {
  const SampleTable table({{20, 1, 0}}, std::vector<SampleRange>{{0, 0}, {4, 0}, {7, 2}});
  EXPECT_EQ(table.syncSampleAtOrBefore(6), 0U);
  EXPECT_EQ(table.syncSampleAtOrBefore(9), 8U);
}

TEST(SampleTable, StartsFromTheFirstSampleWhereNoneIsSync) {
  const SampleTable table({{20, 1, 0}}, std::vector<SampleRange>{});
  EXPECT_EQ(table.syncSampleAtOrBefore(15), 0U);
}

}  // namespace
}  // namespace movie

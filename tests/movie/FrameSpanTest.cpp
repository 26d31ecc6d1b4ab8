#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "movie/EditList.h"
#include "tests/movie/EvenTrack.h"

namespace movie::test {
namespace {

std::vector<FrameSpan> spansOf(const TrackInfo& track, std::int32_t movieScale, const SampleTable& samples) {
  std::vector<FrameSpan> spans{*spanOnScreen(track, movieScale, samples, at(0, movieScale))};
  while (!spans.back().last && spans.size() < 5000) {
    spans.push_back(*spanOnScreen(track, movieScale, samples, spans.back().end));
  }
  return spans;
}

/// What holds for the spans of every movie.
void expectSound(const TrackInfo& track, std::int32_t movieScale, const SampleTable& samples,
                 const std::vector<FrameSpan>& spans) {
  for (std::size_t n = 0; n < spans.size(); ++n) {
    const FrameSpan& span = spans[n];
    ASSERT_EQ(sampleOnScreen(track, movieScale, samples, span.start)->index, span.sample.index) << n;
    ASSERT_LT(span.startMicros, span.endMicros) << n;
    const auto before = spanBefore(track, movieScale, samples, span.start);
    ASSERT_EQ(before.has_value(), n > 0) << n;
    if (n == 0) continue;
    ASSERT_EQ(spans[n - 1].end, span.start) << n;
    ASSERT_EQ(spans[n - 1].endMicros, span.startMicros) << n;
    ASSERT_EQ(before->start, spans[n - 1].start) << n;
    ASSERT_EQ(before->end, span.start) << n;
    // The microsecond before is still the frame before, unless that is within its own precision.
    const auto early = sampleOnScreen(track, movieScale, samples, at(span.startMicros - 2, 1000000));
    if (span.startMicros - 2 > spans[n - 1].startMicros) {
      ASSERT_EQ(early->index, spans[n - 1].sample.index) << n;
    }
    const auto exact = sampleOnScreen(track, movieScale, samples, at(span.startMicros, 1000000));
    ASSERT_EQ(exact->index, span.sample.index) << n;
  }
}

const FrameRate everyRate[] = {{24000, 1001}, {30000, 1001}, {60000, 1001}, {120000, 1001}, {24, 1},
                               {25, 1},       {12800, 512},  {600, 25},     {600, 20},      {2997, 100},
                               {90000, 3753}, {90000, 3003}, {1000, 1},     {240, 1},       {1000000, 16683}};

TEST(FrameSpan, FindsEachFrameAgainAtItsStart) {
  for (const FrameRate& rate : everyRate) {
    const SampleTable samples = evenFrames(500, rate.frameDuration);
    for (const std::int32_t movieScale : {600, 1000, 24000, 30000, 90000, 25, 1, rate.mediaScale}) {
      SCOPED_TRACE(std::to_string(rate.mediaScale) + " in " + std::to_string(movieScale));
      const auto spans = spansOf(trackOf(rate.mediaScale), movieScale, samples);
      ASSERT_EQ(spans.size(), 500U);
      ASSERT_NO_FATAL_FAILURE(expectSound(trackOf(rate.mediaScale), movieScale, samples, spans));
      for (std::size_t n = 0; n < spans.size(); ++n) ASSERT_EQ(spans[n].sample.index, n);
    }
  }
}

TEST(FrameSpan, IsWrittenInTheMoviesTimeScaleWhereThatTellsFramesApart) {
  const SampleTable samples = evenFrames(240, 1001);
  const auto spans = spansOf(trackOf(24000), 600, samples);
  EXPECT_EQ(spans[1].start, at(25, 600));
  EXPECT_EQ(spans[1].startMicros, 41709);
  EXPECT_EQ(spans[1].end, at(50, 600));
  for (const FrameSpan& span : spans) EXPECT_EQ(span.start.scale, 600);
  const auto fine = spansOf(trackOf(1000), 25, evenFrames(100, 1));
  EXPECT_EQ(fine[1].start, at(1000, 1000000)) << "25 units a second do not tell 1000 frames apart";
}

TEST(FrameSpan, IsCutByEditsAndHeldByDwells) {
  const SampleTable samples = evenFrames(100, 100);
  // Half a second from frame 20 on, a second of frame 30, an empty quarter, and the rest at twice the rate.
  const TrackInfo track =
      trackOf(2500, {{300, 2000, normal}, {600, 3000, 0}, {150, -1, normal}, {240, 5000, 2 * normal}});
  const auto spans = spansOf(track, 600, samples);
  ASSERT_NO_FATAL_FAILURE(expectSound(track, 600, samples, spans));
  ASSERT_EQ(spans.size(), 13U + 1U + 20U);
  EXPECT_EQ(spans[12].sample.index, 32U);
  EXPECT_EQ(spans[12].start, at(288, 600));
  EXPECT_EQ(spans[12].end, at(300, 600)) << "cut in its middle";
  EXPECT_EQ(spans[13].sample.index, 30U);
  EXPECT_EQ(spans[13].end, at(900, 600));
  EXPECT_EQ(spans[14].sample.index, 50U);
  EXPECT_EQ(spans[14].start, at(900, 600)) << "shows during the empty edit already";
  EXPECT_EQ(spans[14].end, at(1062, 600));
  EXPECT_EQ(spans.back().sample.index, 69U);
  EXPECT_EQ(spans.back().end, at(1290, 600));
}

TEST(FrameSpan, FollowsPresentationOrderAndUnevenDurations) {
  std::mt19937 random(4);
  for (int round = 0; round < 20; ++round) {
    std::vector<TimeRun> runs;
    for (int group = 0; group < 20; ++group) {
      const std::uint32_t duration = 300 + static_cast<std::uint32_t>(random() % 3000);
      const auto d = static_cast<std::int32_t>(duration);
      // I B B P: the P frame is decoded before the two that are shown before it.
      runs.push_back({1, duration, d});
      runs.push_back({1, duration, 3 * d});
      runs.push_back({2, duration, 0});
    }
    const SampleTable samples(runs);
    const TrackInfo track = trackOf(30000, {{100000, static_cast<std::int64_t>(random() % 2000), normal}});
    ASSERT_NO_FATAL_FAILURE(expectSound(track, 600, samples, spansOf(track, 600, samples)));
  }
}

TEST(FrameSpan, SurvivesHostileValues) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto mostUnsigned = std::numeric_limits<std::uint64_t>::max();
  constexpr auto mostScale = std::numeric_limits<std::int32_t>::max();
  const SampleTable samples = evenFrames(10, 100);
  const std::vector<std::vector<EditListEntry>> lists{
      {},
      {{mostUnsigned, most, mostScale}},
      {{mostUnsigned, 0, normal}, {mostUnsigned, -1, normal}, {mostUnsigned, 500, mostScale}},
      {{1, std::numeric_limits<std::int64_t>::min(), 1}},
      {{3, 100, 1}, {5, 0, mostScale}},
      {{0, 0, 0}}};
  for (const auto& edits : lists) {
    for (const std::int32_t mediaScale : {-1, 0, 1, mostScale}) {
      for (const std::int32_t movieScale : {-1, 0, 1, mostScale}) {
        for (const std::int64_t value : {-most, std::int64_t{0}, std::int64_t{1}, most}) {
          const TrackInfo track = trackOf(mediaScale, edits);
          const auto span = spanOnScreen(track, movieScale, samples, at(value, 600));
          ASSERT_TRUE(span);
          ASSERT_LE(span->startMicros, span->endMicros);
          (void)spanBefore(track, movieScale, samples, at(value, 600));
        }
      }
    }
  }
  EXPECT_FALSE(spanOnScreen(trackOf(600), 600, SampleTable(), at(0, 600)));
  EXPECT_FALSE(spanBefore(trackOf(600), 600, SampleTable(), at(0, 600)));
}

}  // namespace
}  // namespace movie::test

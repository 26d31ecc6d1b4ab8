#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "movie/EditList.h"
#include "tests/movie/EvenTrack.h"

namespace movie::test {
namespace {

std::int64_t frameAt(const TrackInfo& track, std::int32_t movieScale, const SampleTable& samples,
                     const MovieTime& time) {
  const auto sample = sampleOnScreen(track, movieScale, samples, time);
  return sample ? static_cast<std::int64_t>(sample->index) : -1;
}

const FrameRate rates[] = {{24000, 1001}, {30000, 1001}, {60000, 1001}, {24, 1},       {25, 1},       {12800, 512},
                           {600, 25},     {600, 20},     {2997, 100},   {90000, 3753}, {90000, 3003}, {1000000, 16683}};

TEST(EditList, FindsEachFrameAtItsExactStart) {
  for (const FrameRate& rate : rates) {
    const auto frames = 10 * static_cast<std::uint64_t>(rate.mediaScale) / rate.frameDuration;
    const SampleTable samples = evenFrames(frames, rate.frameDuration);
    const TrackInfo track = trackOf(rate.mediaScale);
    for (std::int64_t n = 0; n < static_cast<std::int64_t>(frames); ++n) {
      for (const std::int32_t scale : {rate.mediaScale, 600, 1000, 24000, 30000, 90000}) {
        const std::int64_t scaled = n * rate.frameDuration * scale;
        if (scaled % rate.mediaScale != 0) continue;
        ASSERT_EQ(frameAt(track, 600, samples, at(scaled / rate.mediaScale, scale)), n)
            << rate.mediaScale << " " << scale;
      }
    }
  }
}

// The time of frame n as the time helpers give it: floor(scale * (n / fps)) in double precision, which lands up to one
// unit of the movie's time scale before the frame's start, and at times a whole unit where the start is a whole number.
TEST(EditList, FindsEachFrameAtTheTimeOfItsTimecode) {
  for (const FrameRate& rate : rates) {
    for (const std::uint64_t frames : {240U, 600U, 599U}) {
      const SampleTable samples = evenFrames(frames, rate.frameDuration);
      const double mediaDuration = static_cast<double>(frames) * static_cast<double>(rate.frameDuration);
      const double fps = rate.mediaScale * static_cast<double>(frames) / mediaDuration;
      for (const std::int32_t movieScale : {600, 1000, 24000, 30000, 90000, rate.mediaScale}) {
        if (movieScale < 2 * fps) continue;  // such a time scale does not tell one frame from the next
        const TrackInfo plain = trackOf(rate.mediaScale);
        const auto movieDuration = static_cast<std::uint64_t>(std::ceil(mediaDuration * movieScale / rate.mediaScale));
        const TrackInfo edited = trackOf(rate.mediaScale, {{movieDuration, 0, normal}});
        for (std::int64_t n = 0; n < static_cast<std::int64_t>(frames); ++n) {
          const auto value = static_cast<std::int64_t>(std::floor(movieScale * (static_cast<double>(n) / fps)));
          ASSERT_EQ(frameAt(plain, movieScale, samples, at(value, movieScale)), n)
              << rate.mediaScale << " " << movieScale;
          ASSERT_EQ(frameAt(edited, movieScale, samples, at(value, movieScale)), n)
              << rate.mediaScale << " " << movieScale;
        }
      }
    }
  }
}

TEST(EditList, FindsEachFrameAtItsStartWrittenInMicroseconds) {
  for (const FrameRate& rate : rates) {
    const SampleTable samples = evenFrames(300, rate.frameDuration);
    for (std::int64_t n = 0; n < 300; ++n) {
      const double start = static_cast<double>(n * rate.frameDuration) / rate.mediaScale;
      for (const double micros : {std::floor(start * 1e6), std::round(start * 1e6), std::ceil(start * 1e6)}) {
        const auto time = at(static_cast<std::int64_t>(micros), 1000000);
        ASSERT_EQ(frameAt(trackOf(rate.mediaScale), 600, samples, time), n) << rate.mediaScale;
      }
    }
  }
}

TEST(EditList, KeepsAFrameUntilLessThanAUnitIsLeft) {
  const SampleTable samples = evenFrames(240, 1001);
  const TrackInfo track = trackOf(24000);
  for (std::int64_t n = 0; n < 239; ++n) {
    ASSERT_EQ(frameAt(track, 24000, samples, at(1001 * n + 500, 24000)), n);
    ASSERT_EQ(frameAt(track, 24000, samples, at(1001 * n + 999, 24000)), n);
    ASSERT_EQ(frameAt(track, 24000, samples, at(1001 * n + 1000, 24000)), n + 1) << "one unit before frame n + 1";
    // In the finest scale the boundary is that of the frames.
    const std::int64_t nanoseconds = (n + 1) * 1001 * 1000000000LL / 24000;
    ASSERT_EQ(frameAt(track, 24000, samples, at(nanoseconds - 2, 1000000000)), n);
    ASSERT_EQ(frameAt(track, 24000, samples, at(nanoseconds + 1, 1000000000)), n + 1);
  }
}

TEST(EditList, DoesNotReachAheadWithACoarseTimeScale) {
  const SampleTable samples = evenFrames(250, 1);
  const TrackInfo track = trackOf(25);
  EXPECT_EQ(frameAt(track, 25, samples, at(3, 1)), 75);
  EXPECT_EQ(frameAt(track, 25, samples, at(3, 25)), 3);
  EXPECT_EQ(frameAt(track, 25, samples, at(7, 2)), 87);
  EXPECT_EQ(frameAt(track, 25, samples, at(3, 24)), 3);
  EXPECT_EQ(frameAt(track, 25, samples, at(3, 50)), 2) << "one whole unit before frame 2";
}

TEST(EditList, GivesTheFirstAndTheLastFrameBeyondTheEnds) {
  const SampleTable samples = evenFrames(10, 100);
  const std::vector<TrackInfo> tracks{trackOf(2500), trackOf(2500, {{240, 0, normal}}),
                                      trackOf(2500, {{1000, 0, normal}})};
  for (const TrackInfo& track : tracks) {
    for (const MovieTime& before :
         {MovieTime{}, at(0, 600), at(-1, 600), at(std::numeric_limits<std::int64_t>::min(), 1)})
      EXPECT_EQ(frameAt(track, 600, samples, before), 0);
    EXPECT_EQ(frameAt(track, 600, samples, at(5, 0)), 0) << "a time without a scale is the beginning";
    EXPECT_EQ(frameAt(track, 600, samples, at(5, -600)), 0);
    for (const MovieTime& after :
         {at(240, 600), at(241, 600), at(1, 1), at(std::numeric_limits<std::int64_t>::max(), 1)})
      EXPECT_EQ(frameAt(track, 600, samples, after), 9);
  }
}

TEST(EditList, ShowsOnlyWhatAnEditTakes) {
  const SampleTable samples = evenFrames(100, 100);
  // From frame 20 for half a second: frames 20 to 31, and half of 32.
  const TrackInfo track = trackOf(2500, {{300, 2000, normal}});
  EXPECT_EQ(frameAt(track, 600, samples, at(-5, 600)), 20);
  EXPECT_EQ(frameAt(track, 600, samples, at(0, 600)), 20);
  EXPECT_EQ(frameAt(track, 600, samples, at(24, 600)), 21);
  EXPECT_EQ(frameAt(track, 600, samples, at(299, 600)), 32);
  EXPECT_EQ(frameAt(track, 600, samples, at(5000, 600)), 32);
}

TEST(EditList, PlaysSegmentsInTheirOrder) {
  const SampleTable samples = evenFrames(100, 100);
  const TrackInfo track =
      trackOf(2500, {{240, 5000, normal}, {0, 9000, normal}, {240, 0, normal}, {240, 5000, normal}});
  EXPECT_EQ(frameAt(track, 600, samples, at(0, 600)), 50);
  EXPECT_EQ(frameAt(track, 600, samples, at(238, 600)), 59);
  EXPECT_EQ(frameAt(track, 600, samples, at(240, 600)), 0);
  EXPECT_EQ(frameAt(track, 600, samples, at(479, 600)), 50) << "cut to a unit, the start of the next segment";
  EXPECT_EQ(frameAt(track, 600, samples, at(480, 600)), 50);
  EXPECT_EQ(frameAt(track, 600, samples, at(720, 600)), 59);
}

TEST(EditList, HoldsOnePictureDuringADwell) {
  const SampleTable samples = evenFrames(100, 100);
  const TrackInfo track = trackOf(2500, {{240, 0, normal}, {600, 3000, 0}, {240, 1000, normal}});
  for (const int value : {240, 300, 600, 838}) EXPECT_EQ(frameAt(track, 600, samples, at(value, 600)), 30) << value;
  EXPECT_EQ(frameAt(track, 600, samples, at(840, 600)), 10);
  const TrackInfo alone = trackOf(2500, {{600, 3000, 0}});
  EXPECT_EQ(frameAt(alone, 600, samples, at(0, 600)), 30);
  EXPECT_EQ(frameAt(alone, 600, samples, at(9999, 600)), 30);
}

TEST(EditList, FollowsOtherRates) {
  const SampleTable samples = evenFrames(100, 100);
  EXPECT_EQ(frameAt(trackOf(2500, {{600, 1000, 2 * normal}}), 600, samples, at(48, 600)), 14);
  EXPECT_EQ(frameAt(trackOf(2500, {{600, 1000, normal / 2}}), 600, samples, at(48, 600)), 11);
}

TEST(EditList, ShowsAPictureDuringEmptyEdits) {
  const SampleTable samples = evenFrames(100, 100);
  const TrackInfo track = trackOf(
      2500, {{600, -1, normal}, {240, 2000, normal}, {600, -1, normal}, {240, 7000, normal}, {600, -1, normal}});
  const struct {
    std::int64_t value, frame;
  } rows[] = {{0, 20},    {599, 20},  {600, 20},  {624, 21},  {838, 29},  {840, 70},
              {1439, 70}, {1440, 70}, {1464, 71}, {1680, 79}, {2280, 79}, {99999, 79}};
  for (const auto& row : rows) EXPECT_EQ(frameAt(track, 600, samples, at(row.value, 600)), row.frame) << row.value;
  EXPECT_EQ(frameAt(trackOf(2500, {{600, -1, normal}}), 600, samples, at(24, 600)), 1) << "nothing but emptiness";
}

TEST(EditList, PassesOverEditsOfNoDuration) {
  const SampleTable samples = evenFrames(100, 100);
  const TrackInfo track = trackOf(2500, {{0, 5000, normal}, {240, 2000, normal}, {0, 9000, normal}});
  EXPECT_EQ(frameAt(track, 600, samples, at(0, 600)), 20);
  EXPECT_EQ(frameAt(track, 600, samples, at(9999, 600)), 29);
  const TrackInfo alone = trackOf(2500, {{0, 200, normal}});
  EXPECT_EQ(frameAt(alone, 600, samples, at(24, 600)), 3) << "as long as its media";
  EXPECT_EQ(frameAt(alone, 600, samples, at(99999, 600)), 99);
}

TEST(EditList, CountsInPresentationOrder) {
  // Decode order I P B B with composition offsets, the first picture shown at 200.
  const SampleTable samples({{1, 100, 200}, {1, 100, 400}, {1, 100, 100}, {1, 100, 100}});
  const TrackInfo track = trackOf(2500, {{96, 200, normal}});
  const int order[] = {0, 2, 3, 1};
  for (int n = 0; n < 4; ++n) EXPECT_EQ(frameAt(track, 600, samples, at(std::int64_t{24} * n, 600)), order[n]);
  EXPECT_EQ(frameAt(track, 600, samples, at(500, 600)), 1);
}

TEST(EditList, SurvivesHostileValues) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto mostUnsigned = std::numeric_limits<std::uint64_t>::max();
  constexpr auto mostScale = std::numeric_limits<std::int32_t>::max();
  constexpr auto leastRate = std::numeric_limits<std::int32_t>::min();
  const SampleTable samples = evenFrames(10, 100);
  const std::vector<std::vector<EditListEntry>> lists{
      {},
      {{mostUnsigned, most, mostScale}},
      {{mostUnsigned, 0, normal}, {mostUnsigned, -1, normal}, {mostUnsigned, 500, mostScale}},
      {{mostUnsigned, -1, 0}, {0, most, leastRate}},
      {{1, std::numeric_limits<std::int64_t>::min(), leastRate}},
      {{0, 0, 0}},
  };
  for (const auto& edits : lists) {
    for (const std::int32_t mediaScale : {leastRate, -1, 0, 1, mostScale}) {
      for (const std::int32_t movieScale : {leastRate, 0, 1, mostScale}) {
        for (const std::int64_t value :
             {-most - 1, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, most - 1, most}) {
          for (const std::int32_t scale : {leastRate, 0, 1, 600, mostScale}) {
            const std::int64_t frame = frameAt(trackOf(mediaScale, edits), movieScale, samples, at(value, scale));
            EXPECT_GE(frame, 0);
            EXPECT_LT(frame, 10);
          }
        }
      }
    }
  }
  EXPECT_EQ(frameAt(trackOf(600), 600, SampleTable(), at(0, 600)), -1) << "no samples, no picture";
}

TEST(EditList, StartsWhereTheFirstEditWithMediaDoes) {
  EXPECT_EQ(mediaStartTime(trackOf(600)), 0);
  EXPECT_EQ(mediaStartTime(trackOf(600, {{100, 50, normal}})), 50);
  EXPECT_EQ(mediaStartTime(trackOf(600, {{100, -1, normal}, {100, 70, normal}, {100, 90, normal}})), 70);
  EXPECT_EQ(mediaStartTime(trackOf(600, {{100, -1, normal}})), 0);
}

}  // namespace
}  // namespace movie::test

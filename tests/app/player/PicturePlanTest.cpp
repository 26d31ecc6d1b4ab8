#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "app/player/PicturePlan.h"
#include "tests/app/player/SoundFixture.h"

namespace player {
namespace {

/// How many frames are made ahead of a playhead that has begun to play, when each takes so many bytes.
std::size_t madeAhead(std::size_t bytes) {
  const PlaybackClock::TimePoint now{};
  const std::string path = movie::test::fixtureMovie(
      "planned.mov", {"-f", "lavfi", "-i", "testsrc2=size=64x36:rate=25:duration=4", "-c:v", "mjpeg"});
  Wish wish;
  wish.movie = test::openedMovie(path);
  wish.clock = PlaybackClock(4'000'000);
  wish.clock.setRate(1, now);
  RenderedFrames frames;
  PicturePlan plan;
  while (const auto target = plan.next(wish, frames, now)) {
    auto frame = std::make_shared<ShownFrame>();
    frame->image.samples.resize(bytes);
    frames.put(target->span, {}, frame);
  }
  return frames.all().size() - 1;  // one is on screen
}

TEST(PicturePlan, HasEightFramesReadyAheadAndFewerOnlyWhereTheyAreLarge) {
  constexpr std::size_t memory = RenderedFrames::mostBytes;
  EXPECT_EQ(madeAhead(1000), 8U);
  EXPECT_EQ(madeAhead(memory / 10), 5U);
  EXPECT_EQ(madeAhead(memory / 6), 3U);
  EXPECT_EQ(madeAhead(memory / 2), 2U) << "however large";
}

}  // namespace
}  // namespace player

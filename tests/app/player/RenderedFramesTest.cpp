#include <cstddef>
#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

#include "app/player/RenderedFrames.h"

namespace player {
namespace {

constexpr std::int64_t duration = 40000;  // microseconds

/// So many frames in a row, each of so many bytes.
RenderedFrames framesOf(std::size_t count, std::size_t bytes) {
  RenderedFrames frames;
  for (std::size_t i = 0; i < count; ++i) {
    auto frame = std::make_shared<ShownFrame>();
    frame->image.samples.resize(bytes);
    movie::FrameSpan span;
    span.startMicros = static_cast<std::int64_t>(i) * duration;
    span.endMicros = span.startMicros + duration;
    frames.put(span, {}, frame);
  }
  return frames;
}

TEST(RenderedFrames, AreLetGoWhereThereAreTooMany) {
  RenderedFrames frames = framesOf(RenderedFrames::mostFrames, 1);
  EXPECT_FALSE(frames.trim(0, 0));
  frames = framesOf(RenderedFrames::mostFrames + 5, 1);
  EXPECT_TRUE(frames.trim(0, 0));
  EXPECT_EQ(frames.all().size(), RenderedFrames::mostFrames);
  EXPECT_TRUE(frames.holds(0)) << "the farthest go first";
}

TEST(RenderedFrames, AreLetGoWhereTheyAreTooLargeButForAFew) {
  constexpr std::size_t size = RenderedFrames::mostBytes / 16;
  RenderedFrames frames = framesOf(17, size);
  EXPECT_TRUE(frames.trim(16 * duration, 0));
  EXPECT_EQ(frames.all().size(), 16U);
  EXPECT_FALSE(frames.holds(0)) << "the farthest go first";
  frames = framesOf(RenderedFrames::fewestFrames + 2, RenderedFrames::mostBytes / RenderedFrames::fewestFrames + 1);
  frames.trim(0, 0);
  EXPECT_EQ(frames.all().size(), RenderedFrames::fewestFrames);
}

TEST(RenderedFrames, AreLetGoBehindAMovingPlayhead) {
  RenderedFrames frames = framesOf(10, 1);
  frames.trim(4 * duration, 1);
  EXPECT_FALSE(frames.holds(3 * duration));
  EXPECT_TRUE(frames.holds(4 * duration));
  frames = framesOf(10, 1);
  frames.trim(4 * duration, -1);
  EXPECT_TRUE(frames.holds(5 * duration)) << "the latest there stays";
  EXPECT_FALSE(frames.holds(6 * duration));
}

}  // namespace
}  // namespace player

#include <limits>

#include <gtest/gtest.h>

#include "movie/SoundTimeline.h"

namespace movie {
namespace {

constexpr std::int32_t normal = 0x10000;
constexpr std::int64_t silence = -1;
constexpr int rate = 48000;

TrackInfo trackOf(std::vector<EditListEntry> edits, std::int32_t mediaTimeScale = rate) {
  TrackInfo track;
  track.mediaTimeScale = mediaTimeScale;
  track.edits = std::move(edits);
  return track;
}

struct Row {
  std::string what;
  std::vector<EditListEntry> edits;
  std::int32_t mediaTimeScale;
  std::int64_t frame;       ///< of the movie
  std::int64_t mediaFrame;  ///< or silence
  std::int64_t end;
};

TEST(SoundTimeline, FollowsTheEditList) {
  constexpr std::int64_t never = SoundTimeline::endless;
  const std::vector<EditListEntry> delayed{{600, -1, normal}, {1200, 0, normal}};
  const std::vector<EditListEntry> two{{600, 96000, normal}, {600, 0, normal}};
  const std::vector<Row> rows{
      {"no edits", {}, rate, 0, 0, never},
      {"no edits, later", {}, rate, 123456789, 123456789, never},
      {"before the beginning", {}, rate, -5, silence, 0},
      {"priming left out", {{600, 1024, normal}}, rate, 0, 1024, 48000},
      {"priming left out, later", {{600, 1024, normal}}, rate, 47999, 1024 + 47999, 48000},
      {"behind the last edit", {{600, 1024, normal}}, rate, 48000, silence, never},
      {"empty edit", delayed, rate, 47999, silence, 48000},
      {"after an empty edit", delayed, rate, 48000, 0, 144000},
      {"the first of two", two, rate, 10, 96010, 48000},
      {"the second of two", two, rate, 48001, 1, 96000},
      {"a dwell", {{600, 0, 0}, {600, 0, normal}}, rate, 5, silence, 48000},
      {"at twice the rate", {{600, 0, 2 * normal}}, rate, 5, silence, 48000},
      {"backwards", {{600, 0, -normal}}, rate, 5, silence, 48000},
      {"another media clock", {{600, 300, normal}}, 600, 0, 24000, 48000},
      {"an edit of no length", {{0, 7, normal}, {600, 9, normal}}, rate, 0, 9, 48000},
      {"only empty edits", {{600, -1, normal}}, rate, 48000, silence, never},
  };
  for (const Row& row : rows) {
    const SoundPiece piece = SoundTimeline(trackOf(row.edits, row.mediaTimeScale), 600, rate).at(row.frame);
    EXPECT_EQ(piece.mediaFrame.value_or(silence), row.mediaFrame) << row.what;
    EXPECT_EQ(piece.end, row.end) << row.what;
  }
}

// Edits of a third of a frame's unit each: what is rounded away must not add up.
TEST(SoundTimeline, DoesNotDriftOverManyEdits) {
  std::vector<EditListEntry> edits(3000, EditListEntry{1, 0, normal});
  const SoundTimeline timeline(trackOf(edits), 7, rate);
  const SoundPiece last = timeline.at(3000LL * rate / 7 - 1);
  EXPECT_EQ(last.end, (3000LL * rate + 3) / 7);
  EXPECT_TRUE(last.mediaFrame.has_value());
}

TEST(SoundTimeline, StandsTheLargestNumbers) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  constexpr std::int64_t latest = std::int64_t{1} << 62;
  const SoundTimeline timeline(trackOf({{most, latest, normal}, {most, -1, normal}, {5, 0, normal}}, 1), 1, 768000);
  const SoundPiece piece = timeline.at(0);
  ASSERT_TRUE(piece.mediaFrame.has_value());
  EXPECT_GT(*piece.mediaFrame, 0);
  EXPECT_GT(piece.end, 0);
  EXPECT_FALSE(timeline.at(SoundTimeline::endless - 1).mediaFrame.has_value());
}

}  // namespace
}  // namespace movie

#include <cmath>

#include <gtest/gtest.h>

#include "scan/TimeMap.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

struct Case {
  double sourceRate = 24, destRate = 24;
  TimeLine line;
  std::vector<std::int32_t> sources;  ///< of each frame of the destination
};

/// Of five frames in a row so many are mixtures.
TimeMap mapOf(const Case& given, std::size_t blended = 0) {
  Matches matches;
  for (const std::int32_t source : given.sources) {
    FrameMatch match;
    match.source = source;
    match.blended = matches.frames.size() % 5 < blended;
    matches.frames.push_back(match);
  }
  const PaintedRow source(std::vector<Shown>(5000), given.sourceRate);
  const PaintedRow dest(std::vector<Shown>(given.sources.size()), given.destRate);
  return timeMapOf(matches, source, dest, {given.line});
}

std::vector<std::int32_t> counted(std::int32_t first, std::int32_t count, double step = 1) {
  std::vector<std::int32_t> sources;
  for (std::int32_t i = 0; i < count; ++i)
    sources.push_back(first + static_cast<std::int32_t>(std::floor(i * step + 1e-9)));
  return sources;
}

TEST(TimeMap, OfAnExcerptIsOnePiece) {
  const TimeMap map = mapOf({.line = {1, 10}, .sources = counted(240, 500)});
  ASSERT_EQ(map.pieces.size(), 1U);
  EXPECT_EQ(map.pieces[0].pattern, Pattern::FrameForFrame);
  EXPECT_EQ(map.pieces[0].dest, (FrameRange{0, 500}));
  EXPECT_NEAR(map.pieces[0].line.offset, 10, 1e-9);
  EXPECT_EQ(map.pieces[0].agreement, 1);
  EXPECT_TRUE(map.dropped.empty());
  EXPECT_TRUE(map.unmatched.empty());
}

TEST(TimeMap, PartsWhereFramesAreDroppedAndNamesThem) {
  std::vector<std::int32_t> sources = counted(0, 300);
  for (const std::int32_t each : counted(326, 300)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, 0}, .sources = sources});
  ASSERT_EQ(map.pieces.size(), 2U);
  EXPECT_EQ(map.pieces[0].dest.end, 300U);
  EXPECT_NEAR(map.pieces[1].line.offset, 26 / 24.0, 1e-9);
  EXPECT_EQ(map.pieces[1].line.rate, 1);
  ASSERT_EQ(map.dropped.size(), 1U);
  EXPECT_EQ(map.dropped[0].source, (FrameRange{300, 326}));
  EXPECT_EQ(map.dropped[0].before, 300U);
}

TEST(TimeMap, NamesASingleDroppedFrame) {
  std::vector<std::int32_t> sources = counted(0, 100);
  for (const std::int32_t each : counted(101, 100)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, 0}, .sources = sources});
  ASSERT_EQ(map.dropped.size(), 1U);
  EXPECT_EQ(map.dropped[0].source, (FrameRange{100, 101}));
}

TEST(TimeMap, TellsAPictureThatIsHeld) {
  std::vector<std::int32_t> sources = counted(0, 100);
  sources.insert(sources.end(), 24, 99);
  for (const std::int32_t each : counted(100, 200)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, 0}, .sources = sources});
  ASSERT_EQ(map.pieces.size(), 3U);
  EXPECT_EQ(map.pieces[0].dest, (FrameRange{0, 100}));
  EXPECT_EQ(map.pieces[1].dest, (FrameRange{100, 124}));
  EXPECT_EQ(map.pieces[1].line, (TimeLine{0, 99 / 24.0}));
  EXPECT_EQ(map.pieces[1].pattern, Pattern::Duplicated);
  EXPECT_EQ(map.pieces[2].dest, (FrameRange{124, 324}));
  EXPECT_EQ(map.pieces[2].line, (TimeLine{1, -1}));
  EXPECT_TRUE(map.dropped.empty());
}

TEST(TimeMap, TellsAPictureThatIsHeldAsOneThoughItsNeighbourWasTakenForIt) {
  std::vector<std::int32_t> sources = counted(0, 100);
  sources.insert(sources.end(), 12, 99);
  sources.insert(sources.end(), 12, 100);
  for (const std::int32_t each : counted(101, 200)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, 0}, .sources = sources});
  ASSERT_EQ(map.pieces.size(), 3U);
  EXPECT_EQ(map.pieces[1].dest, (FrameRange{100, 124}));
  EXPECT_EQ(map.pieces[1].line, (TimeLine{0, 99 / 24.0}));
}

TEST(TimeMap, TakesFramesThatAnotherRateShowsLongerForNoneThatAreHeld) {
  const TimeMap map = mapOf({.sourceRate = 6, .destRate = 60, .line = {1, 0}, .sources = counted(0, 900, 0.1)});
  ASSERT_EQ(map.pieces.size(), 1U);
  EXPECT_EQ(map.pieces[0].line.rate, 1);
}

TEST(TimeMap, DoesNotCallAShotDroppedThatIsShownElsewhere) {
  std::vector<std::int32_t> sources = counted(0, 300);
  for (const std::int32_t each : counted(100, 100)) sources.push_back(each);
  for (const std::int32_t each : counted(310, 200)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, 0}, .sources = sources});
  ASSERT_EQ(map.pieces.size(), 3U);
  ASSERT_EQ(map.dropped.size(), 1U);
  EXPECT_EQ(map.dropped[0].source, (FrameRange{300, 310}));
  EXPECT_EQ(map.dropped[0].before, 400U);
}

TEST(TimeMap, KnowsPatterns) {
  EXPECT_EQ(mapOf({.destRate = 25, .line = {25.0 / 24, 0}, .sources = counted(0, 500)}).pieces[0].pattern,
            Pattern::Retimed);
  EXPECT_EQ(mapOf({.destRate = 30, .line = {1, 0}, .sources = counted(0, 600, 0.8)}).pieces[0].pattern,
            Pattern::Duplicated);
  EXPECT_EQ(mapOf({.sourceRate = 30, .line = {1, 0}, .sources = counted(0, 480, 1.25)}).pieces[0].pattern,
            Pattern::Dropped);
  EXPECT_EQ(mapOf({.destRate = 25, .line = {1, 0}, .sources = counted(0, 500, 0.96)}, 3).pieces[0].pattern,
            Pattern::Blended);
  EXPECT_EQ(mapOf({.destRate = 30, .line = {1, 0}, .sources = counted(0, 600, 0.8)}, 3).pieces[0].pattern,
            Pattern::Blended);
  EXPECT_EQ(mapOf({.destRate = 30, .line = {1, 0}, .sources = counted(0, 600, 0.8)}, 2).pieces[0].pattern,
            Pattern::Pulldown);
}

TEST(TimeMap, CallsStepsOfOneFrameForFrameWhateverTheLengthsSuggest) {
  // An edit cuts the first frame, so that there are more frames a second; and it shows the same as the next one.
  EXPECT_EQ(mapOf({.destRate = 24.03, .line = {1, 0}, .sources = counted(0, 500)}).pieces[0].pattern,
            Pattern::FrameForFrame);
  std::vector<std::int32_t> twice{0};
  for (const std::int32_t each : counted(0, 499)) twice.push_back(each);
  EXPECT_EQ(mapOf({.destRate = 24.03, .line = {1, 0}, .sources = twice}).pieces[0].pattern, Pattern::FrameForFrame);
  EXPECT_EQ(mapOf({.destRate = 20, .line = {1, 0}, .sources = {7}}).pieces[0].pattern, Pattern::FrameForFrame);
}

TEST(TimeMap, OfARegularConversionIsOnePiece) {
  EXPECT_EQ(mapOf({.destRate = 30, .line = {1, 0}, .sources = counted(0, 600, 0.8)}).pieces.size(), 1U);
  EXPECT_EQ(mapOf({.sourceRate = 60, .line = {1, 0}, .sources = counted(0, 480, 2.5)}).pieces.size(), 1U);
}

TEST(TimeMap, TellsWhatHasNoCounterpart) {
  std::vector<std::int32_t> sources(48, -1);
  for (const std::int32_t each : counted(0, 300)) sources.push_back(each);
  const TimeMap map = mapOf({.line = {1, -2}, .sources = sources});
  EXPECT_EQ(map.unmatched, (std::vector<FrameRange>{{0, 48}}));
  ASSERT_EQ(map.pieces.size(), 1U);
  EXPECT_EQ(map.pieces[0].dest, (FrameRange{48, 348}));
}

}  // namespace
}  // namespace scan::test

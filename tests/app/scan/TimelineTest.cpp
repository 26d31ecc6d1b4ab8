// What the timeline shows, made of what a scan has found.

#include <cmath>

#include <gmock/gmock.h>

#include "app/scan/Timeline.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Ten frames a second.
FrameStarts framesOf(double seconds) {
  std::vector<std::int64_t> micros;
  for (int i = 0; i <= 10 * seconds; ++i) micros.push_back(i * 100000);
  return FrameStarts(micros);
}

scan::FrameMatch measured(double exponent) {
  scan::FrameMatch match;
  match.source = 1;
  match.logExponent = static_cast<float>(std::log(exponent));
  return match;
}

TEST(TimelineBin, KeepsMeanAndExtremesOfMeasuredFrames) {
  TimelineBin bin;
  bin.add(scan::FrameMatch{});
  scan::FrameMatch unmeasured;
  unmeasured.source = 3;
  bin.add(unmeasured);
  bin.add(measured(1.2));
  bin.add(measured(1.4));
  EXPECT_EQ(bin.frames, 4);
  EXPECT_EQ(bin.unmatched, 1);
  EXPECT_EQ(bin.measured, 2);
  EXPECT_NEAR(bin.mean(), (std::log(1.2) + std::log(1.4)) / 2, 1e-6);
  EXPECT_NEAR(std::exp(bin.logLow), 1.2, 1e-6);
  EXPECT_NEAR(std::exp(bin.logHigh), 1.4, 1e-6);
}

TEST(TimelineBin, IsFoundByATime) {
  EXPECT_EQ(binAt(0, 10), 0U);
  EXPECT_EQ(binAt(-1, 10), 0U);
  EXPECT_EQ(binAt(5, 10), timelineBins / 2);
  EXPECT_EQ(binAt(10, 10), timelineBins - 1);
  EXPECT_EQ(binAt(1, 0), 0U);
}

/// Of four bins a second each.
Timeline ofBins(const std::vector<TimelineBin>& bins) {
  Timeline timeline;
  timeline.seconds = timeline.done = 4;
  timeline.bins = bins;
  return timeline;
}

TEST(Timeline, TellsStretchesWithoutACounterpartWhileAScanGoesOn) {
  const TimelineBin without{.frames = 2, .unmatched = 2}, with{.frames = 2}, empty{};
  EXPECT_THAT(unmatchedBins(ofBins({without, without, with, without})),
              ElementsAre(TimelineStretch{0, 2}, TimelineStretch{3, 4}));
  EXPECT_THAT(unmatchedBins(ofBins({without, empty, with, with})), ElementsAre(TimelineStretch{0, 2}))
      << "few frames: a bin without any is what the one before it is";
  EXPECT_THAT(unmatchedBins(ofBins({with, empty, with, empty})), IsEmpty());
}

TEST(Timeline, TakesItsTimesFromTheFrames) {
  scan::ScanResult result;
  result.scanned = {0, 80};
  const auto causes = [](diagnosis::CauseKind kind) { return std::vector<diagnosis::Cause>{{.kind = kind}}; };
  result.segments = {{{20, 40}, {}, {}, causes(diagnosis::CauseKind::Same)},
                     {{40, 80}, {}, {}, causes(diagnosis::CauseKind::Power)}};
  result.map.pieces = {{{20, 60}, {}}, {{60, 80}, {}}};
  result.map.unmatched = {{0, 20}};
  result.unmeasured = {{.dest = {70, 80}, .why = scan::Unmeasured::Clipped}};
  result.worst = scan::WorstFrame{.frame = 45, .exponent = 1.3};
  const Timeline timeline = timelineOf(result, framesOf(10), {});
  EXPECT_EQ(timeline.seconds, 10);
  EXPECT_EQ(timeline.done, 8);
  ASSERT_EQ(timeline.segments.size(), 2U);
  EXPECT_EQ(timeline.segments[0].at, (TimelineStretch{2, 4}));
  EXPECT_FALSE(timeline.segments[0].differs);
  EXPECT_TRUE(timeline.segments[1].differs);
  EXPECT_THAT(timeline.unmatched, ElementsAre(TimelineStretch{0, 2}));
  EXPECT_EQ(timeline.unmeasured.at(0).at, (TimelineStretch{7, 8}));
  EXPECT_THAT(timeline.cuts, ElementsAre(6));
  ASSERT_TRUE(timeline.worst);
  EXPECT_EQ(timeline.worst->at, 4.5);
}

TEST(Timeline, MarksNoWorstFrameWhereAllAreAlike) {
  scan::ScanResult result;
  result.worst = scan::WorstFrame{.frame = 45, .exponent = 1.005};
  EXPECT_FALSE(timelineOf(result, framesOf(10), {}).worst);
}

}  // namespace

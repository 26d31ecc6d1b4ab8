// Times and exponents as places, and back.

#include <cmath>

#include <gmock/gmock.h>

#include "app/scan/TimelineGeometry.h"

namespace {

using testing::ElementsAre;

const QRectF plot(50, 20, 400, 100);

TEST(TimelineGeometry, PutsTimesFromLeftToRight) {
  const TimelineGeometry geometry(plot, 8, 2);
  const std::pair<double, double> rows[] = {{0, 50}, {2, 150}, {4, 250}, {8, 450}};
  for (const auto& [time, x] : rows) {
    EXPECT_DOUBLE_EQ(geometry.xOf(time), x);
    EXPECT_DOUBLE_EQ(geometry.timeAt(x), time);
  }
  EXPECT_DOUBLE_EQ(geometry.xOf(-1), 50);
  EXPECT_DOUBLE_EQ(geometry.xOf(9), 450);
  EXPECT_DOUBLE_EQ(geometry.timeAt(3), 0) << "beside the plot";
  EXPECT_DOUBLE_EQ(geometry.timeAt(500), 8);
}

TEST(TimelineGeometry, HasNoTimesOfAMovieWithoutLength) {
  const TimelineGeometry geometry(plot, 0, 2);
  EXPECT_DOUBLE_EQ(geometry.xOf(3), 50);
  EXPECT_DOUBLE_EQ(geometry.timeAt(300), 0);
}

TEST(TimelineGeometry, PutsDarkerAboveAndLighterBelowTheMiddle) {
  const TimelineGeometry geometry(plot, 8, 2);
  const std::pair<double, double> rows[] = {{1, 70}, {2, 20}, {0.5, 120}, {std::sqrt(2), 45}, {4, 20}, {0.1, 120}};
  for (const auto& [exponent, y] : rows) EXPECT_NEAR(geometry.yOf(std::log(exponent)), y, 1e-9) << exponent;
}

TEST(TimelineGeometry, LeavesNoStretchTooNarrowToBeSeen) {
  const TimelineGeometry geometry(plot, 8, 2);
  EXPECT_EQ(geometry.columnOf({2, 4}), QRectF(150, 20, 100, 100));
  EXPECT_EQ(geometry.columnOf({2, 2.001}), QRectF(150, 20, 3, 100));
  EXPECT_EQ(geometry.columnOf({7.999, 8}), QRectF(447, 20, 3, 100)) << "and none beyond the end";
}

TEST(TimelineGeometry, HasRoomForBandsCurveAndScale) {
  const TimelineRooms rooms = roomsIn({600, 120}, 16, 40);
  EXPECT_GE(rooms.bands.height(), 16);
  EXPECT_GT(rooms.plot.top(), rooms.bands.bottom());
  EXPECT_LE(rooms.plot.bottom() + 16 / 2, 120) << "of the lowest number half stands below";
  EXPECT_GT(rooms.plot.left(), rooms.scale.right());
  EXPECT_GE(rooms.scale.width(), 40);
  EXPECT_LE(rooms.plot.right(), 600);
  EXPECT_GT(roomsIn({10, 10}, 16, 40).plot.height(), 0) << "however little there is";
}

TEST(TimelineGeometry, WidensItsScaleWithTheExponents) {
  const std::pair<double, double> rows[] = {{1, 1.1}, {1.05, 1.1}, {1.2, 1.25}, {0.8, 1.5}, {1.9, 3}, {40, 10}};
  for (const auto& [exponent, reach] : rows) {
    Timeline timeline;
    timeline.bins = {{.frames = 2, .measured = 2, .logSum = 2 * std::log(exponent)}};
    EXPECT_DOUBLE_EQ(reachOf(timeline), reach) << exponent;
  }
  Timeline onlyWorst;
  onlyWorst.worst = TimelineWorst{1, 1.4};
  EXPECT_DOUBLE_EQ(reachOf(onlyWorst), 1.5);
}

Timeline example() {
  Timeline timeline;
  timeline.seconds = 12;
  timeline.done = 11;
  timeline.segments = {{{2, 6}, false, {}, {}}, {{6, 10}, true, {}, {}}};
  timeline.unmatched = {{0, 2}};
  timeline.unmeasured = {{{7, 8}, scan::Unmeasured::Dark}};
  timeline.cuts = {6, 9};
  return timeline;
}

TEST(TimelinePlace, TellsWhatATimeLiesIn) {
  const Timeline timeline = example();
  EXPECT_EQ(placeAt(timeline, 1).unmatched, &timeline.unmatched[0]);
  EXPECT_EQ(placeAt(timeline, 2).unmatched, nullptr);
  EXPECT_EQ(placeAt(timeline, 2).segment, &timeline.segments[0]);
  EXPECT_EQ(placeAt(timeline, 6).number, 2U) << "the first of its frames is the second's";
  EXPECT_EQ(placeAt(timeline, 7.5).unmeasured, &timeline.unmeasured[0]);
  EXPECT_EQ(placeAt(timeline, 10.5).segment, nullptr);
  EXPECT_TRUE(placeAt(timeline, 10.5).isScanned);
  EXPECT_FALSE(placeAt(timeline, 11.5).isScanned);
}

TEST(TimelinePlace, KnowsTheNextBoundary) {
  const Timeline timeline = example();
  EXPECT_THAT(boundariesOf(timeline), ElementsAre(0, 2, 6, 7, 8, 9, 10));
  EXPECT_EQ(boundaryAfter(timeline, 0, 0.01), 2);
  EXPECT_EQ(boundaryAfter(timeline, 1.995, 0.01), 6) << "it is there as good as already";
  EXPECT_EQ(boundaryAfter(timeline, 10, 0.01), std::nullopt);
  EXPECT_EQ(boundaryBefore(timeline, 6.005, 0.01), 2);
  EXPECT_EQ(boundaryBefore(timeline, 12, 0.01), 10);
  EXPECT_EQ(boundaryBefore(timeline, 0, 0.01), std::nullopt);
}

TEST(TimelinePlace, HasNoBoundaryWhereTheMovieEnds) {
  Timeline timeline;
  timeline.seconds = timeline.done = 5;
  timeline.segments = {{{0, 5}, true, {}, {}}};
  EXPECT_THAT(boundariesOf(timeline), ElementsAre(0));
}

}  // namespace

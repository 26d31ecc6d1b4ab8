// The timeline under the hand.

#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/scan/ScanFixture.h"

namespace {

class ATimeline : public testing::Test {
 protected:
  ATimeline() {
    Timeline timeline;
    timeline.seconds = timeline.done = 10;
    timeline.segments = {{{2, 6}, false, "the same", "the same"}, {{6, 10}, true, "darker", "darker (sure by 99 %)"}};
    timeline.unmatched = {{0, 2}};
    view_.setTimeline(timeline);
    view_.resize(600, 120);
    view_.show();
  }
  double chosen() { return chosen_.isEmpty() ? -1 : chosen_.takeLast().at(0).toDouble(); }
  bool isKept(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers);
    event.ignore();
    QCoreApplication::sendEvent(&view_, &event);
    return event.isAccepted();
  }
  QImage painted(const QPalette& palette = QPalette()) {
    view_.setPalette(palette);
    return view_.grab().toImage();
  }

  TimelineView view_;
  QSignalSpy chosen_{&view_, &TimelineView::placeChosen};
};

TEST_F(ATimeline, ChoosesThePlaceThatIsClicked) {
  for (const double time : {0.0, 3.0, 9.5}) {
    QTest::mouseClick(&view_, Qt::LeftButton, Qt::NoModifier, QPoint(qRound(view_.xOf(time)), 60));
    EXPECT_NEAR(chosen(), time, 0.02);
  }
  QTest::mouseClick(&view_, Qt::RightButton);
  EXPECT_EQ(chosen(), -1);
}

TEST_F(ATimeline, GoesFromBoundaryToBoundaryByKeys) {
  struct Row {
    Qt::Key key;
    double from, to;
  };
  const Row rows[] = {{Qt::Key_Right, 0, 2},  {Qt::Key_Right, 2.5, 6}, {Qt::Key_Left, 6, 2}, {Qt::Key_Left, 0, -1},
                      {Qt::Key_Right, 7, -1}, {Qt::Key_Home, 7, 0},    {Qt::Key_End, 7, 10}, {Qt::Key_Return, 7, 7}};
  for (const Row& row : rows) {
    view_.setPlayhead(row.from);
    QTest::keyClick(&view_, row.key);
    EXPECT_EQ(chosen(), row.to) << row.key << " from " << row.from;
  }
}

TEST_F(ATimeline, ShowsWhereTheMovieIs) {
  const auto differsAt = [](const QImage& one, const QImage& other, double x) {
    const int column = qRound(x * one.devicePixelRatio());
    int rows = 0;
    for (int y = 0; y < one.height(); ++y) rows += one.pixel(column, y) != other.pixel(column, y) ? 1 : 0;
    return 2 * rows > one.height();
  };
  view_.setPlayhead(3);
  const QImage before = painted();
  view_.setPlayhead(7);
  const QImage after = painted();
  EXPECT_TRUE(differsAt(before, after, view_.xOf(3)));
  EXPECT_TRUE(differsAt(before, after, view_.xOf(7)));
  EXPECT_FALSE(differsAt(before, after, view_.xOf(5)));
}

TEST_F(ATimeline, KeepsItsKeysFromTheWindow) {
  for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_Return}) {
    EXPECT_TRUE(isKept(key)) << key;
    EXPECT_FALSE(isKept(key, Qt::ControlModifier)) << key;
  }
  EXPECT_FALSE(isKept(Qt::Key_Space));
}

TEST_F(ATimeline, IsToldToScreenReaders) {
  EXPECT_EQ(view_.accessibleName(), "Timeline of the scan");
  EXPECT_TRUE(view_.accessibleDescription().contains("darker (sure by 99 %)"));
  EXPECT_TRUE(view_.accessibleDescription().contains("no counterpart in the source"));
}

TEST_F(ATimeline, IsFaintWhereItHoldsNoLonger) {
  const QImage holding = painted();
  view_.setHolds(false);
  EXPECT_NE(painted(), holding);
  view_.setHolds(true);
  EXPECT_EQ(painted(), holding);
}

TEST_F(ATimeline, TellsStretchesApartWithoutColour) {
  Timeline timeline = view_.timeline();
  timeline.unmeasured = {{{0, 2}, scan::Unmeasured::Dark}};
  timeline.unmatched.clear();
  const QImage unmatched = painted().convertToFormat(QImage::Format_Grayscale8);
  view_.setTimeline(timeline);
  EXPECT_NE(painted().convertToFormat(QImage::Format_Grayscale8), unmatched);
}

TEST_F(ATimeline, ShowsNothingOfNothing) {
  view_.setTimeline({});
  QTest::mouseClick(&view_, Qt::LeftButton);
  QTest::keyClick(&view_, Qt::Key_Right);
  EXPECT_EQ(chosen(), -1);
  EXPECT_FALSE(painted().isNull());
}

}  // namespace

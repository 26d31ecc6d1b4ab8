#include <QLineEdit>
#include <QSlider>
#include <QTest>

#include "app/widgets/TransportBar.h"
#include "tests/app/WindowFixture.h"

namespace {

class Transport : public WindowFixture {
 protected:
  Transport() {
    launch();
    load(plainMovie(), retaggedMovie());
  }
  TransportBar& bar() { return *interface().source.transport; }
  QString timecode() { return interface().source.timecodeText->text(); }
  double rate() { return sourceView().movie()->rate(); }
};

TEST_F(Transport, ShowsAPictureAtTheSizeOfTheView) {
  ASSERT_TRUE(waitUntil([&] { return !sourceView().picture().isNull(); }));
  const double shape = static_cast<double>(sourceView().picture().width()) / sourceView().picture().height();
  EXPECT_NEAR(shape, 16.0 / 9, 0.02);
  EXPECT_LE(sourceView().picture().width(), sourceView().width() * sourceView().devicePixelRatioF());
  interface().window().resize(interface().window().size() + QSize(200, 200));
  ASSERT_TRUE(waitUntil([&] {
    const QSize picture = sourceView().picture().size(), view = sourceView().size() * sourceView().devicePixelRatioF();
    return picture.width() == view.width() || picture.height() == view.height();
  }));
}

TEST_F(Transport, ShowsADifferenceInTags) {
  load(gammaMovie("2.2"), gammaMovie("1.8"));
  ASSERT_TRUE(waitUntil([&] { return !sourceView().picture().isNull() && !destView().picture().isNull(); }));
  EXPECT_NE(sourceView().picture(), destView().picture());
  load(gammaMovie("2.2"), gammaMovie("2.2"));
  ASSERT_TRUE(waitUntil([&] { return !sourceView().picture().isNull() && !destView().picture().isNull(); }));
  EXPECT_EQ(sourceView().picture(), destView().picture());
}

TEST_F(Transport, StepsAndPlaysByItsButtons) {
  QTest::mouseClick(bar().stepForwardButton, Qt::LeftButton);
  QTest::mouseClick(bar().stepForwardButton, Qt::LeftButton);
  EXPECT_EQ(timecode(), "01:00:00:02");
  QTest::mouseClick(bar().stepBackButton, Qt::LeftButton);
  EXPECT_EQ(timecode(), "01:00:00:01");
  QTest::mouseClick(bar().playButton, Qt::LeftButton);
  EXPECT_EQ(rate(), 1);
  EXPECT_EQ(bar().playButton->glyph(), Glyph::Pause);
  QTest::mouseClick(bar().playButton, Qt::LeftButton);
  EXPECT_EQ(rate(), 0);
  EXPECT_EQ(bar().playButton->glyph(), Glyph::Play);
}

TEST_F(Transport, PlaysFromTheBeginningAfterTheEnd) {
  sourceView().gotoEnd();
  EXPECT_EQ(bar().scrubber->value(), bar().scrubber->maximum());
  EXPECT_EQ(timecode(), "01:00:01:24");
  sourceView().togglePlaying();
  EXPECT_EQ(rate(), 1);
  EXPECT_LT(sourceView().position(), 0.5);
}

TEST_F(Transport, StopsAtTheEndAndAtTheBeginning) {
  sourceView().movie()->setCurrentTime({18, 10, 0});
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] { return rate() == 0; }));
  EXPECT_EQ(timecode(), "01:00:01:24");
  sourceView().movie()->setCurrentTime({2, 10, 0});
  sourceView().play(-1);
  ASSERT_TRUE(waitUntil([&] { return rate() == 0; }));
  EXPECT_EQ(timecode(), "01:00:00:00");
}

TEST_F(Transport, FollowsTheHandOnTheScrubber) {
  QSlider& scrubber = *bar().scrubber;
  const QPoint middle(scrubber.width() / 2, scrubber.height() / 2);
  QTest::mousePress(&scrubber, Qt::LeftButton, Qt::NoModifier, middle);
  EXPECT_NEAR(sourceView().position(), 0.5, 0.03);
  QTest::mouseMove(&scrubber, {scrubber.width() * 3 / 4, middle.y()});
  EXPECT_NEAR(sourceView().position(), 0.75, 0.03);
  QTest::mouseMove(&scrubber, {scrubber.width() * 5, middle.y()});
  EXPECT_EQ(timecode(), "01:00:01:24");
  QTest::mouseRelease(&scrubber, Qt::LeftButton, Qt::NoModifier, middle);
}

TEST_F(Transport, GoesOnPlayingWhenTheHandLeavesTheScrubber) {
  QSlider& scrubber = *bar().scrubber;
  const QPoint left(scrubber.width() / 10, scrubber.height() / 2);
  sourceView().play(1);
  QTest::mousePress(&scrubber, Qt::LeftButton, Qt::NoModifier, left);
  EXPECT_EQ(rate(), 0);
  QTest::mouseRelease(&scrubber, Qt::LeftButton, Qt::NoModifier, left);
  EXPECT_EQ(rate(), 1);
}

TEST_F(Transport, ShowsTheLastOfManySeeks) {
  load(longMovie(), longNtscMovie());
  for (int i = 0; i <= 200; ++i) sourceView().scrubTo((i * 37 % 101) / 100.0);
  sourceView().scrubTo(0.25);
  ASSERT_TRUE(waitUntil([&] { return !sourceView().picture().isNull(); }));
  runFor(300);
  const QImage after = sourceView().picture();
  load(longMovie(), longNtscMovie());
  sourceView().scrubTo(0.25);
  runFor(300);
  EXPECT_EQ(sourceView().picture(), after);
}

TEST_F(Transport, IsOffWithoutAMovie) {
  controller().loadQTMovieWithPath("/nowhere", "source");
  EXPECT_FALSE(bar().playButton->isEnabled());
  EXPECT_FALSE(bar().scrubber->isEnabled());
  sourceView().togglePlaying();
  sourceView().stepFrames(1);
  sourceView().scrubTo(0.5);
}

TEST_F(Transport, TellsWhyItIsOffAndNothingOfItWhileItPlays) {
  class Counted : public QObject {
   public:
    int toolTips = 0;
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
      toolTips += event->type() == QEvent::ToolTipChange ? 1 : 0;
      return false;
    }
  } counted;
  for (QWidget* each : {static_cast<QWidget*>(bar().stepForwardButton), static_cast<QWidget*>(bar().scrubber)}) {
    each->installEventFilter(&counted);
  }
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] { return movie::secondsOf(sourceView().movie()->currentTime()) > 0.2; }));
  EXPECT_EQ(counted.toolTips, 0);
  controller().loadQTMovieWithPath("/nowhere", "source");
  EXPECT_EQ(counted.toolTips, 2);
  EXPECT_EQ(bar().scrubber->toolTip(), "There is no movie.");
  EXPECT_EQ(bar().stepForwardButton->toolTip().section('\n', 1), "There is no movie.");
  load(plainMovie(), retaggedMovie());
  EXPECT_EQ(bar().scrubber->toolTip(), "");
  EXPECT_EQ(bar().stepForwardButton->toolTip().section('\n', 1), "");
}

TEST_F(Transport, MutesAndComesBackToItsVolume) {
  sourceView().setVolume(0.6);
  QTest::mouseClick(bar().muteButton, Qt::LeftButton);
  EXPECT_EQ(sourceView().volume(), 0);
  EXPECT_EQ(bar().muteButton->glyph(), Glyph::Silence);
  QTest::mouseClick(bar().muteButton, Qt::LeftButton);
  EXPECT_EQ(sourceView().volume(), 0.6);
  EXPECT_EQ(bar().volumeSlider->value(), 60);
}

TEST_F(Transport, SaysThatAMovieHasNoPictures) {
  controller().loadQTMovieWithPath(soundMovie(), "source");
  EXPECT_EQ(sourceView().message(), "This movie has no pictures.");
}

}  // namespace

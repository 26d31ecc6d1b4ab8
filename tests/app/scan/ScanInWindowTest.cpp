// The scan in the window, from its button to its end.

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include "app/scan/ScanRun.h"
#include "app/verdict/VerdictStrip.h"
#include "app/widgets/ResultsView.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/scan/ScanFixture.h"
#include "tests/support/MovieFixture.h"

namespace {

using testing::IsEmpty;
using testing::SizeIs;

using TheScan = ScanFixture;

constexpr double frame = 1.0 / 24;

int threads() {
  return static_cast<int>(QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

TEST_F(TheScan, CanBeginOnceThereAreTwoMovies) {
  EXPECT_FALSE(interface().scanBtn->isEnabled());
  EXPECT_FALSE(menuAction("scan").isEnabled());
  EXPECT_TRUE(interface().scanBtn->toolTip().endsWith("There are no movies."));
  EXPECT_FALSE(strip().isVisible());
  load(reelMovie(), darkerFromMovie());
  EXPECT_TRUE(interface().scanBtn->isEnabled());
  EXPECT_TRUE(menuAction("scan").isEnabled());
  EXPECT_FALSE(strip().isVisible()) << "not in the way before";
}

/// They grow on another thread.
TEST_F(TheScan, ShowsNobodyTheMatchesThemselves) {
  const auto opened = [](const QString& path) { return *movie::Movie::movieWithFile(path.toStdString()); };
  ScanRun run({opened(reelMovie()), opened(darkerFromMovie())});
  int looks = 0;
  for (; run.isRunning() && looks < 10000; ++looks) {
    QTest::qWait(5);
    EXPECT_EQ(run.report().progress.matches, nullptr);
  }
  ASSERT_TRUE(run.end());
  EXPECT_TRUE(run.end()->result.matches.frames.empty());
  EXPECT_TRUE(run.wholeMap() != nullptr);
}

TEST_F(TheScan, FindsSegmentsAndShowsThemOnTheTimeline) {
  scan(reelMovie(), darkerFromMovie());
  EXPECT_EQ(headline().toStdString().substr(0, 60), "Scan: Gamma shift: the destination is darker, by an exponent");
  EXPECT_EQ(strip().view().kind, MessageKind::Failure);
  const Timeline& shown = timeline().timeline();
  ASSERT_THAT(shown.segments, SizeIs(2));
  EXPECT_FALSE(shown.segments[0].differs);
  EXPECT_TRUE(shown.segments[1].differs);
  EXPECT_NEAR(shown.segments[1].at.from, 7, 2 * frame);
  EXPECT_TRUE(shown.segments[1].word.contains("exponent 1.2")) << shown.segments[1].word.toStdString();
  ASSERT_TRUE(shown.worst);
  EXPECT_GE(shown.worst->at, 6.9);
  EXPECT_TRUE(strip().isVisible());
  EXPECT_TRUE(said().text.startsWith("Scanned \"")) << said().text.toStdString();
  EXPECT_THAT(interface().resultsView->toPlainText().toStdString(), IsEmpty()) << "the report is the check's";
}

TEST_F(TheScan, TellsHowFarItIsAndCanBeCancelled) {
  begin(longReelMovie(), longReelMovie());
  EXPECT_EQ(interface().scanBtn->text(), "Cancel Scan");
  EXPECT_EQ(menuAction("scan").text().remove('&'), "Cancel Scan");
  EXPECT_TRUE(strip().isVisible());
  waitForFrames();
  EXPECT_TRUE(headline().startsWith("Scanning: ")) << headline().toStdString();
  EXPECT_TRUE(headline().contains("real time")) << headline().toStdString();
  EXPECT_TRUE(headline().contains(" left")) << headline().toStdString();
  EXPECT_LT(timeline().timeline().done, timeline().timeline().seconds);
  QTest::mouseClick(interface().scanBtn, Qt::LeftButton);
  ASSERT_TRUE(waitUntil([this] { return !isScanning(); }));
  EXPECT_EQ(interface().scanBtn->text(), "Scan");
  EXPECT_TRUE(headline().startsWith("Scan, as far as it came: ")) << headline().toStdString();
  EXPECT_EQ(said().text, "The scan was cancelled. The timeline shows what was found until then.");
  EXPECT_GT(timeline().timeline().done, 0);
}

TEST_F(TheScan, LeavesTheRestOfTheWindowUsable) {
  begin(longReelMovie(), longReelMovie());
  waitForFrames();
  destView().stepFrames(3);
  EXPECT_NEAR(sourceSeconds(), 3 * frame, 1e-3) << "the link stays what it is";
  choose("check");
  EXPECT_FALSE(interface().resultsView->toPlainText().isEmpty());
  EXPECT_TRUE(isScanning());
}

TEST_F(TheScan, EndsWithTheMovieThatGoes) {
  load(longReelMovie(), longReelMovie());
  runFor(300);
  const int before = threads();
  QTest::mouseClick(interface().scanBtn, Qt::LeftButton);
  waitForFrames();
  EXPECT_GT(threads(), before);
  QElapsedTimer since;
  since.start();
  controller().loadQTMovieWithPath(darkerFromMovie(), "dest");
  EXPECT_LT(since.elapsed(), 30000);
  EXPECT_EQ(controller().scanRun(), nullptr);
  EXPECT_FALSE(strip().isVisible());
  EXPECT_EQ(interface().scanBtn->text(), "Scan");
  EXPECT_TRUE(said().text.contains("The scan was given up.")) << said().text.toStdString();
  EXPECT_TRUE(waitUntil([&] { return threads() <= before; }));
}

TEST_F(TheScan, EndsWithTheWindow) {
  begin(longReelMovie(), longReelMovie());
  waitForFrames();
  QElapsedTimer since;
  since.start();
  makeController();
  EXPECT_LT(since.elapsed(), 30000);
  runFor(200);  // nothing comes into what is gone
}

TEST_F(TheScan, GoesWhenAMovieIsEmptied) {
  scan(reelMovie(), darkerFromMovie());
  controller().loadQTMovieWithPath("/nowhere", "source");
  EXPECT_EQ(controller().scanRun(), nullptr);
  EXPECT_FALSE(strip().isVisible());
  EXPECT_FALSE(interface().scanBtn->isEnabled());
}

TEST_F(TheScan, TakesBothMoviesToTheSamePicture) {
  scan(reelMovie(), leaderMovie());
  clickAt(5);
  EXPECT_NEAR(destSeconds(), 5, 0.1);
  EXPECT_NEAR(sourceSeconds(), destSeconds() - 2, frame / 2);
  EXPECT_EQ(said().text, "");
}

TEST_F(TheScan, TakesTheDestinationAloneWhereThereIsNoCounterpart) {
  scan(reelMovie(), leaderMovie());
  ASSERT_THAT(timeline().timeline().unmatched, SizeIs(1));
  EXPECT_NEAR(timeline().timeline().unmatched[0].to, 2, 2 * frame);
  sourceView().stepFrames(7);
  clickAt(1);
  EXPECT_NEAR(destSeconds(), 1, 0.1);
  EXPECT_NEAR(sourceSeconds(), 7 * frame, 1e-3);
  EXPECT_EQ(said().kind, MessageKind::Warning);
  EXPECT_TRUE(said().text.startsWith("The destination shows nothing of the source at 00:00:0"))
      << said().text.toStdString();
}

TEST_F(TheScan, LinksMoviesOfAnyLengthByItsMap) {
  load(reelMovie(), leaderMovie());
  EXPECT_FALSE(interface().linkBtn->isEnabled());
  scan(reelMovie(), leaderMovie());
  EXPECT_TRUE(interface().linkBtn->isEnabled());
  EXPECT_TRUE(interface().linkBtn->isChecked());
  sourceView().movie()->setCurrentTime({4, 1, 0});
  EXPECT_NEAR(destSeconds(), 6, frame / 2);
  destView().stepFrames(-24);
  EXPECT_NEAR(sourceSeconds(), 3, frame / 2);
  destView().movie()->setCurrentTime({1, 1, 0});
  EXPECT_NEAR(sourceSeconds(), 3, frame / 2) << "the leader has no counterpart: it stays";
  interface().linkBtn->setChecked(false);
  sourceView().movie()->setCurrentTime({8, 1, 0});
  EXPECT_NEAR(destSeconds(), 1, 1e-3);
}

TEST_F(TheScan, TakesItsLinkAlong) {
  scan(reelMovie(), leaderMovie());
  controller().loadQTMovieWithPath("/nowhere", "dest");
  EXPECT_FALSE(interface().linkBtn->isEnabled());
  load(reelMovie(), darkerFromMovie());
  EXPECT_TRUE(interface().linkBtn->isChecked()) << "of the same length";
  sourceView().movie()->setCurrentTime({4, 1, 0});
  EXPECT_NEAR(destSeconds(), 4, 1e-3);
}

TEST_F(TheScan, TellsWhetherThePlayheadsShowTheSame) {
  scan(reelMovie(), leaderMovie());
  sourceView().movie()->setCurrentTime({4, 1, 0});
  EXPECT_THAT(interface().verdictStrip->view().notes, IsEmpty()) << "though they are two seconds apart";
  interface().linkBtn->setChecked(false);
  destView().stepFrames(5);
  EXPECT_THAT(interface().verdictStrip->view().notes, SizeIs(1));
  runFor(1);
  QTest::mouseClick(&interface().verdictStrip->button(VerdictAction::SameMoment), Qt::LeftButton);
  EXPECT_NEAR(destSeconds(), 6, frame / 2);
}

TEST_F(TheScan, IsOutOfDateOnceTagsAreSynced) {
  QTimer answers;
  answers.callOnTimeout([] {
    if (QWidget* const alert = QApplication::activeModalWidget()) alert->close();
  });
  answers.start(10);
  scan(plainMovie(), retaggedMovie());
  EXPECT_TRUE(strip().view().holds());
  controller().syncMetadata();
  EXPECT_FALSE(strip().view().holds());
  EXPECT_EQ(strip().findChild<QLabel*>("scanNote")->text(), "Out of date: the destination's metadata changed.");
  ASSERT_NE(controller().scanRun(), nullptr) << "what was found stays";
  EXPECT_NE(controller().scanRun()->wholeMap(), nullptr) << "no time has changed";
}

TEST_F(TheScan, StaysWhileOnlyPlayheadsMove) {
  scan(reelMovie(), darkerFromMovie());
  destView().stepFrames(30);
  EXPECT_TRUE(strip().view().holds());
  EXPECT_NEAR(timeline().playhead(), 30 * frame, 1e-3);
  EXPECT_TRUE(strip().findChild<QLabel*>("scanPlace")->text().startsWith("00:00:00:00 – 00:00:07:0"))
      << strip().findChild<QLabel*>("scanPlace")->text().toStdString();
}

TEST_F(TheScan, TellsOtherPicturesWithoutANumber) {
  scan(reelMovie(), longMovie());
  EXPECT_THAT(timeline().timeline().segments, IsEmpty());
  EXPECT_EQ(strip().view().kind, MessageKind::Warning);
  EXPECT_EQ(controller().scanRun()->wholeMap(), nullptr);
  EXPECT_FALSE(interface().linkBtn->isEnabled());
}

TEST_F(TheScan, TellsWhereASideCannotBeReadOn) {
  QFile whole(indexFirstMovie());
  ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
  const QByteArray bytes = whole.read(whole.size() * 6 / 10);
  QFile cut(home_.filePath("cut.mov"));
  ASSERT_TRUE(cut.open(QIODevice::WriteOnly) && cut.write(bytes) == bytes.size());
  cut.close();
  scan(reelMovie(), cut.fileName());
  EXPECT_TRUE(said().text.startsWith("The destination cannot be read from 00:00:0")) << said().text.toStdString();
  EXPECT_EQ(said().kind, MessageKind::Warning);
  EXPECT_TRUE(headline().startsWith("Scan, as far as it came: ")) << headline().toStdString();
  const Timeline& shown = timeline().timeline();
  EXPECT_GT(shown.done, 3);
  EXPECT_LT(shown.done, shown.seconds - 1);
  EXPECT_EQ(controller().scanRun()->wholeMap(), nullptr) << "who follows it would end there, too";
}

TEST_F(TheScan, TellsAMovieWithoutReadablePictures) {
  QFile whole(plainMovie());
  ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
  QByteArray bytes = whole.readAll();
  const qsizetype index = bytes.indexOf("mdat");
  bytes.replace(index + 4, 20000, QByteArray(20000, '\0'));
  QFile broken(home_.filePath("broken.mov"));
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly) && broken.write(bytes) == bytes.size());
  broken.close();
  scan(plainMovie(), broken.fileName());
  EXPECT_TRUE(said().text.startsWith("Nothing was scanned. ")) << said().text.toStdString();
  EXPECT_EQ(said().kind, MessageKind::Failure);
  EXPECT_FALSE(strip().isVisible());
  EXPECT_EQ(controller().scanRun(), nullptr);
}

TEST_F(TheScan, HasRoomInTheSmallestWindow) {
  QWidget& window = interface().window();
  window.resize(960, 640);
  scan(reelMovie(), darkerFromMovie());
  QTest::mouseClick(interface().checkBtn, Qt::LeftButton);
  runFor(50);
  EXPECT_EQ(window.size(), QSize(960, 640));
  for (const QWidget* part : {static_cast<QWidget*>(&timeline()), static_cast<QWidget*>(interface().saveAsBtn),
                              static_cast<QWidget*>(interface().resultsView)}) {
    EXPECT_TRUE(window.rect().contains(QRect(part->mapTo(&window, QPoint()), part->size())));
  }
  EXPECT_GE(timeline().height(), timeline().minimumSizeHint().height());
}

TEST_F(TheScan, LeavesTheMoviesTheirRoom) {
  load(reelMovie(), darkerFromMovie());
  runFor(20);
  const int before = destView().height();
  QTest::mouseClick(interface().scanBtn, Qt::LeftButton);
  runFor(50);
  EXPECT_TRUE(strip().isVisible());
  EXPECT_EQ(destView().height(), before);
}

TEST_F(TheScan, GivesItsRoomToThePicturesInFullScreen) {
  scan(reelMovie(), darkerFromMovie());
  menuAction("fullScreen").trigger();
  EXPECT_FALSE(strip().isVisible());
  menuAction("fullScreen").trigger();
  EXPECT_TRUE(strip().isVisible());
}

TEST_F(TheScan, BeginsAnewWhenAskedAgain) {
  scan(reelMovie(), darkerFromMovie());
  QTest::mouseClick(interface().scanBtn, Qt::LeftButton);
  EXPECT_TRUE(isScanning());
  EXPECT_THAT(timeline().timeline().segments, IsEmpty());
  ASSERT_TRUE(waitUntil([this] { return !isScanning(); }));
  EXPECT_THAT(timeline().timeline().segments, SizeIs(2));
}

}  // namespace

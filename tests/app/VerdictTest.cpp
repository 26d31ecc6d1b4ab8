// The verdict strip: what a check found, for as long as it holds.

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTest>
#include <QTimer>
#include <thread>

#include <gmock/gmock.h>

#include "app/verdict/CurvePicture.h"
#include "app/verdict/FactTable.h"
#include "app/verdict/VerdictStrip.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what a strip shows whenever it is painted.
class PaintedHeadlines : public QObject {
 public:
  QStringList all;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) all << static_cast<VerdictStrip*>(watched)->view().headline;
    return false;
  }
};

/// Notes what screen readers would be told.
class HeardStrip : public VerdictStrip {
 public:
  QStringList alerts;

 protected:
  void announce(QAccessibleEvent& event) override {
    EXPECT_EQ(event.accessibleInterface()->role(), QAccessible::AlertMessage);
    alerts << event.accessibleInterface()->text(QAccessible::Name);
  }
};

class TheVerdict : public WindowFixture {
 protected:
  TheVerdict() {
    launch();
    const QString exported = home_.filePath("export.mov");
    EXPECT_TRUE(QFile::copy(retaggedMovie(), exported) &&
                QFile::setPermissions(exported, QFile::ReadOwner | QFile::WriteOwner));
    QObject::connect(&answers_, &QTimer::timeout, [this] {
      QWidget* const alert = QApplication::activeModalWidget();
      if (alert == nullptr) return;
      beneathAlerts_ << headline();
      alert->close();
    });
    answers_.start(10);
  }

  VerdictStrip& strip() { return *interface().verdictStrip; }
  const VerdictView& view() { return strip().view(); }
  QString headline() { return strip().findChild<QLabel*>("verdictHeadline")->text(); }
  QColor textColorOf(const char* label) {
    return strip().findChild<QLabel*>(label)->palette().color(QPalette::WindowText);
  }
  void check() { QTest::mouseClick(interface().checkBtn, Qt::LeftButton); }
  void press(VerdictAction action) {
    runFor(1);
    ASSERT_TRUE(strip().button(action).isVisible());
    QTest::mouseClick(&strip().button(action), Qt::LeftButton);
  }
  void unlink() { interface().linkBtn->setChecked(false); }
  QString cell(int row, const char* column) {
    const FactTable& table = strip().facts();
    for (int i = 0; i < table.columnCount(); ++i) {
      if (table.horizontalHeaderItem(i)->text() == QLatin1String(column)) return table.item(row, i)->text();
    }
    return "no such column";
  }

  QTimer answers_;
  QStringList beneathAlerts_;  ///< what the strip said meanwhile
};

TEST_F(TheVerdict, IsWantingUntilTheFirstCheck) {
  EXPECT_EQ(headline(), "No verdict yet. There are no movies.");
  EXPECT_FALSE(strip().facts().isVisible());
  load(plainMovie(), darkerMovie());
  EXPECT_EQ(headline(), "No verdict yet. Go to the same picture in both movies, and press Check.");
  EXPECT_FALSE(strip().findChild<CurvePicture*>()->isVisible());
}

TEST_F(TheVerdict, TellsWhatACheckFoundAboveTheReport) {
  load(plainMovie(), darkerMovie());
  check();
  EXPECT_EQ(view().kind, MessageKind::Failure);
  EXPECT_TRUE(headline().contains("the destination is darker")) << headline().toStdString();
  EXPECT_TRUE(strip().findChild<CurvePicture*>()->isVisible());
  EXPECT_GT(view().curve.size(), 2U);
  runFor(1);
  EXPECT_LT(strip().mapTo(&interface().window(), QPoint()).y(),
            interface().resultsView->mapTo(&interface().window(), QPoint()).y());
  EXPECT_FALSE(interface().resultsView->toPlainText().contains(headline())) << "the report is as settled";
}

TEST_F(TheVerdict, ShowsBothMoviesPropertyByProperty) {
  load(plainMovie(), retaggedMovie());
  check();
  EXPECT_EQ(cell(0, "File"), plainMovie().section('/', -1));
  EXPECT_EQ(cell(1, "File"), retaggedMovie().section('/', -1));
  EXPECT_EQ(cell(0, "Time"), "01:00:00:00");
  EXPECT_EQ(cell(0, "Size"), "320 × 180");
  EXPECT_EQ(cell(1, "Rate"), "25");
  EXPECT_EQ(cell(1, "Gamma"), "≠ 1.8") << "marked by a sign, too";
  EXPECT_EQ(cell(0, "Gamma"), "2.2");
  EXPECT_EQ(cell(1, "Size"), "320 × 180") << "what is the same is not marked";
  const FactTable& table = strip().facts();
  for (int column = 0; column < table.columnCount(); ++column) {
    const bool differs = table.item(1, column)->text().startsWith(u'≠');
    for (const int row : {0, 1}) EXPECT_EQ(table.item(row, column)->font().bold(), differs) << row << ' ' << column;
  }
}

TEST_F(TheVerdict, IsGreenAndAsksForNothingWhereAllIsClear) {
  load(plainMovie(), plainMovie());
  check();
  EXPECT_EQ(view().kind, MessageKind::Success);
  EXPECT_EQ(headline(), "Identical: the destination's samples are the source's.");
  EXPECT_THAT(view().actions, IsEmpty());
}

TEST_F(TheVerdict, ShowsThatACheckIsGoingOn) {
  load(plainMovie(), darkerMovie());
  runFor(20);
  PaintedHeadlines painted;
  strip().installEventFilter(&painted);
  controller().checkAction();  // no event is handled meanwhile
  EXPECT_THAT(painted.all, ElementsAre("Comparing the two frames…"));
  runFor(20);
  EXPECT_THAT(painted.all, Contains(headline()));
}

TEST_F(TheVerdict, HoldsNoLongerOnceAPlayheadMovesAndAgainOnceItIsBack) {
  load(plainMovie(), darkerMovie());
  check();
  const QString found = headline();
  destView().stepFrames(1);  // the source follows
  EXPECT_FALSE(view().holds);
  EXPECT_EQ(view().kind, std::nullopt);
  EXPECT_THAT(view().notes, ElementsAre("Out of date: the source's playhead moved."));
  EXPECT_EQ(headline(), found);
  EXPECT_LT(textColorOf("verdictHeadline").alpha(), 255) << "faint";
  EXPECT_EQ(textColorOf("verdictNotes").alpha(), 255);
  destView().stepFrames(-1);
  EXPECT_TRUE(view().holds);
  EXPECT_EQ(view().kind, MessageKind::Failure);
  EXPECT_EQ(textColorOf("verdictHeadline").alpha(), 255);
}

TEST_F(TheVerdict, HoldsNoLongerOnceTagsAreSynced) {
  load(plainMovie(), home_.filePath("export.mov"));
  check();
  EXPECT_EQ(view().kind, MessageKind::Warning);
  press(VerdictAction::Sync);
  EXPECT_THAT(view().notes, ElementsAre("Out of date: the destination's metadata changed.",
                                        "The destination has changes that are not saved."));
  press(VerdictAction::Save);
  EXPECT_THAT(view().notes, ElementsAre("Out of date: the destination's metadata changed."));
  press(VerdictAction::Check);
  EXPECT_EQ(view().kind, MessageKind::Success);
  destView().stepFrames(1);
  EXPECT_FALSE(view().holds) << "the preview is a new one since the sync";
}

TEST_F(TheVerdict, HoldsNoLongerOnceAMovieIsAnother) {
  load(plainMovie(), darkerMovie());
  check();
  controller().loadQTMovieWithPath(darkerMovie(), "dest");
  EXPECT_THAT(view().notes, ElementsAre("Out of date: the destination is another movie."))
      << "the same file, but opened anew";
  press(VerdictAction::Check);
  EXPECT_TRUE(view().holds);
  QTest::mouseClick(interface().swapBtn, Qt::LeftButton);
  EXPECT_THAT(view().notes, ElementsAre("Out of date: the source is another movie."));
  check();
  EXPECT_TRUE(headline().contains("the destination is lighter")) << headline().toStdString();
}

TEST_F(TheVerdict, SaysThatThePlayheadsAreApartAndBringsThemTogether) {
  load(plainMovie(), darkerMovie());
  unlink();
  sourceView().stepFrames(5);
  EXPECT_THAT(view().notes, ElementsAre("The playheads are not at the same time.")) << "before any check";
  press(VerdictAction::SameMoment);
  EXPECT_THAT(view().notes, IsEmpty());
  EXPECT_EQ(interface().dest.timecodeText->text(), "01:00:00:05");
  EXPECT_EQ(said(), Message());
}

TEST_F(TheVerdict, SaysWhereTheDestinationDoesNotReach) {
  load(longMovie(), plainMovie());
  sourceView().scrubTo(0.5);
  press(VerdictAction::SameMoment);
  EXPECT_EQ(said().kind, MessageKind::Warning);
  EXPECT_TRUE(said().text.contains("does not reach")) << said().text.toStdString();
}

TEST_F(TheVerdict, GoesToAnotherFrameWhereNothingCanBeToldFromThisOne) {
  load(blackMovie(), blackMovie());
  check();
  EXPECT_EQ(headline(), "No verdict: the source frame is too dark.");
  EXPECT_EQ(view().kind, MessageKind::Warning);
  const QString before = interface().source.timecodeText->text();
  press(VerdictAction::AnotherFrame);
  EXPECT_NE(interface().source.timecodeText->text(), before);
  EXPECT_EQ(interface().source.timecodeText->text(), interface().dest.timecodeText->text());
  EXPECT_TRUE(view().holds) << "it compared there";
  for (int i = 0; i < 7; ++i) press(VerdictAction::AnotherFrame);
  EXPECT_TRUE(view().holds) << "round and round";
  EXPECT_EQ(QSet<QString>(beneathAlerts_.begin(), beneathAlerts_.end()), QSet{headline()}) << "it is there already";
}

TEST_F(TheVerdict, OpensTheManualForWhatNoButtonDoes) {
  load(plainMovie(), darkerMovie());
  check();
  press(VerdictAction::Manual);
  const bool isInstalled = !workspace_.opened.isEmpty();
  EXPECT_EQ(said().text, isInstalled ? "" : "The user manual is not installed.");
}

TEST_F(TheVerdict, SurvivesACheckOnAnotherThread) {
  load(plainMovie(), darkerMovie());
  bool done = false;
  std::thread thread([&] {
    controller().checkOnThread();
    QMetaObject::invokeMethod(&controller(), [&] { done = true; });
  });
  EXPECT_TRUE(waitUntil([&] { return done; }));
  thread.join();
  EXPECT_TRUE(headline().contains("the destination is darker")) << headline().toStdString();
  EXPECT_TRUE(view().holds);
}

TEST_F(TheVerdict, GivesItsRoomToThePicturesInFullScreen) {
  menuAction("fullScreen").trigger();
  EXPECT_FALSE(strip().isVisible());
  menuAction("fullScreen").trigger();
  EXPECT_TRUE(strip().isVisible());
}

TEST_F(TheVerdict, IsReadAtOnceByScreenReadersButNotTwice) {
  HeardStrip heard;
  const VerdictView found{.kind = MessageKind::Failure, .headline = "It is darker.", .notes = {"And so on."}};
  heard.setView(found);
  heard.setView(found);
  VerdictView more = found;
  more.actions = {VerdictAction::Save};
  heard.setView(more);
  EXPECT_THAT(heard.alerts, ElementsAre(QString("It is darker. And so on.")));
}

}  // namespace

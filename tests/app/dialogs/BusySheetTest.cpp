#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <thread>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/foundation/MainThread.h"
#include "app/dialogs/BusySheet.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"

namespace {

class BusySheets : public Alerts {
 protected:
  QDialog* sheet() {
    for (auto* const each : window_->findChildren<QDialog*>("busy")) {
      if (each->isVisible()) return each;
    }
    return nullptr;
  }
  /// Work that goes on until it is let go.
  void stay() const {
    while (!letGo_) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  /// The same for work that the user can stop, which tells how often it has looked.
  LongWork stoppable() {
    return {.work =
                [this](const std::stop_token& stop) {
                  for (; !letGo_ && !stop.stop_requested(); ++turns_) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
                  }
                  stopped_ = stop.stop_requested();
                },
            .progress = [this] { return turns_ == 0 ? QString("none") : QString("some"); }};
  }
  static QString lineOf(const QDialog& sheet) { return sheet.findChild<QLabel*>("progress")->text(); }
  static QPushButton* cancelButton(const QDialog& sheet) { return sheet.findChild<QPushButton*>(); }

  std::atomic<bool> letGo_ = false, stopped_ = false;
  std::atomic<int> turns_ = 0;
};

TEST_F(BusySheets, StayAwayFromShortWork) {
  bool seen = false, onMainThread = true;
  QTimer watch;
  watch.callOnTimeout([&] { seen = seen || sheet() != nullptr; });
  watch.start(1);
  runUnderBusySheet(*window_, "Working", {.work = [&](const auto&) { onMainThread = MainThread::isCurrent(); }});
  EXPECT_FALSE(seen);
  EXPECT_FALSE(onMainThread);
}

TEST_F(BusySheets, CoverTheWindowWhileWorkGoesOn) {
  when([&] { return sheet() != nullptr; },
       [&] {
         EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
         EXPECT_EQ(sheet()->findChild<QLabel*>()->text(), "Working");
         EXPECT_EQ(sheet()->findChild<QLabel*>("progress"), nullptr);
         EXPECT_EQ(sheet()->findChild<QProgressBar*>()->maximum(), 0);
         letGo_ = true;
       });
  EXPECT_FALSE(runUnderBusySheet(*window_, "Working", {.work = [this](const auto&) { stay(); }}));
  EXPECT_TRUE(letGo_);
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(BusySheets, GiveWayToWhatTheWorkAsks) {
  when([&] { return sheet() != nullptr; }, [&] { letGo_ = true; });
  bool alone = false;
  QTimer answer;
  answer.callOnTimeout([&] {
    if (shownPanels().empty() || sheet() != nullptr) return;
    alone = true;
    shownPanels().front()->defaultButton()->click();
  });
  answer.start(5);
  int code = 0;
  const auto work = [&](const std::stop_token& /*stop*/) {
    stay();
    code = ask("Go on?", nullptr);
  };
  runUnderBusySheet(*window_, "Working", {.work = work});
  EXPECT_TRUE(alone);
  EXPECT_EQ(code, 1);
}

TEST_F(BusySheets, DoNotComeUpBesideAQuestion) {
  bool seen = false;
  QTimer watch;
  watch.callOnTimeout([&] { seen = seen || sheet() != nullptr; });
  watch.start(5);
  QTimer::singleShot(700, [&] { shownPanels().front()->defaultButton()->click(); });
  runUnderBusySheet(*window_, "Working", {.work = [&](const auto&) { ask("Go on?", nullptr); }});
  EXPECT_FALSE(seen);
}

TEST_F(BusySheets, CloseWhatIsAskedWhenTheApplicationQuits) {
  int code = 1;  // the default button
  QTimer::singleShot(0, [&] {
    QTimer::singleShot(20, [&] {
      QCoreApplication::exit();
      letGo_ = true;
    });
    const auto work = [&](const std::stop_token& /*stop*/) {
      stay();
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      code = ask("Go on?", nullptr);
    };
    runUnderBusySheet(*window_, "Working", {.work = work});
  });
  QApplication::exec();
  EXPECT_EQ(code, -1);
}

TEST_F(BusySheets, TellHowFarTheWorkIsThatCanBeStopped) {
  when([&] { return sheet() != nullptr; },
       [&] {
         EXPECT_EQ(lineOf(*sheet()), "some");
         EXPECT_TRUE(cancelButton(*sheet())->isEnabled());
         letGo_ = true;
       });
  runUnderBusySheet(*window_, "Working", stoppable());
  EXPECT_TRUE(letGo_);
  EXPECT_FALSE(stopped_);
}

TEST_F(BusySheets, ShowWhatPartOfTheWorkIsDone) {
  LongWork work = stoppable();
  work.fraction = [] { return 0.25; };
  when([&] { return sheet() != nullptr; },
       [&] {
         const auto* const bar = sheet()->findChild<QProgressBar*>();
         EXPECT_EQ(4 * bar->value(), bar->maximum());
         letGo_ = true;
       });
  runUnderBusySheet(*window_, "Working", work);
}

TEST_F(BusySheets, StayUntilWorkThatIsCancelledHasEnded) {
  bool pressed = false;
  when([&] { return sheet() != nullptr; },
       [&] {
         for (int i = 0; i < 2; ++i) QTest::mouseClick(cancelButton(*sheet()), Qt::LeftButton);
         EXPECT_FALSE(cancelButton(*sheet())->isEnabled());
         EXPECT_EQ(sheet()->findChild<QLabel*>()->text(), "Cancelling…");
         pressed = true;
       });
  bool stoodYet = false;
  LongWork work = stoppable();
  work.work = [&, first = work.work](const std::stop_token& stop) {
    first(stop);
    MainThread::performAndWait([&] { stoodYet = sheet() != nullptr; });
  };
  EXPECT_TRUE(runUnderBusySheet(*window_, "Working", work));
  EXPECT_TRUE(pressed && stopped_ && stoodYet);
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(BusySheets, AreCancelledByEscape) {
  when([&] { return sheet() != nullptr; }, [&] { QTest::keyClick(sheet(), Qt::Key_Escape); });
  runUnderBusySheet(*window_, "Working", stoppable());
  EXPECT_TRUE(stopped_);
}

TEST_F(BusySheets, AreCancelledByQuitting) {
  for (const bool shown : {true, false}) {
    stopped_ = false;
    QTimer::singleShot(0, [&] {
      when([&] { return (sheet() != nullptr) == shown && turns_ > 0; }, [] { QCoreApplication::exit(); });
      runUnderBusySheet(*window_, "Working", stoppable());
    });
    QApplication::exec();
    EXPECT_TRUE(stopped_) << shown;
  }
}

}  // namespace

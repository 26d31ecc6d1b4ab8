#include <QElapsedTimer>
#include <array>

#include "SharedFiles/foundation/MainThread.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"

namespace {

class AlertsFromThreads : public Alerts {
 protected:
  static int timed(QWidget* parent, int interval) {
    return QVAlert::timedAlertSheetWithMessageText("m", "Yes", "No", "Later", "i", parent, interval);
  }
};

TEST_F(AlertsFromThreads, AreAnsweredOnTheMainThread) {
  for (const int expected : {1, 0, -1}) {
    onPanel([&](AlertPanel& panel) {
      EXPECT_EQ(panel.parentWidget(), window_.get());
      (expected == 1 ? panel.defaultButton() : expected == 0 ? panel.alternateButton() : panel.otherButton())->click();
    });
    int code = 99;
    elsewhere([&] { code = ask("m", window_.get()); });
    EXPECT_EQ(code, expected);
    EXPECT_TRUE(shownPanels().empty());
  }
}

TEST_F(AlertsFromThreads, SeveralAtOnceEachGetTheirOwnAnswer) {
  constexpr std::size_t count = 4;
  const std::array<QString, count> messages = {"a", "b", "c", "d"};
  const std::array<int, count> expected = {1, 0, -1, 0};
  std::array<int, count> codes{};
  std::atomic<int> done = 0;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      codes.at(i) = ask(messages.at(i), window_.get());
      ++done;
    });
  }
  runUntil([] { return shownPanels().size() == count; });
  int sheets = 0;
  for (const AlertPanel* panel : shownPanels()) sheets += panel->parentWidget() ? 1 : 0;
  EXPECT_EQ(sheets, 1);
  for (std::size_t i = 0; i < count; ++i) {
    AlertPanel* const panel = panelWithMessage(messages.at(i));
    ASSERT_NE(panel, nullptr);
    const std::array<QPushButton*, 3> buttons = {panel->otherButton(), panel->alternateButton(),
                                                 panel->defaultButton()};
    buttons.at(static_cast<std::size_t>(expected.at(i) + 1))->click();
  }
  runUntil([&] { return done == static_cast<int>(count); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(codes, expected);
}

TEST_F(AlertsFromThreads, NotWaitedForReturnWhenTheSheetIsUp) {
  NotedDelegate delegate;
  int code = 0;
  bool up = false;
  elsewhere([&] {
    code = QVAlert::alertSheetWithMessageText("m", "Yes", "No", {}, "i", window_.get(), &delegate,
                                              "ended:returnCode:", false, nullptr);
    MainThread::performAndWait([&] { up = shownPanels().size() == 1; });
  });
  EXPECT_EQ(code, -1);
  EXPECT_TRUE(up);
  shownPanels().front()->alternateButton()->click();
  EXPECT_EQ(delegate.told, (std::vector<std::pair<std::string, int>>{{"ended:returnCode:", 0}}));
}

TEST_F(AlertsFromThreads, TimedAnswerThemselves) {
  QElapsedTimer clock;
  clock.start();
  EXPECT_EQ(timed(window_.get(), 1), 1);
  EXPECT_GE(clock.elapsed(), 1000);
  EXPECT_LT(clock.elapsed(), 4000);
  EXPECT_TRUE(shownPanels().empty());
  int code = 99;
  elsewhere([&] { code = timed(nullptr, 1); });
  EXPECT_EQ(code, 1);
  EXPECT_TRUE(shownPanels().empty());
}

TEST_F(AlertsFromThreads, TimedWithoutTimeAnswerAtOnce) {
  for (const int interval : {0, -5}) EXPECT_EQ(timed(window_.get(), interval), 1);
}

TEST_F(AlertsFromThreads, TimedButAnsweredFirstReturnTheAnswer) {
  QElapsedTimer clock;
  clock.start();
  onPanel([](AlertPanel& panel) { panel.alternateButton()->click(); });
  EXPECT_EQ(timed(window_.get(), 60), 0);
  EXPECT_LT(clock.elapsed(), 20000);
}

TEST_F(AlertsFromThreads, ALateTimerOverwritesTheCodeButNotTheAnswer) {
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  std::thread timer([&] { alert->defaultReturnAfterTimeInterval(1); });
  onPanel([](AlertPanel& panel) { panel.otherButton()->click(); });
  EXPECT_EQ(QVAlert::alertSheetWithMessageText("m", "Yes", "No", "Later", {}, window_.get(), nullptr, {}, true, alert),
            -1);
  EXPECT_EQ(alert->returnCode(), -1);
  timer.join();
  EXPECT_EQ(alert->returnCode(), 1);
  EXPECT_TRUE(alert->alertEnded());
}

TEST_F(AlertsFromThreads, ATimerBetweenTheAnswerAndItsReaderDoesNotTurnIt) {
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  int code = 99;
  onPanel([&](AlertPanel& panel) {
    panel.alternateButton()->click();
    std::thread([&] { alert->defaultReturnAfterTimeInterval(0); }).join();
    EXPECT_EQ(alert->returnCode(), 1);
  });
  elsewhere([&] {
    code = QVAlert::alertSheetWithMessageText("m", "Yes", "No", {}, {}, window_.get(), nullptr, {}, true, alert);
  });
  EXPECT_EQ(code, 0);
}

TEST_F(AlertsFromThreads, EndWhenTheirParentIsDestroyed) {
  int code = 99;
  onPanel([&](AlertPanel&) { window_.reset(); });
  QWidget* const parent = window_.get();
  elsewhere([&] { code = ask("m", parent); });
  EXPECT_EQ(code, -1);
}

TEST_F(AlertsFromThreads, ComeUpAloneWhereTheParentIsGoneAlready) {
  QWidget* const parent = window_.get();
  int code = 99;
  std::atomic<bool> done = false;
  std::thread asking([&] {
    code = ask("m", parent);
    done = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  window_.reset();
  runUntil([] { return shownPanels().size() == 1; });
  EXPECT_EQ(shownPanels().front()->parentWidget(), nullptr);
  shownPanels().front()->defaultButton()->click();
  runUntil([&] { return done.load(); });
  asking.join();
  EXPECT_EQ(code, 1);
}

class AlertsAtTheEnd : public AlertsFromThreads,
                       public testing::WithParamInterface<std::pair<const char*, void (*)()>> {};
INSTANTIATE_TEST_SUITE_P(Of, AlertsAtTheEnd,
                         testing::Values(std::pair(
                                             "quit", +[] { QCoreApplication::quit(); }),
                                         std::pair(
                                             "exit", +[] { QCoreApplication::exit(0); })),
                         [](const auto& given) { return given.param.first; });

TEST_P(AlertsAtTheEnd, AWaiterOnTheMainThreadGetsOther) {
  for (QWidget* const parent : {window_.get(), static_cast<QWidget*>(nullptr)}) {
    int code = 99;
    QTimer::singleShot(0, [&] { code = ask("m", parent); });
    onPanel([](AlertPanel&) { GetParam().second(); });
    QCoreApplication::exec();
    EXPECT_EQ(code, -1);
    EXPECT_TRUE(shownPanels().empty());
  }
}

TEST_P(AlertsAtTheEnd, AWaiterElsewhereGetsOther) {
  int code = 99;
  std::thread asking([&] { code = ask("m", window_.get()); });
  onPanel([](AlertPanel&) { GetParam().second(); });
  QCoreApplication::exec();
  asking.join();  // while this thread dispatches nothing
  EXPECT_EQ(code, -1);
  EXPECT_TRUE(shownPanels().empty());
}

/// Takes its time to close, as one that saves its state.
class SlowWindow : public QWidget {
 protected:
  void closeEvent(QCloseEvent* event) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    QWidget::closeEvent(event);
  }
};

TEST_F(AlertsFromThreads, AWaiterElsewhereComesBackWhenItsPanelClosesLongBeforeTheEnd) {
  SlowWindow slow;
  slow.show();
  std::thread asking([&] { ask("m", window_.get()); });
  onPanel([](AlertPanel&) { QCoreApplication::quit(); });
  QCoreApplication::exec();
  asking.join();  // while this thread dispatches nothing
  EXPECT_TRUE(shownPanels().empty());
}

TEST_P(AlertsAtTheEnd, AWaiterWhoseDelegateNeverEndsItGetsOther) {
  NotedDelegate delegate;
  int code = 99;
  std::thread asking([&] {
    code = QVAlert::alertSheetWithMessageText("m", {}, {}, {}, {}, window_.get(), &delegate, "ended:returnCode:", true,
                                              nullptr);
  });
  onPanel([](AlertPanel& panel) { panel.defaultButton()->click(); });
  when([&] { return !delegate.told.empty(); }, [] { GetParam().second(); });
  QCoreApplication::exec();
  asking.join();
  EXPECT_EQ(code, -1);
  EXPECT_EQ(delegate.told.size(), 1U);
}

TEST_P(AlertsAtTheEnd, ADelegateIsToldOther) {
  NotedDelegate delegate;
  QVAlert::alertSheetWithMessageText("m", {}, {}, {}, {}, nullptr, &delegate, "ended:returnCode:", false, nullptr);
  QTimer::singleShot(0, [] { GetParam().second(); });
  QCoreApplication::exec();
  EXPECT_EQ(delegate.told, (std::vector<std::pair<std::string, int>>{{"ended:returnCode:", -1}}));
}

}  // namespace

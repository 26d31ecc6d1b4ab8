#pragma once

#include <QApplication>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QWidget>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/alerts/AlertPanel.h"
#include "SharedFiles/alerts/QVAlert.h"
#include "tests/SharedFiles/EnvironmentGuard.h"

/// The panels on the screen.
inline std::vector<AlertPanel*> shownPanels() {
  std::vector<AlertPanel*> panels;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    auto* const panel = dynamic_cast<AlertPanel*>(widget);
    if (panel && panel->isVisible()) panels.push_back(panel);
  }
  return panels;
}

inline AlertPanel* panelWithMessage(const QString& message) {
  for (AlertPanel* panel : shownPanels()) {
    if (panel->accessibleName() == message) return panel;
  }
  return nullptr;
}

inline QString textOf(const AlertPanel& panel, const char* name) {
  const auto* const edit = panel.findChild<QTextEdit*>(QLatin1String(name));
  return edit ? edit->toPlainText() : QString();
}

/// A window, a home folder of its own, and a hand that acts while the code under test waits.
class Alerts : public testing::Test {
 protected:
  Alerts() {
    environment_.set("HOME", home_.path().toUtf8());
    environment_.clear("XDG_DATA_HOME");
    window_->resize(960, 640);
    window_->show();
  }
  ~Alerts() override {
    settle();
    EXPECT_TRUE(shownPanels().empty());
  }

  /// Runs the action once, as soon as the condition holds.
  void when(std::function<bool()> condition, std::function<void()> action) {
    auto timer = std::make_shared<QTimer>();
    timer->callOnTimeout([condition = std::move(condition), action = std::move(action), timer = timer.get()] {
      if (!condition()) return;
      timer->stop();
      action();
    });
    timer->start(5);
    timers_.push_back(std::move(timer));
  }
  /// Runs the action on the first panel to come up.
  void onPanel(std::function<void(AlertPanel&)> action) {
    when([] { return !shownPanels().empty(); }, [action = std::move(action)] { action(*shownPanels().front()); });
  }

  /// Dispatches events until the condition holds; a test that gets nowhere fails after 20 seconds.
  void runUntil(const std::function<bool()>& condition) { EXPECT_TRUE(QTest::qWaitFor(condition, 20000)); }
  void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  /// Runs the work on a thread of its own while this one dispatches events.
  void elsewhere(const std::function<void()>& work) {
    std::atomic<bool> done = false;
    std::thread thread([&] {
      work();
      done = true;
    });
    runUntil([&] { return done.load(); });
    thread.join();
  }
  static int ask(const QString& message, QWidget* parent, const QString& alternate = "No",
                 const QString& other = "Later") {
    return QVAlert::alertSheetWithMessageText(message, "Yes", alternate, other, "Details", parent, true);
  }

  QTemporaryDir home_;
  EnvironmentGuard environment_;
  std::unique_ptr<QWidget> window_ = std::make_unique<QWidget>();
  std::vector<std::shared_ptr<QTimer>> timers_;
};

/// Notes what it is told, and ends the wait as the default delegate does where it is told to.
class NotedDelegate : public AlertDelegate {
 public:
  explicit NotedDelegate(bool ends = false) : ends_(ends) {}
  bool respondsToSelector(const QString& name) const override { return name == QLatin1String("ended:returnCode:"); }
  void performAlertDidEnd(const QString& selector, QVAlert& alert, int returnCode, void* contextInfo) override {
    told.emplace_back(selector.toStdString(), returnCode);
    EXPECT_EQ(contextInfo, nullptr);
    if (ends_) alert.alertDidEnd(alert, returnCode, contextInfo);
  }
  std::vector<std::pair<std::string, int>> told;

 private:
  bool ends_;
};

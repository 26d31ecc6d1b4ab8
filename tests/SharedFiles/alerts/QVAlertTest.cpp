#include <QCheckBox>
#include <ctime>

#include "SharedFiles/settings/UserDefaults.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"

namespace {

const QString endMessage = "ended:returnCode:";

int fullForm(const QString& message, QWidget* parent, AlertDelegate* delegate, const QString& selector, bool block,
             const std::shared_ptr<QVAlert>& alert = nullptr, const QString& suppression = {}) {
  return QVAlert::alertSheetWithMessageText(message, "Yes", "No", "Later", "Details", parent, delegate, selector, block,
                                            alert, suppression);
}

struct Press {
  const char* what;
  QPushButton* (*button)(AlertPanel&);
  int code;
};
const Press presses[] = {
    {"default", [](AlertPanel& panel) { return panel.defaultButton(); }, 1},
    {"alternate", [](AlertPanel& panel) { return panel.alternateButton(); }, 0},
    {"other", [](AlertPanel& panel) { return panel.otherButton(); }, -1},
};

TEST_F(Alerts, TheShortFormReturnsOnlyWhenTheButtonIsPressed) {
  bool pressed = false;
  onPanel([&](AlertPanel& panel) {
    EXPECT_EQ(panel.parentWidget(), window_.get());
    EXPECT_EQ(panel.windowModality(), Qt::WindowModal);
    EXPECT_EQ(panel.defaultButton()->text(), "OK");
    EXPECT_EQ(panel.alternateButton(), nullptr);
    EXPECT_EQ(panel.otherButton(), nullptr);
    QTest::qWait(120);
    pressed = true;
    panel.defaultButton()->click();
  });
  QVAlert::alertSheetWithMessageText("Source frame is too dark", "Choose another frame.", window_.get());
  EXPECT_TRUE(pressed);
}

TEST_F(Alerts, ReturnTheCodeOfTheButton) {
  for (const Press& press : presses) {
    SCOPED_TRACE(press.what);
    onPanel([&](AlertPanel& panel) { press.button(panel)->click(); });
    EXPECT_EQ(ask("Question", window_.get()), press.code);
  }
}

TEST_F(Alerts, TheBlockFormWaitsWhateverItsFlag) {
  for (const bool block : {false, true}) {
    bool pressed = false;
    onPanel([&](AlertPanel& panel) {
      pressed = true;
      panel.alternateButton()->click();
    });
    EXPECT_EQ(QVAlert::alertSheetWithMessageText("m", "Yes", "No", {}, "i", window_.get(), block), 0);
    EXPECT_TRUE(pressed);
  }
}

TEST_F(Alerts, TheDelegateFormWaitsAndNeverCallsTheDelegate) {
  NotedDelegate delegate;
  bool pressed = false;
  onPanel([&](AlertPanel& panel) {
    pressed = true;
    panel.alternateButton()->click();
  });
  EXPECT_EQ(QVAlert::alertSheetWithMessageText("m", "Yes", "No", {}, "i", window_.get(), &delegate, "unknown:", false),
            0);
  EXPECT_TRUE(pressed);
  EXPECT_TRUE(delegate.told.empty());
}

TEST_F(Alerts, TheAlertObjectFormTellsTheDelegateAndItEndsTheWait) {
  NotedDelegate delegate(true);
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  onPanel([&](AlertPanel& panel) {
    EXPECT_EQ(alert->alert(), &panel);
    EXPECT_EQ(alert->delegate(), &delegate);
    EXPECT_EQ(alert->parentWindow(), window_.get());
    EXPECT_FALSE(alert->alertEnded());
    panel.alternateButton()->click();
  });
  EXPECT_EQ(
      QVAlert::alertSheetWithMessageText("m", "Yes", "No", {}, "i", window_.get(), &delegate, endMessage, true, alert),
      0);
  EXPECT_EQ(delegate.told, (std::vector<std::pair<std::string, int>>{{"ended:returnCode:", 0}}));
  EXPECT_EQ(alert->alert(), nullptr);
  EXPECT_TRUE(alert->alertEnded());
  EXPECT_EQ(alert->returnCode(), 0);
}

TEST_F(Alerts, ADelegateThatDoesNotEndTheWaitLeavesItToOthers) {
  NotedDelegate delegate;
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  onPanel([&](AlertPanel& panel) { panel.defaultButton()->click(); });
  when([&] { return !delegate.told.empty(); },
       [&] {
         QTest::qWait(100);
         EXPECT_FALSE(alert->alertEnded());
         alert->setReturnCode(7);
         alert->setAlertEnded(true);
       });
  EXPECT_EQ(fullForm("m", window_.get(), &delegate, endMessage, true, alert), 7);
}

TEST_F(Alerts, NotWaitedForReturnAtOnceAndTellTheRealCodeLater) {
  for (const Press& press : presses) {
    SCOPED_TRACE(press.what);
    NotedDelegate delegate;
    EXPECT_EQ(fullForm("m", window_.get(), &delegate, endMessage, false), -1);
    ASSERT_EQ(shownPanels().size(), 1U);
    EXPECT_TRUE(delegate.told.empty());
    const QPointer<AlertPanel> panel = shownPanels().front();
    press.button(*panel)->click();
    EXPECT_EQ(delegate.told, (std::vector<std::pair<std::string, int>>{{"ended:returnCode:", press.code}}));
    settle();
    EXPECT_FALSE(panel);
  }
}

TEST_F(Alerts, NotWaitedForWithoutADelegateKeepTheAnswerInTheObject) {
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  EXPECT_EQ(fullForm("m", nullptr, nullptr, {}, false, alert), -1);
  EXPECT_EQ(alert->delegate(), alert.get());
  EXPECT_FALSE(alert->alertEnded());
  shownPanels().front()->defaultButton()->click();
  EXPECT_TRUE(alert->alertEnded());
  EXPECT_EQ(alert->returnCode(), 1);
  settle();
  EXPECT_EQ(alert.use_count(), 1);
}

TEST_F(Alerts, ShowNothingWhereTheDelegateDoesNotRespond) {
  testing::internal::CaptureStderr();
  NotedDelegate delegate;
  for (AlertDelegate* const asked : {static_cast<AlertDelegate*>(&delegate), static_cast<AlertDelegate*>(nullptr)}) {
    EXPECT_EQ(fullForm("m", window_.get(), asked, "missing:%@%d", true), -1);
    EXPECT_TRUE(shownPanels().empty());
  }
  EXPECT_EQ(fullForm("m", window_.get(), &delegate, {}, true), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Alert error: delegate does not respond to selector missing:%@%d\n"
            "Alert error: delegate does not respond to selector missing:%@%d\n"
            "Alert error: delegate does not respond to selector alertDidEnd:returnCode:contextInfo:\n");
}

TEST_F(Alerts, ComeUpWithoutAParentThatHasASheetAlready) {
  for (const bool secondFirst : {true, false}) {
    const std::shared_ptr<QVAlert> one = QVAlert::create();
    const std::shared_ptr<QVAlert> two = QVAlert::create();
    fullForm("one", window_.get(), nullptr, {}, false, one);
    fullForm("two", window_.get(), nullptr, {}, false, two);
    EXPECT_EQ(one->parentWindow(), window_.get());
    EXPECT_EQ(two->parentWindow(), nullptr);
    ASSERT_NE(two->alert(), nullptr);
    EXPECT_EQ(two->alert()->parentWidget(), nullptr);
    EXPECT_EQ(two->alert()->windowModality(), Qt::ApplicationModal);
    (secondFirst ? two : one)->alert()->defaultButton()->click();
    (secondFirst ? one : two)->alert()->alternateButton()->click();
    EXPECT_EQ(one->returnCode(), secondFirst ? 0 : 1);
    EXPECT_EQ(two->returnCode(), secondFirst ? 1 : 0);
    settle();
    // The parent is free again.
    fullForm("three", window_.get(), nullptr, {}, false, one);
    EXPECT_EQ(one->parentWindow(), window_.get());
    one->alert()->otherButton()->click();
    EXPECT_EQ(one->returnCode(), -1);
    settle();
  }
}

TEST_F(Alerts, BringTheParentWindowToTheFront) {
  window_->hide();
  QWidget other;
  other.show();
  other.activateWindow();
  QWidget inside(window_.get());
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  fullForm("m", &inside, nullptr, {}, false, alert);
  EXPECT_TRUE(window_->isVisible());
  EXPECT_EQ(alert->parentWindow(), window_.get());
  runUntil([] { return QApplication::activeWindow() != nullptr && !shownPanels().empty(); });
  EXPECT_EQ(QApplication::activeWindow(), alert->alert());
  alert->alert()->defaultButton()->click();
}

TEST_F(Alerts, ShowTheirTextsAsTheyStand) {
  const QStringList texts = {"%d", "100 % %s %@ %1", "<b>bold</b>", "a & b && c", "line\nbreak", "&amp;",
                             "",   QString()};
  for (const QString& text : texts) {
    onPanel([&](AlertPanel& panel) {
      EXPECT_EQ(textOf(panel, "messageText"), text);
      EXPECT_EQ(textOf(panel, "informativeText"), text);
      panel.defaultButton()->click();
    });
    QVAlert::alertSheetWithMessageText(text, text, window_.get());
  }
}

TEST_F(Alerts, MayBeAskedInsideAnEventHandlerWhileAnotherIsUp) {
  QPushButton button(window_.get());
  std::vector<int> inner;
  QObject::connect(&button, &QPushButton::clicked, [&] { inner.push_back(ask("inner", window_.get())); });
  when([] { return panelWithMessage("outer") != nullptr; }, [&] { button.click(); });
  when([] { return panelWithMessage("inner") != nullptr; },
       [&] {
         EXPECT_EQ(panelWithMessage("inner")->parentWidget(), nullptr);
         panelWithMessage("outer")->defaultButton()->click();
         panelWithMessage("inner")->alternateButton()->click();
       });
  EXPECT_EQ(ask("outer", window_.get()), 1);
  EXPECT_EQ(inner, std::vector<int>{0});
}

TEST_F(Alerts, CostNothingWhileTheyWait) {
  std::clock_t used = 0;
  onPanel([&](AlertPanel& panel) {
    QTest::qWait(50);
    used = std::clock();
    QTimer::singleShot(1000, &panel, [&] {
      used = std::clock() - used;
      panel.defaultButton()->click();
    });
  });
  ask("m", window_.get());
  EXPECT_LT(used, CLOCKS_PER_SEC / 2);
}

TEST_F(Alerts, ClosedByTheCallerTellNobody) {
  NotedDelegate delegate;
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  fullForm("m", window_.get(), &delegate, endMessage, false, alert);
  alert->closeAlert();
  EXPECT_TRUE(shownPanels().empty());
  EXPECT_EQ(alert->alert(), nullptr);
  alert->closeAlert();
  settle();
  EXPECT_TRUE(delegate.told.empty());
  EXPECT_FALSE(alert->alertEnded());
  EXPECT_EQ(alert.use_count(), 1);
}

TEST_F(Alerts, AnswerOtherWhenTheirParentIsDestroyed) {
  onPanel([&](AlertPanel&) { window_.reset(); });
  EXPECT_EQ(ask("m", window_.get()), -1);
  NotedDelegate delegate;
  auto second = std::make_unique<QWidget>();
  fullForm("m", second.get(), &delegate, endMessage, false);
  second.reset();
  EXPECT_EQ(delegate.told, (std::vector<std::pair<std::string, int>>{{"ended:returnCode:", -1}}));
}

TEST_F(Alerts, BindTheSwitchToTheUserDefault) {
  UserDefaults& defaults = UserDefaults::standard();
  for (const QString& key : {QString("hideNotice"), QString("values.hideNotice")}) {
    SCOPED_TRACE(key.toStdString());
    const std::shared_ptr<QVAlert> alert = QVAlert::create();
    for (const bool before : {false, true}) {
      EXPECT_EQ(defaults.valueForKeyPath(key).toBool(), before);
      fullForm("m", window_.get(), nullptr, {}, false, alert, key);
      QCheckBox* const box = alert->alert()->suppressionButton();
      ASSERT_NE(box, nullptr);
      EXPECT_TRUE(box->isVisible());
      EXPECT_EQ(box->isChecked(), before);
      box->click();
      EXPECT_EQ(defaults.valueForKeyPath(key), QVariant(!before));
      EXPECT_TRUE(alert->alert()->isVisible());
      alert->alert()->defaultButton()->click();
      EXPECT_EQ(defaults.valueForKeyPath(key), QVariant(!before));
    }
  }
  EXPECT_FALSE(defaults.objectForKey("values.hideNotice").isValid());
}

TEST_F(Alerts, HaveNoSwitchWithoutAKeyPath) {
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  fullForm("m", window_.get(), nullptr, {}, false, alert);
  EXPECT_EQ(alert->alert()->suppressionButton(), nullptr);
  alert->alert()->defaultButton()->click();
}

}  // namespace

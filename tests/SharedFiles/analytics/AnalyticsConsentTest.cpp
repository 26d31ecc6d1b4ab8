#include <QElapsedTimer>

#include <gmock/gmock.h>

#include "SharedFiles/analytics/QVQC.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/analytics/AnalyticsFixture.h"

namespace {

using testing::IsEmpty;

class AnalyticsConsent : public Analytics {
 protected:
  /// Starts the program, asks, and answers with the button.
  void answerWith(QPushButton* (AlertPanel::*button)() const) {
    bool answered = false;
    onPanel([&, button](AlertPanel& panel) {
      (panel.*button)()->click();
      answered = true;
    });
    controller_->loadQC(window_.get());
    runUntil([&] { return answered; });
    QTest::qWait(50);
    finish();
  }
};

TEST_F(AnalyticsConsent, AsksFromTheThirdLaunchOnOnly) {
  for (int launches = 1; launches <= 2; ++launches) {
    launch().loadQC(window_.get());
    QTest::qWait(200);
    EXPECT_THAT(shownPanels(), IsEmpty()) << launches;
  }
  launch();
  EXPECT_EQ(defaults_->integerForKey("launchCount"), 3);
  answerWith(&AlertPanel::otherButton);
  EXPECT_EQ(stored().value("logQC"), QVariant(false));
}

TEST_F(AnalyticsConsent, AsksAfterFiveSeconds) {
  AnalyticsServices real = services();
  real.promptDelay = QVQC::services().promptDelay;
  defaults_->setObject(2, "launchCount");
  AnalyticsController controller(real);
  QElapsedTimer elapsed;
  qint64 asked = 0;
  onPanel([&](AlertPanel& panel) {
    asked = elapsed.elapsed();
    EXPECT_EQ(panel.parentWidget(), window_.get());
    EXPECT_EQ(panel.accessibleName(), "Help improve Quorvane software by submitting analytics and usage data");
    EXPECT_EQ(panel.defaultButton()->text(), "Allow");
    EXPECT_EQ(panel.alternateButton()->text(), "More Info");
    EXPECT_EQ(panel.otherButton()->text(), "Don't Allow");
    panel.otherButton()->click();
  });
  elapsed.start();
  controller.loadQC(window_.get());
  runUntil([&] { return asked > 0; });
  QTest::qWait(50);
  EXPECT_GE(asked, 5000);
  EXPECT_LT(asked, 15000);
}

TEST_F(AnalyticsConsent, AllowStoresTheDecisionAndLogsTheStart) {
  launchWith(4);
  answerWith(&AlertPanel::defaultButton);
  EXPECT_TRUE(controller_->shouldLog());
  EXPECT_EQ(stored().value("logQC"), QVariant(true));
  ASSERT_EQ(posted().size(), 1U);
  EXPECT_THAT(posted().front().body.toStdString(), testing::HasSubstr(R"("event":"launch")"));
  EXPECT_THAT(workspace_.opened, IsEmpty());
}

TEST_F(AnalyticsConsent, AllowOnTheThirdLaunchSendsNothingYet) {
  launchWith(3);
  answerWith(&AlertPanel::defaultButton);
  EXPECT_THAT(posted(), IsEmpty());
  controller_->willTerminate();
  EXPECT_EQ(storedCache().size(), 2);
}

TEST_F(AnalyticsConsent, DoNotAllowIsKeptForGood) {
  launchWith(3);
  answerWith(&AlertPanel::otherButton);
  EXPECT_FALSE(controller_->shouldLog());
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", false}}));
  EXPECT_THAT(controller_->cache(), IsEmpty());
  launch().loadQC(window_.get());
  QTest::qWait(200);
  EXPECT_THAT(shownPanels(), IsEmpty());
}

TEST_F(AnalyticsConsent, MoreInfoOpensThePageAndAsksAgainAtTheNextLaunch) {
  launchWith(3);
  for (int launches = 1; launches <= 2; ++launches) {
    answerWith(&AlertPanel::alternateButton);
    EXPECT_EQ(workspace_.opened.size(), launches);
    EXPECT_EQ(workspace_.opened.back(), "https://maker.example/more");
    EXPECT_FALSE(stored().contains("logQC"));
    EXPECT_FALSE(controller_->shouldLog());
    launch();
  }
}

TEST_F(AnalyticsConsent, AWindowThatIsGoneLeavesThePromptWithoutAParent) {
  launchWith(3);
  bool answered = false;
  onPanel([&](AlertPanel& panel) {
    EXPECT_EQ(panel.parentWidget(), nullptr);
    panel.otherButton()->click();
    answered = true;
  });
  controller_->loadQC(window_.get());
  window_.reset();
  runUntil([&] { return answered; });
  QTest::qWait(50);
}

TEST_F(AnalyticsConsent, DecidedMeanwhileAsksNoMore) {
  launchWith(3).loadQC(window_.get());
  controller_->setQCLogging(false);
  QTest::qWait(200);
  EXPECT_THAT(shownPanels(), IsEmpty());
}

TEST_F(AnalyticsConsent, EndBeforeThePromptShowsNone) {
  launchWith(3).loadQC(window_.get());
  controller_->willTerminate();
  QTest::qWait(200);
  EXPECT_THAT(shownPanels(), IsEmpty());
}

TEST_F(AnalyticsConsent, QuittingWhileItAsksAnswersNothing) {
  for (const bool orderly : {true, false}) {
    launchWith(3).loadQC(window_.get());
    onPanel([orderly](AlertPanel&) {
      if (orderly) {
        QCoreApplication::quit();
      } else {
        QCoreApplication::exit();
      }
    });
    QCoreApplication::exec();
    settle();
    EXPECT_FALSE(stored().contains("logQC"));
    EXPECT_THAT(workspace_.opened, IsEmpty());
    EXPECT_FALSE(controller_->shouldLog());
  }
}

}  // namespace

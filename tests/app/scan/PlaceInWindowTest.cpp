// The destination's picture, looked for in the source.

#include <QCheckBox>
#include <QPushButton>
#include <QTest>
#include <cmath>

#include <gmock/gmock.h>

#include "app/verdict/VerdictStrip.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/scan/ScanFixture.h"

namespace {

constexpr double halfFrame = 0.5 / 24;

class ThePlace : public ScanFixture {
 protected:
  const VerdictView& verdict() { return interface().verdictStrip->view(); }
  bool isLooking() { return verdict().headline.startsWith("Looking for"); }
  /// Both at one time, and compared there.
  void checkAt(double seconds) {
    interface().linkBtn->setChecked(false);
    const movie::MovieTime time{.value = std::llround(seconds * 24), .scale = 24};
    sourceView().movie()->setCurrentTime(time);
    destView().movie()->setCurrentTime(time);
    QTest::mouseClick(interface().checkBtn, Qt::LeftButton);
  }
  void lookForPlace() {
    QTest::mouseClick(&interface().verdictStrip->button(VerdictAction::FindPlace), Qt::LeftButton);
  }
};

TEST_F(ThePlace, IsFoundAndComparedThere) {
  load(reelMovie(), leaderMovie());
  checkAt(7);
  ASSERT_EQ(verdict().kind, MessageKind::Warning);
  lookForPlace();
  ASSERT_TRUE(waitUntil([this] { return !isLooking() && verdict().kind == MessageKind::Success; }));
  EXPECT_NEAR(sourceSeconds(), 5, halfFrame);
  EXPECT_NEAR(destSeconds(), 7, halfFrame) << "it stays where it is";
}

TEST_F(ThePlace, IsToldWhereThereIsNone) {
  load(darkerFromMovie(), leaderMovie());
  checkAt(1);  // within the leader
  lookForPlace();
  ASSERT_TRUE(waitUntil([this] { return !isLooking(); }));
  EXPECT_EQ(said().kind, MessageKind::Warning);
  EXPECT_EQ(said().text, "The destination's picture was not found in the source within 10 seconds.");
  EXPECT_NEAR(sourceSeconds(), 1, halfFrame);
  EXPECT_TRUE(verdict().holds) << "nothing has changed";
}

TEST_F(ThePlace, IsNoneOfThoseThatLookAlike) {
  load(twoStillsMovie(), stillMovie());
  checkAt(1);
  ASSERT_EQ(verdict().kind, MessageKind::Warning);
  lookForPlace();
  ASSERT_TRUE(waitUntil([this] { return !isLooking(); }));
  EXPECT_EQ(said().text, "The pictures do not move: where in the source this one is cannot be told.");
  EXPECT_NEAR(sourceSeconds(), 1, halfFrame);
}

TEST_F(ThePlace, IsLeftAloneOnceSomebodyGoesElsewhere) {
  load(reelMovie(), leaderMovie());
  checkAt(7);
  lookForPlace();
  sourceView().stepFrames(2);
  ASSERT_TRUE(waitUntil([this] { return !isLooking(); }));
  EXPECT_NEAR(sourceSeconds(), 7 + 2.0 / 24, halfFrame);
  EXPECT_FALSE(verdict().holds);
}

TEST_F(ThePlace, IsForgottenWithItsMovies) {
  load(reelMovie(), leaderMovie());
  checkAt(7);
  lookForPlace();
  controller().loadQTMovieWithPath(reelMovie(), "dest");
  EXPECT_FALSE(isLooking());
  EXPECT_EQ(verdict().kind, std::nullopt);
}

}  // namespace

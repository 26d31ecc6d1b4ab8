#include <QCheckBox>
#include <QFile>
#include <QLineEdit>

#include <gmock/gmock.h>

#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"

namespace {

class Lifecycle : public WindowFixture {};

TEST_F(Lifecycle, StartsEmptyTheFirstTime) {
  launch();
  for (const auto& movie : {controller().sourceQTMov(), controller().sourceQTDisplayMov(), controller().destQTMov(),
                            controller().destQTDisplayMov()}) {
    ASSERT_NE(movie, nullptr);
    EXPECT_FALSE(movie->isIdling());
    EXPECT_FALSE(movie->hasVideo());
  }
  EXPECT_EQ(sourceView().movie(), controller().sourceQTDisplayMov());
  EXPECT_EQ(destView().movie(), controller().destQTDisplayMov());
  EXPECT_EQ(sourceView().message(), "Drop the source movie here");
  EXPECT_EQ(interface().window().focusWidget(), &sourceView());
}

TEST_F(Lifecycle, LoadsTheLastFilesAgain) {
  launch();
  load(plainMovie(), retaggedMovie());
  relaunch();
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  EXPECT_EQ(pathOf(controller().destQTMov().get()), retaggedMovie());
  EXPECT_EQ(sourcePath(), plainMovie());
  sourceView().stepFrames(2);
  EXPECT_EQ(destView().movie()->currentTime(), sourceView().movie()->currentTime());
}

TEST_F(Lifecycle, LoadsTheLastFilesOnceMoreOntoFreshSlots) {
  launch();
  load(plainMovie(), retaggedMovie());
  makeController();
  controller().awakeFromNib();
  const auto source = controller().sourceQTMov(), dest = controller().destQTMov();
  EXPECT_EQ(pathOf(source.get()), plainMovie());
  EXPECT_EQ(pathOf(dest.get()), retaggedMovie());
  interface().dest.filenameText->setText(darkerMovie());
  controller().applicationDidFinishLaunching();
  EXPECT_NE(controller().sourceQTMov(), source);
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  EXPECT_EQ(pathOf(controller().destQTMov().get()), darkerMovie()) << "what the field says by then";
  EXPECT_EQ(sourceView().movie(), controller().sourceQTDisplayMov());
  EXPECT_TRUE(interface().linkBtn->isEnabled());
  EXPECT_TRUE(interface().linkBtn->isChecked());
}

TEST_F(Lifecycle, LeavesASideEmptyWhoseLastFileIsGone) {
  launch();
  const QString moved = home_.filePath("moved.mov");
  ASSERT_TRUE(QFile::copy(plainMovie(), moved));
  load(moved, retaggedMovie());
  ASSERT_TRUE(QFile::remove(moved));
  relaunch();
  EXPECT_EQ(sourcePath(), QString());
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), QString());
  EXPECT_EQ(destPath(), retaggedMovie());
  EXPECT_EQ(defaults_->stringForKey("lastSourceFile"), moved);
}

TEST_F(Lifecycle, KeepsPathsThatStandInTheFieldsAlready) {
  launch();
  load(plainMovie(), retaggedMovie());
  makeController();
  interface().source.filenameText->setText(darkerMovie());
  launch();
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), darkerMovie());
  EXPECT_EQ(pathOf(controller().destQTMov().get()), retaggedMovie());
}

TEST_F(Lifecycle, TellsWhereAnUpdaterAskedForIsMissing) {
  launch();
  const check::test::CapturedLog log;
  controller().manualUpdateCheck();
  EXPECT_THAT(log.texts(), testing::ElementsAre("Error: unable to find software updater",
                                                "Unable to launch Software Update - path doesn't exist"));
}

TEST_F(Lifecycle, EndsWithTheLastWindow) {
  EXPECT_TRUE(LumacheckAppDelegate::applicationShouldTerminateAfterLastWindowClosed());
}

}  // namespace

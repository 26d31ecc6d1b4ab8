// Quitting in the middle of things: the program ends soon, in order, and leaves nothing half-made.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <csignal>
#include <functional>

#include <gmock/gmock.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class Quitting : public ProgramFixture {
 protected:
  /// Once by a signal, once by closing the window.
  void endsWhile(const std::function<void()>& begin, const QStringList& pair = {plainMovie(), darkerMovie()}) {
    for (const bool signalled : {true, false}) {
      SCOPED_TRACE(signalled);
      start(pair);
      ASSERT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == pair[1]; }));
      begin();
      QElapsedTimer since;
      since.start();
      if (signalled) {
        EXPECT_EQ(endWith(SIGTERM), 0) << running_.readAll().toStdString();
      } else {
        EXPECT_EQ(tell("close"), "yes");
        EXPECT_EQ(ended(), 0) << running_.readAll().toStdString();
      }
      EXPECT_LT(since.elapsed(), 10000);
      EXPECT_GE(stamp("exit"), stamp("launch"));
    }
  }
};

TEST_F(Quitting, EndsAnIdleProgram) {
  endsWhile([] {});
}

TEST_F(Quitting, EndsAPlayback) {
  endsWhile([this] { EXPECT_EQ(tell("key Space"), "yes"); });
}

TEST_F(Quitting, EndsAfterACheck) {
  endsWhile([this] { EXPECT_TRUE(choose("check")); });
}

TEST_F(Quitting, EndsAScan) {
  endsWhile(
      [this] {
        EXPECT_TRUE(choose("scan"));
        QTest::qWait(400);  // it has begun, and takes longer
      },
      {longMovie(), longMovie()});
}

TEST_F(Quitting, EndsWithThePreferencesAndTheAboutDialogOpen) {
  endsWhile([this] {
    EXPECT_TRUE(choose("preferences"));
    EXPECT_TRUE(choose("about"));
    EXPECT_TRUE(waitUntil([this] { return dialogs().size() == 2; }));
  });
}

TEST_F(Quitting, EndsAFilePanel) {
  for (const char* const panel : {"openSource", "saveAs"}) {
    endsWhile([this, panel] {
      EXPECT_TRUE(choose(panel));
      EXPECT_TRUE(waitUntil([this] { return dialogs().size() == 1; }));
    });
  }
}

TEST_F(Quitting, EndsAnAlert) {
  endsWhile([this] {
    EXPECT_TRUE(choose("viewTaskLog"));
    EXPECT_TRUE(waitForDialog("No log found"));
  });
}

TEST_F(Quitting, EndsAGathering) {
  // Zeros that take no room on the disk, and the archiver many seconds.
  put(library("Logs/Quorvane/Lumacheck.huge.log"), "");
  ASSERT_TRUE(QFile(library("Logs/Quorvane/Lumacheck.huge.log")).resize(qint64{20} << 30));
  QDir().mkpath(path("home/Desktop"));
  endsWhile([this] {
    EXPECT_TRUE(choose("gatherLogs"));
    EXPECT_TRUE(waitForDialog("Gathering logs…"));
    EXPECT_TRUE(waitUntil([this] { return !filesBelow(path("home/Desktop")).isEmpty(); }));
  });
  EXPECT_THAT(filesBelow(path("home/Desktop")), IsEmpty());
  EXPECT_FALSE(QFile::exists(path("tmp/QV_App_Logs")));
  EXPECT_THAT(log(1).toStdString(), HasSubstr(" - Gathering the logs was cancelled.\n"));
}

TEST_F(Quitting, EndsAGatheringThatTellsOfItsEnd) {
  QDir().mkpath(path("home/Desktop"));
  endsWhile([this] {
    EXPECT_TRUE(choose("gatherLogs"));
    EXPECT_TRUE(waitForDialog("Logs gathered successfully"));
  });
  EXPECT_EQ(filesBelow(path("home/Desktop")).size(), 2);
}

}  // namespace

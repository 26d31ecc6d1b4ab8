// A gathering that the user calls off: nothing of it stays, and nobody is told but the log.

#include <QElapsedTimer>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/SharedFiles/support/GatheringFixture.h"
#include "tests/check/CapturedLog.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* logLine = "Gathering the logs was cancelled.";

class CancelledGatherings : public LogGatherings {
 protected:
  CancelledGatherings() {
    for (int i = 0; i < 20; ++i) put(QStringLiteral("/user/Logs/Quorvane/Lumacheck.%1.log").arg(i));
  }

  bool gatherAloud() { return gatherAloud(services_); }
  bool gatherAloud(TroubleshootingServices& services) {
    services.watch.stop = stop_.get_token();
    return QVTroubleshootingUtils::gatherLogsForAppWithName("Lumacheck", services);
  }
  void stopWhen(std::function<bool(const GatheringProgress&)> condition) {
    services_.watch.progress = [this, condition = std::move(condition)](const GatheringProgress& now) {
      told_.push_back(now);
      if (condition(now)) stop_.request_stop();
    };
  }
  void expectNothingLeft() const {
    EXPECT_THAT(desktopNames(), IsEmpty());
    EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs"));
    EXPECT_TRUE(shownPanels().empty());
    EXPECT_THAT(log_.texts(), ElementsAre(logLine));
  }
  /// An archiver in place of the system's, a shell script that finds the archive's path in "$archive".
  void archiveWith(const QByteArray& script) {
    put("/root/usr/bin/bsdtar",
        "#!/bin/sh\nwhile [ $# -gt 0 ]; do [ \"$1\" = -f ] && archive=$2; shift; done\n" + script);
    EXPECT_TRUE(QFile::setPermissions(root() + "/root/usr/bin/bsdtar", QFile::ReadOwner | QFile::ExeOwner));
    EXPECT_TRUE(QFile::link("/usr/bin/env", root() + "/root/usr/bin/env"));
  }
  /// Stops once the archiver has begun its archive.
  void stopWhenArchiveIsThere() {
    when([this] { return !desktopNames().isEmpty(); }, [this] { stop_.request_stop(); });
    elsewhere([this] { EXPECT_FALSE(gatherAloud(fakes_)); });
  }

  PlatformTools tools_{home_.path() + "/root"};
  FileServices faked_{.paths = paths_, .tools = tools_};
  TroubleshootingServices fakes_{
      .paths = paths_, .files = faked_, .workspace = workspace_, .now = [this] { return now_; }};
  std::stop_source stop_;
  std::vector<GatheringProgress> told_;
  check::test::CapturedLog log_;
};

TEST_F(CancelledGatherings, TellHowFarTheyAre) {
  stopWhen([](const GatheringProgress&) { return false; });
  answerAlert();
  elsewhere([this] { EXPECT_TRUE(gatherAloud()); });
  ASSERT_EQ(told_.size(), 21U);
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_EQ(told_[i].files, static_cast<int>(i) + 1);
    EXPECT_FALSE(told_[i].packing);
  }
  EXPECT_EQ(told_[20].files, 20);
  EXPECT_TRUE(told_[20].packing);
  EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(CancelledGatherings, LeaveNothingWhenTheyHaveNotBegun) {
  stop_.request_stop();
  EXPECT_FALSE(gatherAloud());
  expectNothingLeft();
}

TEST_F(CancelledGatherings, LeaveNothingWhenTheyAreCopying) {
  stopWhen([](const GatheringProgress& now) { return now.files == 7; });
  EXPECT_FALSE(gatherAloud());
  EXPECT_EQ(told_.size(), 7U);
  expectNothingLeft();
}

TEST_F(CancelledGatherings, LeaveNothingWhenTheyAreCopyingAdditionalFiles) {
  stopWhen([](const GatheringProgress& now) { return now.files == 20; });
  services_.watch.stop = stop_.get_token();
  testing::internal::CaptureStderr();
  EXPECT_FALSE(gather({"Lumacheck"}, {put("/notes.txt"), root() + "/none"}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "what was not copied is no failure";
  EXPECT_EQ(told_.size(), 20U);
  expectNothingLeft();
}

TEST_F(CancelledGatherings, LeaveNothingWhenThePackingIsAboutToBegin) {
  stopWhen([](const GatheringProgress& now) { return now.packing; });
  EXPECT_FALSE(gatherAloud());
  expectNothingLeft();
}

TEST_F(CancelledGatherings, LeaveNoHalfArchive) {
  // Zeros that take no room on the disk, and the archiver many seconds.
  ASSERT_EQ(::truncate(QFile::encodeName(put("/user/Logs/Quorvane/Lumacheck.huge.log")).constData(), off_t{20} << 30U),
            0);
  QElapsedTimer since;
  when([this] { return !desktopNames().isEmpty(); },
       [&] {
         since.start();
         stop_.request_stop();
       });
  elsewhere([this] { EXPECT_FALSE(gatherAloud()); });
  EXPECT_LT(since.elapsed(), 5000);
  expectNothingLeft();
}

TEST_F(CancelledGatherings, EndAnArchiverThatDoesNotGo) {
  archiveWith("trap '' TERM\necho half > \"$archive\"\nwhile :; do sleep 0.1; done\n");
  QElapsedTimer since;
  since.start();
  stopWhenArchiveIsThere();
  EXPECT_LT(since.elapsed(), 10000);
  expectNothingLeft();
}

TEST_F(CancelledGatherings, LeaveNoWholeArchiveEither) {
  archiveWith("trap 'exit 0' TERM\necho whole > \"$archive\"\nwhile :; do sleep 0.01; done\n");
  stopWhenArchiveIsThere();
  expectNothingLeft();
}

TEST_F(CancelledGatherings, KeepTheArchivesOfOthers) {
  answerAlert();
  elsewhere([this] { EXPECT_TRUE(gatherAloud()); });
  ASSERT_THAT(desktopNames(), ElementsAre("Lumacheck Logs.zip"));
  for (int i = 0; i < 2; ++i) {
    stopWhen([i](const GatheringProgress& now) { return i == 0 ? now.packing : now.files == 3; });
    stop_ = std::stop_source();
    EXPECT_FALSE(gatherAloud());
  }
  EXPECT_THAT(desktopNames(), ElementsAre("Lumacheck Logs.zip"));
  EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs"));
  EXPECT_FALSE(QFile::exists(root() + "/.Trash"));
  EXPECT_THAT(log_.texts(), ElementsAre(logLine, logLine));
}

TEST_F(CancelledGatherings, MayComeAgainAtOnce) {
  stop_.request_stop();
  EXPECT_FALSE(gatherAloud());
  stop_ = std::stop_source();
  answerAlert();
  elsewhere([this] { EXPECT_TRUE(gatherAloud()); });
  EXPECT_EQ(entriesOf(desktop("Lumacheck Logs.zip")).size(), 20);
}

TEST_F(CancelledGatherings, EndAtAnyMoment) {
  services_.watch.progress = [](const GatheringProgress&) {};
  for (int moment = 0; moment < 25; ++moment) {
    stop_ = std::stop_source();
    services_.watch.stop = stop_.get_token();
    std::atomic<bool> gathered = true;
    std::thread gatherer([&] { gathered = gather({"Lumacheck"}); });
    std::this_thread::sleep_for(std::chrono::milliseconds(moment * 2));
    stop_.request_stop();
    gatherer.join();
    EXPECT_EQ(desktopNames().size(), gathered ? 1 : 0) << moment;
    EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs")) << moment;
    for (const QString& name : desktopNames()) QFile::remove(desktop(name));
  }
}

}  // namespace

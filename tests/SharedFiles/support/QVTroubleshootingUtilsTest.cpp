#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/SharedFiles/support/GatheringFixture.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

TEST_F(LogGatherings, TakeWhatBelongsToTheApplication) {
  for (const char* domain : {"/user", "/machine"}) {
    for (const char* file :
         {"/Logs/Quorvane/Lumacheck.1.log", "/Logs/Quorvane/Lumacheck.5.log", "/Logs/Quorvane/Lumacheck.1.task.log",
          "/Logs/Quorvane/LumacheckPro.1.log", "/Logs/Quorvane/lumacheck.1.log", "/Logs/Quorvane/Lumacheck.1.txt",
          "/Logs/Quorvane/Other.1.log", "/Logs/CrashReporter/Lumacheck_2026-01-01_host.crash",
          "/Logs/CrashReporter/LumacheckPro_2026-01-01_host.crash",
          "/Logs/DiagnosticReports/Lumacheck_2026-01-02_host.crash",
          "/Logs/DiagnosticReports/Lumacheck_2026-01-02_host.txt", "/Preferences/com.quorvane.Lumacheck.plist",
          "/Preferences/com.quorvane.lumacheck.plist", "/Preferences/com.quorvane.global.plist"}) {
      put(QString(domain) + file);
    }
  }
  ASSERT_TRUE(gather({"Lumacheck"}));
  std::vector<QString> wanted;
  for (const char* domain : {"/user", "/machine"}) {
    for (const char* file :
         {"/Logs/Quorvane/Lumacheck.1.log", "/Logs/Quorvane/Lumacheck.5.log", "/Logs/Quorvane/Lumacheck.1.task.log",
          "/Logs/Quorvane/LumacheckPro.1.log", "/Logs/CrashReporter/Lumacheck_2026-01-01_host.crash",
          "/Logs/DiagnosticReports/Lumacheck_2026-01-02_host.crash", "/Preferences/com.quorvane.Lumacheck.plist"}) {
      wanted.push_back(QString(domain) + file);
    }
  }
  EXPECT_THAT(entriesOf(desktop("Lumacheck Logs.zip")), ::testing::UnorderedElementsAreArray(wanted));
  EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs"));
}

TEST_F(LogGatherings, OpenWithOtherToolsAndHoldTheFilesBytes) {
  const QByteArray bytes = QByteArray("line\n").repeated(1000);
  put("/user/Logs/Quorvane/Lumacheck.1.log", bytes);
  ASSERT_TRUE(gather({"Lumacheck"}));
  const QString archive = desktop("Lumacheck Logs.zip");
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask("/usr/bin/unzip", {"-tq", archive}), 0);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask("/usr/bin/bsdtar", {"-tf", archive}), 0);
  EXPECT_EQ(contentsIn(archive, "/user/Logs/Quorvane/Lumacheck.1.log"), bytes);
}

TEST_F(LogGatherings, FindThePreferencesOfANameWithBlanks) {
  put("/user/Preferences/com.quorvane.LumacheckPro.plist");
  put("/machine/Preferences/com.quorvane.lumacheckpro.plist");
  put("/user/Logs/Quorvane/Lumacheck Pro.1.log");
  ASSERT_TRUE(gather({"Lumacheck Pro"}));
  EXPECT_THAT(entriesOf(desktop("Lumacheck Pro Logs.zip")),
              UnorderedElementsAre("/user/Preferences/com.quorvane.LumacheckPro.plist",
                                   "/machine/Preferences/com.quorvane.lumacheckpro.plist",
                                   "/user/Logs/Quorvane/Lumacheck Pro.1.log"));
}

TEST_F(LogGatherings, TakeEachFileOnceForSeveralNames) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  put("/user/Logs/Quorvane/Other.1.log");
  ASSERT_TRUE(gather({"Lumacheck", "Luma", "Other"}));
  EXPECT_THAT(desktopNames(), ElementsAre("Lumacheck Logs.zip"));
  EXPECT_EQ(entriesOf(desktop("Lumacheck Logs.zip")).size(), 2);
}

TEST_F(LogGatherings, GoFromTheUsersFilesToTheMachinesAndTheAdditionalOnes) {
  QStringList order;
  for (const char* domain : {"/user", "/machine"}) {
    for (const char* file :
         {"/Logs/Quorvane/Lumacheck.1.log", "/Logs/CrashReporter/Lumacheck_2026_host.crash",
          "/Logs/DiagnosticReports/Lumacheck_2026_host.crash", "/Preferences/com.quorvane.Lumacheck.plist"}) {
      order << QString(domain) + file;
    }
  }
  const qsizetype logs = order.size();
  order << "/notes/first.txt"
        << "/notes/second.txt";
  for (const QString& file : order) put(file);
  for (qsizetype failing = 0; failing < order.size(); ++failing) {
    const QString place = root() + order[failing];
    ASSERT_TRUE(QFile::remove(place));
    if (failing < logs) {
      ASSERT_TRUE(QFile::link("/proc/self/mem", place)) << "which cannot be read";
    }
    QList<int> counts;
    services_.watch.progress = [&counts](const GatheringProgress& now) { counts.append(now.files); };
    testing::internal::CaptureStderr();
    EXPECT_FALSE(gather({"Lumacheck"}, {root() + order[logs], root() + order[logs + 1]}));
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    QStringList copied;
    for (const QString& file : order) {
      if (QFileInfo::exists(root() + "/tmp/QV_App_Logs" + root() + file)) copied << file;
    }
    EXPECT_EQ(copied, order.mid(0, failing)) << order[failing].toStdString();
    EXPECT_EQ(counts.size(), failing);
    QFile::remove(place);
    put(order[failing]);
  }
}

TEST_F(LogGatherings, CountWhatTheyCopied) {
  for (const char* file : {"/user/Logs/Quorvane/Lumacheck.1.log", "/user/Logs/Quorvane/Lumacheck.2.log",
                           "/machine/Preferences/com.quorvane.lumacheck.plist", "/notes"}) {
    put(file);
  }
  QList<int> counts;
  services_.watch.progress = [&counts](const GatheringProgress& now) {
    counts.append(now.packing ? -now.files : now.files);
  };
  EXPECT_TRUE(gather({"Lumacheck", "Luma"}, {root() + "/notes"}));
  EXPECT_EQ(counts, QList<int>({1, 2, 3, 4, -4})) << "a file that two names fit counts once";
}

TEST_F(LogGatherings, CopyWhatALinkLeadsTo) {
  const QString target = put("/elsewhere/real.txt", "real");
  QDir().mkpath(root() + "/user/Logs/Quorvane");
  const auto link = [this](const QByteArray& to, const char* name) {
    return ::symlink(to.constData(), QFile::encodeName(root() + "/user/Logs/Quorvane/" + name).constData());
  };
  ASSERT_EQ(link(QFile::encodeName(target), "Lumacheck.1.log"), 0);
  ASSERT_EQ(link("../../../elsewhere/real.txt", "Lumacheck.2.log"), 0);
  ASSERT_EQ(link("nowhere", "Lumacheck.3.log"), 0);
  ASSERT_TRUE(gather({"Lumacheck"}));
  const QString archive = desktop("Lumacheck Logs.zip");
  EXPECT_EQ(contentsIn(archive, "/user/Logs/Quorvane/Lumacheck.1.log"), "real");
  EXPECT_EQ(contentsIn(archive, "/user/Logs/Quorvane/Lumacheck.2.log"), "real");
  EXPECT_THAT(entriesOf(archive), Contains("/user/Logs/Quorvane/Lumacheck.3.log"));
}

TEST_F(LogGatherings, GiveTheSecondArchiveOfAnHourTheTimeInItsName) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  ASSERT_TRUE(gather({"Lumacheck"}));
  ASSERT_TRUE(gather({"Lumacheck"}));
  EXPECT_THAT(desktopNames(), UnorderedElementsAre("Lumacheck Logs.zip", "Lumacheck Logs_20260102030405.zip"));
  ASSERT_TRUE(gather({"Lumacheck"})) << "the archive of the same second goes to the trash";
  EXPECT_EQ(desktopNames().size(), 2);
  EXPECT_EQ(QDir(root() + "/.Trash").entryList(QDir::Files).size(), 1);
}

TEST_F(LogGatherings, TakeAdditionalFilesEvenAlone) {
  const QString additional = put("/my notes/-rf $(id).txt", "notes");
  ASSERT_TRUE(gather({"Lumacheck"}, {additional}));
  EXPECT_EQ(contentsIn(desktop("Lumacheck Logs.zip"), "/my notes/-rf $(id).txt"), "notes");
}

TEST_F(LogGatherings, FailWhenAnAdditionalFileIsMissing) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(gather({"Lumacheck"}, {root() + "/none"}));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Unable to copy file: "));
  EXPECT_THAT(desktopNames(), IsEmpty());
  EXPECT_TRUE(QFile::exists(root() + "/tmp/QV_App_Logs")) << "left for a look at it";
}

TEST_F(LogGatherings, FailWithoutAWordWhenALogCannotBeCopied) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  const QString unreadable = root() + "/user/Logs/Quorvane/Lumacheck.2.log";
  ASSERT_EQ(::symlink("/proc/self/mem", QFile::encodeName(unreadable).constData()), 0);  // reading it is an error
  testing::internal::CaptureStderr();
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppWithName("Lumacheck", services_));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Unable to copy log: "));
  EXPECT_TRUE(shownPanels().empty());
  EXPECT_TRUE(QFile::exists(root() + "/tmp/QV_App_Logs"));
  EXPECT_THAT(desktopNames(), IsEmpty());
}

TEST_F(LogGatherings, ReplaceALeftWorkingFolder) {
  put("/tmp/QV_App_Logs/stale");
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  ASSERT_TRUE(gather({"Lumacheck"}));
  EXPECT_THAT(entriesOf(desktop("Lumacheck Logs.zip")), ElementsAre("/user/Logs/Quorvane/Lumacheck.1.log"));
}

TEST_F(LogGatherings, TellOfAWorkingFolderThatCannotBeMade) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  ASSERT_TRUE(QDir(root() + "/tmp").removeRecursively());
  put("/tmp");  // a file where the folder should be
  testing::internal::CaptureStderr();
  EXPECT_FALSE(gather({"Lumacheck"}));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Error creating temp folder: "));
}

TEST_F(LogGatherings, KeepTheWorkingFolderFromOthers) {
  const QString log = put("/user/Logs/Quorvane/Lumacheck.1.log");
  EXPECT_FALSE(gather({"Lumacheck"}, {root() + "/none"}));
  struct stat folder {};
  ASSERT_EQ(::stat(QFile::encodeName(root() + "/tmp/QV_App_Logs").constData(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 0777, 0700U);
}

TEST_F(LogGatherings, LeaveOutANameThatIsNotText) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  const QByteArray name = QFile::encodeName(root() + "/user/Logs/Quorvane/Lumacheck") + "\xff.log";
  FILE* const file = std::fopen(name.constData(), "w");
  ASSERT_NE(file, nullptr);
  std::fclose(file);
  ASSERT_TRUE(gather({"Lumacheck"}));
  EXPECT_THAT(entriesOf(desktop("Lumacheck Logs.zip")), ElementsAre("/user/Logs/Quorvane/Lumacheck.1.log"));
}

// --- Alerts ---------------------------------------------------------------------------------------------------------

TEST_F(LogGatherings, SayThatAllWentWell) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  answerAlert();
  EXPECT_TRUE(QVTroubleshootingUtils::gatherLogsForAppWithName("Lumacheck", services_));
  ASSERT_EQ(alerts_.size(), 1U);
  EXPECT_EQ(alerts_[0].first, "Logs gathered successfully");
  EXPECT_EQ(alerts_[0].second, "The gathered logs were placed on your desktop.");
}

TEST_F(LogGatherings, SayThatThereWasNothing) {
  answerAlert();
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppWithName("Lumacheck", services_));
  ASSERT_EQ(alerts_.size(), 1U);
  EXPECT_EQ(alerts_[0].first, "No logs found");
  EXPECT_EQ(alerts_[0].second, "There were no logs available to gather.");
  EXPECT_TRUE(QFile::exists(root() + "/tmp/QV_App_Logs")) << "left in place";
}

TEST_F(LogGatherings, MakeTheDesktopFolderWhereThereIsNone) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  ASSERT_TRUE(QDir().rmdir(root() + "/Desktop"));
  EXPECT_TRUE(gather({"Lumacheck"}));
  EXPECT_EQ(desktopNames(), QStringList("Lumacheck Logs.zip"));
}

TEST_F(LogGatherings, SayThatThereIsNoArchive) {
  put("/user/Logs/Quorvane/Lumacheck.1.log");
  ASSERT_TRUE(QDir(root() + "/Desktop").removeRecursively());
  put("/Desktop");
  answerAlert();
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppsWithNames({"Lumacheck"}, services_));
  ASSERT_EQ(alerts_.size(), 1U);
  EXPECT_EQ(alerts_[0].first, "Logs could not be gathered");
  EXPECT_EQ(alerts_[0].second, "Please check your file permissions.");
  EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs"));
}

TEST_F(LogGatherings, SayNothingWithoutAName) {
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppWithName(QString(), services_));
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppsWithNames({}, services_));
  EXPECT_FALSE(QFile::exists(root() + "/tmp/QV_App_Logs"));
}

TEST_F(LogGatherings, SayNothingWhenSilent) {
  EXPECT_FALSE(QVTroubleshootingUtils::gatherLogsForAppsWithNames({"Lumacheck"}, true, services_));
  EXPECT_TRUE(shownPanels().empty());
}

// --- Viewing --------------------------------------------------------------------------------------------------------

TEST_F(LogGatherings, OpenTheNewestLog) {
  const QString log = put("/user/Logs/Quorvane/Lumacheck.1.log"),
                task = put("/user/Logs/Quorvane/Lumacheck.1.task.log");
  EXPECT_TRUE(QVTroubleshootingUtils::viewLogForApp("Lumacheck", services_));
  EXPECT_TRUE(QVTroubleshootingUtils::viewTaskLogForApp("Lumacheck", services_));
  EXPECT_THAT(workspace_.opened, ElementsAre(log, task));
  workspace_.opens = false;
  EXPECT_FALSE(QVTroubleshootingUtils::viewLogForApp("Lumacheck", services_));
}

TEST_F(LogGatherings, SayWhenThereIsNoLogToOpen) {
  put("/machine/Logs/Quorvane/Lumacheck.1.log");  // not looked at
  answerAlert();
  EXPECT_FALSE(QVTroubleshootingUtils::viewLogForApp("Lumacheck", services_));
  settle();
  answerAlert();
  EXPECT_FALSE(QVTroubleshootingUtils::viewTaskLogForApp("Lumacheck", services_));
  ASSERT_EQ(alerts_.size(), 2U);
  EXPECT_EQ(alerts_[0].first, "No log found");
  EXPECT_EQ(alerts_[0].second, "You must perform a task before viewing the log.");
  EXPECT_EQ(alerts_[1].second,
            "You must run the application as a task (e.g. through Taskwarden) before viewing a log.");
  EXPECT_THAT(workspace_.opened, IsEmpty());
}

}  // namespace

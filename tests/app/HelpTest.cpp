#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <utility>

#include <gmock/gmock.h>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"
#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The menus, and someone who reads and answers the alerts.
class Help : public WindowFixture {
 protected:
  Help() {
    environment_.set("TMPDIR", home_.path().toUtf8());
    launch();
    QObject::connect(&answers_, &QTimer::timeout, [this] {
      for (AlertPanel* panel : shownPanels()) {
        alerts_ << panel->accessibleName() << textOf(*panel, "informativeText");
        EXPECT_EQ(panel->parentWidget(), nullptr);
        panel->defaultButton()->click();
      }
    });
    answers_.start(10);
  }

  static void put(const QString& path, const QByteArray& bytes = "text") {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }
  QString logFile(const QString& name) const {
    return QVLocalPaths::libraryDirectory(true, *platform_) + "/Logs/Quorvane/" + name;
  }
  void relaunchAs(const QHash<QString, QString>& information) {
    makeController(BundleInfo(information, home_.filePath("prefix/bin/Lumacheck")));
    launch();
  }

  QStringList alerts_;
  QTimer answers_;
};

TEST_F(Help, OpensItsPages) {
  relaunchAs({{"QVShortName", "lumacheck"}, {"CFBundleShortVersionString", "1.2.3"}});
  struct Row {
    const char *action, *address;
  };
  const Row rows[] = {
      {"vextrelHome", "http://www.quorvane.example/vextrel/"},
      {"support", "http://support.quorvane.example/vextrel/"},
      {"quorvaneHome", "http://www.quorvane.example"},
      {"reportBug", "http://support.quorvane.example/vextrel/bugreport?app=lumacheck&version=1.2.3"},
      {"suggestFeature", "http://support.quorvane.example/vextrel/featurerequest?app=lumacheck"},
  };
  for (const Row& row : rows) {
    workspace_.opened.clear();
    choose(row.action);
    EXPECT_THAT(workspace_.opened, ElementsAre(row.address)) << row.action;
  }
}

TEST_F(Help, EscapesTheVersionAndNotTheName) {
  struct Row {
    const char *name, *version, *query;
  };
  const Row rows[] = {
      {"lumacheck", "1.0 beta 2", "app=lumacheck&version=1.0%20beta%202"},
      {"luma check", "1.0", "app=luma check&version=1.0"},
      {"lumacheck", "1.0\u00df", "app=lumacheck&version=1.0%C3%9F"},
      {"lumacheck", "1.0%20", "app=lumacheck&version=1.0%2520"},
      {"lumacheck", "1.0&x=1#2+3", "app=lumacheck&version=1.0%26x%3D1%232%2B3"},
      {"lumacheck", "1.0-rc_1~2", "app=lumacheck&version=1.0-rc_1~2"},
  };
  for (const Row& row : rows) {
    relaunchAs({{"QVShortName", row.name}, {"CFBundleShortVersionString", QString::fromUtf8(row.version)}});
    workspace_.opened.clear();
    choose("reportBug");
    EXPECT_THAT(workspace_.opened,
                ElementsAre(QLatin1String("http://support.quorvane.example/vextrel/bugreport?") + row.query));
  }
}

TEST_F(Help, NamesTheFamilyWhereTheBundleHasNoShortName) {
  relaunchAs({{"CFBundleShortVersionString", "1.0"}});
  choose("reportBug");
  choose("suggestFeature");
  EXPECT_THAT(workspace_.opened,
              ElementsAre("http://support.quorvane.example/vextrel/bugreport?app=vextrel&version=1.0",
                          "http://support.quorvane.example/vextrel/featurerequest?app=vextrel"));
}

TEST_F(Help, OpensTheManualOfTheMachine) {
  relaunchAs({});
  const QString manual = home_.filePath("prefix/share/quorvane/Documentation/Quorvane/Vextrel User Manual.pdf");
  put(manual);
  choose("userManual");
  EXPECT_THAT(workspace_.opened, ElementsAre(manual));
}

TEST_F(Help, OpensNothingWithoutAManualAndSaysSo) {
  relaunchAs({});
  put(QVLocalPaths::libraryDirectory(true, *platform_) + "/Documentation/Quorvane/Vextrel User Manual.pdf");
  choose("userManual");
  runFor(50);
  EXPECT_THAT(workspace_.opened, IsEmpty());
  EXPECT_THAT(alerts_, IsEmpty());
  EXPECT_EQ(said(), Message(MessageKind::Failure, "The user manual is not installed."));
}

TEST_F(Help, SaysThatNothingOpensItsPages) {
  relaunchAs({});
  const QString manual = home_.filePath("prefix/share/quorvane/Documentation/Quorvane/Vextrel User Manual.pdf");
  put(manual);
  workspace_.opens = false;
  choose("userManual");
  EXPECT_EQ(said(), Message(MessageKind::Failure, "There is no program that opens " + manual + "."));
  choose("vextrelHome");
  EXPECT_EQ(said(),
            Message(MessageKind::Failure, "There is no program that opens http://www.quorvane.example/vextrel/."));
  workspace_.opens = true;
  choose("vextrelHome");
  EXPECT_TRUE(said().isEmpty());
}

TEST_F(Help, ShowsTheLogs) {
  put(logFile("Lumacheck.1.log"));
  put(logFile("Lumacheck.1.task.log"));
  choose("viewLog");
  choose("viewTaskLog");
  EXPECT_THAT(workspace_.opened, ElementsAre(logFile("Lumacheck.1.log"), logFile("Lumacheck.1.task.log")));
  EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(Help, SaysWhichLogIsMissing) {
  choose("viewLog");
  choose("viewTaskLog");
  EXPECT_THAT(workspace_.opened, IsEmpty());
  EXPECT_THAT(alerts_,
              ElementsAre("No log found", "You must perform a task before viewing the log.", "No log found",
                          "You must run the application as a task (e.g. through Taskwarden) before viewing a log."));
  EXPECT_EQ(said(), Message(MessageKind::Failure, "The log was not opened."));
}

TEST_F(Help, GathersTheLogsOntoTheDesktop) {
  ASSERT_TRUE(QDir(home_.path()).mkdir("Desktop"));
  put(logFile("Lumacheck.1.log"));
  choose("gatherLogs");
  EXPECT_TRUE(QFile::exists(home_.filePath("Desktop/Lumacheck Logs.zip")));
  EXPECT_THAT(alerts_, ElementsAre("Logs gathered successfully", "The gathered logs were placed on your desktop."));
}

TEST_F(Help, SaysThatNoArchiveCouldBeMade) {
  put(logFile("Lumacheck.1.log"));
  put(home_.filePath("Desktop"));  // a file where the folder should be
  choose("gatherLogs");
  EXPECT_THAT(alerts_, ElementsAre("Logs could not be gathered", "Please check your file permissions."));
  EXPECT_EQ(said(), Message(MessageKind::Failure, "The logs were not gathered."));
}

TEST_F(Help, GathersOnceAtATime) {
  ASSERT_TRUE(QDir(home_.path()).mkdir("Desktop"));
  put(logFile("Lumacheck.1.log"));
  QTimer::singleShot(0, [this] { controller().gatherLogs(); });
  controller().gatherLogs();
  runFor(50);
  EXPECT_EQ(alerts_.size(), 2);
  EXPECT_THAT(QDir(home_.filePath("Desktop")).entryList(QDir::Files), ElementsAre("Lumacheck Logs.zip"));
}

TEST_F(Help, GathersNothingWhenCancelled) {
  ASSERT_TRUE(QDir(home_.path()).mkdir("Desktop"));
  // Zeros that take no room on the disk, and the archiver many seconds.
  put(logFile("Lumacheck.huge.log"));
  ASSERT_TRUE(QFile(logFile("Lumacheck.huge.log")).resize(qint64{20} << 30));
  const check::test::CapturedLog log;
  QString line;
  QTimer cancel;
  cancel.callOnTimeout([&] {
    const auto* const sheet = interface().window().findChild<QDialog*>("busy");
    if (sheet == nullptr || !sheet->isVisible()) return;
    line = sheet->findChild<QLabel*>("progress")->text();
    QTest::mouseClick(sheet->findChild<QPushButton*>(), Qt::LeftButton);
  });
  cancel.start(5);
  choose("gatherLogs");
  // The log and the preferences; more where the machine has some.
  EXPECT_TRUE(line.contains(QRegularExpression("^Packing… Files collected: [2-9]$"))) << line.toStdString();
  EXPECT_THAT(alerts_, IsEmpty());
  EXPECT_THAT(QDir(home_.filePath("Desktop")).entryList(QDir::Files), IsEmpty());
  EXPECT_FALSE(QFile::exists(home_.filePath("QV_App_Logs")));
  EXPECT_THAT(log.texts(), ElementsAre("Gathering the logs was cancelled."));
  EXPECT_EQ(said(), Message(MessageKind::Information, "The gathering of logs was cancelled."));

  cancel.stop();
  ASSERT_TRUE(QFile::remove(logFile("Lumacheck.huge.log")));
  put(logFile("Lumacheck.1.log"));
  choose("gatherLogs");
  EXPECT_THAT(QDir(home_.filePath("Desktop")).entryList(QDir::Files), ElementsAre("Lumacheck Logs.zip"));
}

TEST_F(Help, LooksForAnUpdater) {
  const check::test::CapturedLog log;
  choose("updateCheck");
  EXPECT_THAT(log.texts(), ElementsAre("Error: unable to find software updater",
                                       "Unable to launch Software Update - path doesn't exist"));
  EXPECT_EQ(said(), Message(MessageKind::Failure, "No updater is installed that could look for a newer version."));
}

TEST_F(Help, NamesVersionsAndLicencesOnce) {
  choose("about");
  choose("about");
  const auto dialogs = interface().window().findChildren<QDialog*>("about");
  ASSERT_EQ(dialogs.size(), 1);
  QStringList texts;
  for (const QLabel* label : dialogs[0]->findChildren<QLabel*>()) texts << label->text();
  EXPECT_TRUE(
      texts.contains("Lumacheck " + BundleInfo::mainBundle().objectForInfoDictionaryKey("CFBundleShortVersionString")));
  const std::pair<const char*, const char*> libraries[] = {{"Qt", "Qt6Core"},
                                                           {"FFmpeg libavcodec", "libavcodec"},
                                                           {"FFmpeg libavformat", "libavformat"},
                                                           {"FFmpeg libavutil", "libavutil"},
                                                           {"Little CMS", "lcms2"},
                                                           {"libplist", "libplist-2.0"},
                                                           {"elfutils libdw", "libdw"},
                                                           {"OpenSSL", "libcrypto"},
                                                           {"zlib", "zlib"}};
  for (const auto& [library, package] : libraries) {
    const qsizetype at = texts.indexOf(library);
    ASSERT_GE(at, 0) << library;
    QProcess packages;
    packages.start("pkg-config", {"--modversion", package});
    ASSERT_TRUE(packages.waitForFinished());
    EXPECT_EQ(texts.value(at + 1), QString(packages.readAllStandardOutput()).trimmed()) << library;
    EXPECT_TRUE(texts.value(at + 2).contains(QRegularExpression("GPL|MIT|Apache-2.0|Zlib"))) << library;
  }
}

TEST_F(Help, SetsVersionsAndLicencesIntoColumns) {
  choose("about");
  const auto labels = interface().window().findChild<QDialog*>("about")->findChildren<QLabel*>();
  const auto placeOf = [&](const char* text) {
    const auto found =
        std::find_if(labels.begin(), labels.end(), [&](const QLabel* each) { return each->text() == text; });
    return found == labels.end() ? QRect() : (*found)->geometry();
  };
  const QRect first = placeOf("Qt"), firstVersion = placeOf(qVersion()), firstLicence = placeOf("LGPL-3.0");
  const QRect last = placeOf("zlib"), lastLicence = placeOf("Zlib");
  EXPECT_EQ(firstVersion.top(), first.top());
  EXPECT_EQ(firstLicence.top(), first.top());
  EXPECT_EQ(lastLicence.top(), last.top());
  EXPECT_GT(last.top(), first.bottom());
  EXPECT_EQ(last.left(), first.left());
  EXPECT_EQ(lastLicence.left(), firstLicence.left());
  EXPECT_GT(firstVersion.left(), first.right());
  EXPECT_EQ(firstVersion.left() - first.right(), firstLicence.left() - firstVersion.right()) << "columns stand apart";
}

TEST_F(Help, PrintsNothing) {
  QString error;
  EXPECT_EQ(LumacheckAppDelegate::printOperationWithSettings({}, &error), nullptr);
  EXPECT_TRUE(error.isEmpty());
}

}  // namespace

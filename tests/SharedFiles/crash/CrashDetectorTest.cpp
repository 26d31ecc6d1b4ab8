#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SharedFiles/crash/CrashDetector.h"
#include "SharedFiles/crash/QVCrashline.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

const QString crashed = QStringLiteral("Application crashed on last launch");
const QString disabled = QStringLiteral("Crash reporter disabled");

/// A user other than root in a home of his own, with a machine-wide Library beside it.
class HomePaths : public LinuxPathPlatform {
 public:
  explicit HomePaths(const QString& home)
      : LinuxPathPlatform(1000, BundleInfo({}, home + "/prefix/bin/Lumacheck")), home_(home) {}
  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override {
    if (directory == SearchPathDirectory::NSLibraryDirectory && domain == SearchPathDomain::User) {
      return {home_ + "/Library"};
    }
    return LinuxPathPlatform::searchPaths(directory, domain);
  }

 private:
  QString home_;
};

struct Opened {
  QString with, file;
  bool operator==(const Opened&) const = default;
};

class CrashDetection : public testing::Test {
 protected:
  CrashDetection()
      : paths_(home_.path()),
        bundle_({{"CFBundleName", "Lumacheck"}, {"CFBundleIdentifier", "com.quorvane.Lumacheck"}},
                home_.path() + "/prefix/bin/Lumacheck"),
        defaults_(paths_, bundle_) {
    QDir().mkpath(userFolder("Preferences"));
  }

  CrashDetector detector() {
    return CrashDetector({.paths = paths_,
                          .defaults = defaults_,
                          .bundle = bundle_,
                          .bundlePath = home_.path() + "/prefix/lib/lumacheck",
                          .tools = PlatformTools(),
                          .now = [this] { return now_; },
                          .console = [this](const QString& text) { console_ << text; },
                          .runTask =
                              [this](const QString& path, const QStringList& arguments, double timeout) {
                                EXPECT_EQ(timeout, 5);
                                tasks_ << (QStringList(path) + arguments);
                              },
                          .openWithApplication =
                              [this](const QString& application, const QString& file) {
                                applications_.push_back({application, file});
                                return false;
                              },
                          .openWithIdentifier =
                              [this](const QString& identifier, const QString& file) {
                                identifiers_.push_back({identifier, file});
                                return false;
                              }});
  }

  QString userFolder(const QString& rest) const { return home_.path() + "/Library/" + rest; }
  QString machineFolder(const QString& rest) const { return home_.path() + "/prefix/share/quorvane/" + rest; }

  /// A crash report, that many seconds before or after the time that the tests take for now.
  QString writeReport(const QString& path, int seconds, qint64 milliseconds = 0) const {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("report");
    file.flush();
    EXPECT_TRUE(file.setFileTime(launch_.addSecs(seconds).addMSecs(milliseconds), QFile::FileModificationTime));
    return path;
  }
  void stamp(const QVariant& launch, const QVariant& exit = QVariant()) {
    defaults_.setObject(launch, "launch");
    defaults_.setObject(exit, "exit");
  }
  void setDisabled(const QVariant& value) const {
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"disable-crash-reporter", value}},
                                    userFolder("Preferences/com.quorvane.global.plist")));
  }
  QString check(const QString& name = {}, const QString& plist = {}) { return detector().checkForCrashes(name, plist); }

  ProcessLog log_;
  QTemporaryDir home_;
  HomePaths paths_;
  BundleInfo bundle_;
  UserDefaults defaults_;
  const QDateTime launch_ = QDateTime(QDate(2026, 11, 21), QTime(6, 12, 0), Qt::UTC);
  QDateTime now_ = launch_.addSecs(60);
  const QString report_ = userFolder("Logs/DiagnosticReports/Lumacheck_2026-11-21-061230_host.crash");
  QStringList console_;
  QList<QStringList> tasks_;
  std::vector<Opened> applications_, identifiers_;
};

TEST_F(CrashDetection, FindsNothingOnTheFirstLaunchAndStampsIt) {
  writeReport(report_, 30);
  detector().startCrashline({}, {}, [](const QString&) { FAIL(); });
  EXPECT_EQ(defaults_.objectForKey("launch").toDateTime(), now_);
  EXPECT_FALSE(defaults_.objectForKey("exit").isValid());
  EXPECT_EQ(log_.entries(), QStringList());
  EXPECT_TRUE(identifiers_.empty());
}

TEST_F(CrashDetection, StampsFractionsOfASecond) {
  const QString plist = home_.filePath("stamps.plist");
  for (const QString& path : {QString(), plist}) {
    now_ = launch_.addMSecs(1999);
    detector().startCrashline({}, path, {});
    const QVariantMap stamps =
        PropertyList::readDictionary(path.isNull() ? defaults_.path() : path).value_or(QVariantMap());
    EXPECT_EQ(stamps.value("launch").toDateTime(), launch_.addMSecs(1999));
  }
}

TEST_F(CrashDetection, TellsACrashInTheSecondOfTheExitBeforeOnce) {
  now_ = launch_.addMSecs(10'200);
  detector().stopCrashline({});
  now_ = launch_.addMSecs(10'800);
  detector().startCrashline({}, {}, {});
  writeReport(report_, 10, 900);
  now_ = launch_.addMSecs(10'950);
  EXPECT_EQ(check(), report_) << "the exit was before the launch";
  detector().startCrashline({}, {}, {});
  EXPECT_TRUE(check().isNull()) << "the next launch closed the episode within the same second";
}

TEST_F(CrashDetection, AnExitThatIsNotEarlierThanTheLaunchIsClean) {
  writeReport(report_, 30);
  stamp(launch_, launch_);
  EXPECT_TRUE(check().isNull());
  stamp(launch_, launch_.addSecs(1));
  EXPECT_TRUE(check().isNull());
  stamp(launch_, launch_.addSecs(-1));
  EXPECT_EQ(check(), report_);
}

TEST_F(CrashDetection, WhatIsNoDateIsNoStamp) {
  writeReport(report_, 30);
  stamp("2026", launch_);
  EXPECT_TRUE(check().isNull());
  stamp(launch_, 7);
  EXPECT_EQ(check(), report_);
}

TEST_F(CrashDetection, ReportsACrashOnceOnTheFirstLaunchAfterIt) {
  writeReport(report_, 30);
  stamp(launch_);
  QString told;
  bool onMainThread = false;
  const CrashDetector::Delegate delegate = [&](const QString& path) {
    told = path;
    onMainThread = MainThread::isCurrent();
  };
  detector().startCrashline({}, {}, delegate);
  EXPECT_TRUE(told.isNull()) << "the delegate is not waited for";
  ASSERT_TRUE(runEventLoopUntil([&] { return !told.isNull(); }));
  EXPECT_EQ(told, report_);
  EXPECT_TRUE(onMainThread);
  EXPECT_EQ(log_.entries(), QStringList(crashed));
  EXPECT_EQ(identifiers_, std::vector<Opened>({{"com.quorvane.Crashline", report_}}));

  now_ = now_.addSecs(60);
  EXPECT_TRUE(check().isNull()) << "the launch stamp closed the episode";
  EXPECT_EQ(log_.entries(), QStringList(crashed));
}

TEST_F(CrashDetection, TellsTheDelegateOnTheMainThreadFromAnyThread) {
  writeReport(report_, 30);
  stamp(launch_);
  std::atomic<bool> onMainThread = false;
  std::thread([&] {
    detector().startCrashline({}, {}, [&](const QString&) { onMainThread = MainThread::isCurrent(); });
  }).join();
  EXPECT_TRUE(runEventLoopUntil([&] { return onMainThread.load(); }));
}

TEST_F(CrashDetection, IgnoresWhatIsNotNewerThanTheLaunch) {
  stamp(launch_);
  for (const int seconds : {-100, -1, 0}) {
    writeReport(report_, seconds);
    EXPECT_TRUE(check().isNull()) << seconds;
  }
  writeReport(report_, 0, 1);
  EXPECT_EQ(check(), report_);
}

TEST_F(CrashDetection, MatchesNamesByTheirBeginning) {
  struct Row {
    const char *file, *application;
    bool matches;
  };
  const QString folder = userFolder("Logs/DiagnosticReports/");
  stamp(launch_);
  for (const Row& row :
       {Row{"lumacheck_2026_host.crash", nullptr, true}, Row{"LUMACHECK_", nullptr, true},
        Row{"LumacheckPro_2026_host.crash", nullptr, false}, Row{"Lumacheck", nullptr, false},
        Row{"Lumacheck-2026", nullptr, false}, Row{"A Lumacheck_2026", nullptr, false},
        Row{"Other_2026", "Other", true}, Row{"Lumacheck_2026", "Other", false}, Row{"It's '%@_2026", "It's '%@", true},
        Row{"-rf_2026", "-RF", true}, Row{"$(id)_\n2026", "$(ID)", true}, Row{"_2026", "", true}}) {
    const QString report = writeReport(folder + row.file, 30);
    EXPECT_EQ(check(QString::fromUtf8(row.application)), row.matches ? report : QString()) << row.file;
    QFile::remove(report);
  }
}

TEST_F(CrashDetection, WithoutAnyNameMatchesNothing) {
  writeReport(userFolder("Logs/DiagnosticReports/_2026"), 30);
  stamp(launch_);
  bundle_ = BundleInfo();
  EXPECT_TRUE(check().isNull());
}

TEST_F(CrashDetection, TakesOnlyTheLastNameOfAFolder) {
  const QString folder = userFolder("Logs/DiagnosticReports/");
  stamp(launch_);
  writeReport(folder + "Lumacheck_2026-11-21-061230_host.crash", 30);
  const QString last = writeReport(folder + "Lumacheck_2026-11-21-061231_host.crash", -5);
  EXPECT_TRUE(check().isNull()) << "the last name is older than the launch, whatever the others are";
  writeReport(last, 31);
  EXPECT_EQ(check(), last);
  writeReport(folder + "lumacheck_2026-11-20-000000_host.crash", -1);
  EXPECT_EQ(check(), last) << "a small letter does not come after every date";
}

TEST_F(CrashDetection, LooksThroughTheFoldersInTheirOrder) {
  const QString name = "Lumacheck_2026-11-21-061230_host.crash";
  const QStringList reports = {userFolder("Logs/CrashReporter/") + name, userFolder("Logs/DiagnosticReports/") + name,
                               machineFolder("Logs/CrashReporter/") + name,
                               machineFolder("Logs/DiagnosticReports/") + name};
  stamp(launch_);
  for (const QString& report : reports) writeReport(report, 30);
  for (const QString& report : reports) {
    EXPECT_EQ(check(), report);
    writeReport(report, -30);  // an old one sends the search on to the next folder
  }
  EXPECT_TRUE(check().isNull());
}

TEST_F(CrashDetection, LeavesOutNamesThatAreNotUtf8) {
  stamp(launch_);
  writeReport(report_, 30);
  const std::string odd = (QFileInfo(report_).path() + "/Lumacheck_2027").toStdString() + "\xff";
  FILE* const made = std::fopen(odd.c_str(), "w");
  ASSERT_NE(made, nullptr);
  std::fclose(made);
  EXPECT_EQ(check(), report_);
  EXPECT_EQ(log_.entries(),
            QStringList({"The name of a file is not UTF-8 and was refused: Lumacheck_2027%FF", crashed}));
  EXPECT_EQ(std::remove(odd.c_str()), 0);  // no temporary folder of Qt's removes such a name
}

TEST_F(CrashDetection, HandsNothingOffWhereThatIsTurnedOff) {
  writeReport(report_, 30);
  stamp(launch_);
  for (const QVariant& value : {QVariant("1"), QVariant(true), QVariant(1), QVariant(1.0)}) {
    console_.clear();
    setDisabled(value);
    const qsizetype before = log_.entries().size();
    EXPECT_EQ(check(), report_);
    EXPECT_EQ(console_, QStringList(disabled)) << value.typeName();
    EXPECT_EQ(log_.entries().mid(before), QStringList({crashed, disabled}));
    EXPECT_TRUE(identifiers_.empty());
  }
  console_.clear();
  for (const QVariant& value : {QVariant("0"), QVariant("true"), QVariant(" 1"), QVariant(false), QVariant(0),
                                QVariant(2), QVariant(0.5), QVariant(QVariantList{1})}) {
    identifiers_.clear();
    setDisabled(value);
    EXPECT_EQ(check(), report_);
    EXPECT_EQ(identifiers_.size(), 1U) << value.toString().toStdString();
  }
  EXPECT_TRUE(console_.isEmpty());
}

TEST_F(CrashDetection, HandsOffToTheFirstApplicationThatExists) {
  writeReport(report_, 30);
  stamp(launch_);
  const QString bundle = home_.path() + "/prefix/lib/lumacheck/Contents/";
  QDir().mkpath(bundle + "MacOS/Crashline.app");
  EXPECT_EQ(check(), report_);
  EXPECT_EQ(applications_, std::vector<Opened>({{bundle + "MacOS/Crashline.app", report_}}));
  applications_.clear();

  // Only where the executable were a folder could this be.
  QDir().mkpath(home_.path() + "/prefix/bin/Lumacheck/Crashline.app");
  check();
  EXPECT_EQ(applications_, std::vector<Opened>({{home_.path() + "/prefix/bin/Lumacheck/Crashline.app", report_}}));
  applications_.clear();

  QDir().mkpath(bundle + "Resources/Crashline.app");
  check();
  EXPECT_EQ(applications_, std::vector<Opened>({{bundle + "Resources/Crashline.app", report_}}));
  EXPECT_TRUE(identifiers_.empty()) << "a failed open is not tried elsewhere";
}

TEST_F(CrashDetection, KeepsStampsInAPropertyListWherePathIsGiven) {
  const QString plist = home_.filePath("stamps.plist");
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"other", "kept"}}, plist));
  detector().startCrashline({}, plist, {});
  detector().stopCrashline(plist);
  EXPECT_EQ(PropertyList::readDictionary(plist), (QVariantMap{{"other", "kept"}, {"launch", now_}, {"exit", now_}}));
  EXPECT_FALSE(defaults_.objectForKey("launch").isValid());
  EXPECT_TRUE(tasks_.isEmpty()) << "outside of any folder Users nothing is given away";

  writeReport(report_, 90);
  EXPECT_TRUE(check({}, plist).isNull());
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"launch", launch_}}, plist));
  EXPECT_EQ(check({}, plist), report_);
  EXPECT_TRUE(check({}, home_.filePath("missing.plist")).isNull());
}

TEST_F(CrashDetection, AnUnreadablePropertyListCountsAsEmpty) {
  const QString plist = home_.filePath("stamps.plist");
  QFile file(plist);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("no property list");
  file.close();
  EXPECT_TRUE(check({}, plist).isNull());
  detector().stopCrashline(plist);
  EXPECT_EQ(PropertyList::readDictionary(plist), (QVariantMap{{"exit", now_}}));
}

TEST_F(CrashDetection, StampsTheExitInTheDefaults) {
  detector().startCrashline({}, {}, {});
  now_ = now_.addSecs(5);
  detector().stopCrashline({});
  EXPECT_EQ(defaults_.objectForKey("exit").toDateTime(), now_);
  writeReport(report_, 120);
  EXPECT_TRUE(check().isNull());
}

TEST_F(CrashDetection, GivesAFileBelowUsersToItsUser) {
  struct Row {
    const char *path, *user;
  };
  for (const Row& row :
       {Row{"/Users/anna/Library/a.plist", "anna"}, Row{"/Volumes/x/Users/-rf/a", "-rf"},
        Row{"/Users/Users/a", "Users"}, Row{"/Users/$(id);a b/a\nb", "$(id);a b"}, Row{"/Users/anna", "anna"}}) {
    tasks_.clear();
    detector().chownPlist(row.path);
    ASSERT_EQ(tasks_.size(), 1) << row.path;
    EXPECT_TRUE(tasks_[0][0] == "/usr/sbin/chown" || tasks_[0][0] == "/usr/bin/chown");
    EXPECT_EQ(tasks_[0].mid(1), QStringList({row.user, row.path})) << "and nothing else";
  }
  tasks_.clear();
  for (const char* path : {"/home/anna/a", "/Users", "/a/Users", "/users/anna/a", "/MyUsers/anna", "", "/"}) {
    detector().chownPlist(path);
  }
  EXPECT_TRUE(tasks_.isEmpty());
}

TEST_F(CrashDetection, GivesTheStampsAwayAfterEveryStamp) {
  const QString plist = home_.path() + "/Users/nobody/stamps.plist";
  QDir().mkpath(QFileInfo(plist).path());
  detector().startCrashline({}, plist, {});
  detector().stopCrashline(plist);
  ASSERT_EQ(tasks_.size(), 2);
  EXPECT_EQ(tasks_[0].mid(1), QStringList({"nobody", plist}));
}

TEST_F(CrashDetection, GivesAwayNothingThatALinkLeadsTo) {
  const QString plist = home_.path() + "/Users/nobody/stamps.plist";
  QDir().mkpath(QFileInfo(plist).path());
  for (const QString& target : {writeReport(home_.path() + "/somebody's", 0), home_.path() + "/nowhere"}) {
    ASSERT_TRUE(QFile::link(target, plist));
    detector().chownPlist(plist);
    detector().stopCrashline(plist);
    EXPECT_TRUE(tasks_.isEmpty()) << target.toStdString();
    ASSERT_TRUE(QFile::remove(plist));
  }
}

TEST(QVCrashline, KeepsTheStampsOfTheRunningProgram) {
  const ProcessLog log;
  QVCrashline::startCrashline();
  EXPECT_TRUE(UserDefaults::standard().objectForKey("launch").toDateTime().isValid());
  QVCrashline::stopCrashline();
  EXPECT_TRUE(UserDefaults::standard().objectForKey("exit").toDateTime().isValid());
  EXPECT_TRUE(QVCrashline::checkForCrashes().isNull());

  const QString plist = log.home() + "/Users/nobody/stamps.plist";
  QDir().mkpath(QFileInfo(plist).path());
  QVCrashline::startCrashline("Other", plist);
  QVCrashline::stopCrashline(plist);
  EXPECT_TRUE(QVCrashline::checkForCrashes("Other", plist).isNull());
  EXPECT_EQ(PropertyList::readDictionary(plist).value_or(QVariantMap()).size(), 2);
  struct stat status {};
  ASSERT_EQ(::stat(QFile::encodeName(plist).constData(), &status), 0);
  if (::getuid() == 0) {
    EXPECT_EQ(QFileInfo(plist).owner(), "nobody");
  }
  QVCrashline::startCrashlineWithDelegate({});
  QVCrashline::chownPlist(log.home());
}

}  // namespace

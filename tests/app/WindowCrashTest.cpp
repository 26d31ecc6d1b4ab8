// The program Lumacheck, installed into a folder, crashing and started again.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <functional>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using testing::HasSubstr;

class WindowCrash : public testing::Test {
 protected:
  WindowCrash() {
    environment_ = QProcessEnvironment::systemEnvironment();
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "DISPLAY", "WAYLAND_DISPLAY"}) {
      environment_.remove(variable);
    }
    environment_.insert("HOME", path("home"));
    environment_.insert("XDG_RUNTIME_DIR", path("home"));
    environment_.insert("XDG_DATA_DIRS", path("data"));
    environment_.insert("QT_QPA_PLATFORM", "offscreen");
    QDir().mkpath(path("prefix/share/quorvane/Logs/Quorvane"));  // the superuser's log
    install(LUMACHECK_WINDOW, path("prefix/bin/Lumacheck"));
    install(LUMACHECK_CRASH_REPORT, path("prefix/lib/lumacheck/lumacheck-crash-report"));
  }
  ~WindowCrash() override {
    running_.kill();
    running_.waitForFinished();
  }

  QString path(const QString& name) const { return folder_.filePath(name); }
  static void install(const QString& file, const QString& target) {
    QDir().mkpath(QFileInfo(target).path());
    EXPECT_TRUE(QFile::copy(file, target)) << target.toStdString();
  }
  static bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < 20000) QThread::msleep(20);
    return condition();
  }
  static QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  /// A stand-in that notes the files it is given.
  void writeProgram(const QString& file) const {
    QDir().mkpath(QFileInfo(file).path());
    QFile program(file);
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + QFile::encodeName(path("given")) + "'\n");
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  void writeDesktopEntry() const {
    writeProgram(path("data/Crash Line"));
    QDir().mkpath(path("data/applications"));
    QFile entry(path("data/applications/com.quorvane.Crashline.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Crashline\nExec=\"" +
                QFile::encodeName(path("data/Crash Line")) + "\" %f\n");
  }
  void writeBundle() const {
    const QString bundle = path("prefix/lib/lumacheck/Contents/Resources/Crashline.app");
    writeProgram(bundle + "/Contents/MacOS/crashline");
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"CFBundleExecutable", "crashline"}}, bundle + "/Contents/Info.plist"));
  }
  void turnHandOffOff(const QVariant& value) const {
    QDir().mkpath(library("Preferences"));
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"disable-crash-reporter", value}},
                                    library("Preferences/com.quorvane.global.plist")));
  }

  QString library(const QString& rest) const { return path("home/.local/share/quorvane/") + rest; }
  QDateTime stamp(const char* key) const {
    return PropertyList::readDictionary(library("Preferences/com.quorvane.Lumacheck.plist"))
        .value_or(QVariantMap())
        .value(key)
        .toDateTime();
  }
  QStringList reports() const {
    QStringList found;
    const QDir folder(library("Logs/DiagnosticReports"));
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) found << folder.filePath(name);
    return found;
  }
  QByteArray logs() const {
    QByteArray all;
    for (const QString& folder : {library("Logs/Quorvane/"), path("prefix/share/quorvane/Logs/Quorvane/")}) {
      for (int generation = 1; generation <= 5; ++generation) {
        all += contentOf(folder + QStringLiteral("Lumacheck.%1.log").arg(generation));
      }
    }
    return all;
  }
  /// How often the logs say it. What is logged before the superuser's log begins is not kept.
  void expectLogged(const char* text, int times) const {
    if (::getuid() != 0) {
      EXPECT_EQ(logs().count(text), times) << text;
    }
  }
  static constexpr const char* logBegins = "Log started: ";
  QByteArray given() const { return contentOf(path("given")); }

  /// Starts the window in a second of its own and waits until it works. By the time its own log begins, what was said
  /// of the run before is written.
  void start() {
    const auto logsBefore = logs().count(logBegins);
    QThread::msleep(static_cast<unsigned long>(1050 - QTime::currentTime().msec()));
    const QDateTime now = QDateTime::currentDateTimeUtc().addSecs(-1);
    running_.setProcessEnvironment(environment_);
    running_.setProcessChannelMode(QProcess::MergedChannels);
    running_.start(path("prefix/bin/Lumacheck"), QStringList());
    ASSERT_TRUE(running_.waitForStarted());
    ASSERT_TRUE(waitUntil([&] { return stamp("launch") > now && logs().count(logBegins) > logsBefore; }));
  }
  /// 0 after an orderly end, else the signal that ended it.
  int endWith(int signal) {
    const auto process = static_cast<pid_t>(running_.processId());
    if (process <= 0) return -1;
    ::kill(process, signal);
    EXPECT_TRUE(running_.waitForFinished(20000));
    return running_.exitStatus() == QProcess::CrashExit ? running_.exitCode() : 0;
  }
  void crashOnce() {
    start();
    EXPECT_EQ(endWith(SIGSEGV), SIGSEGV);
    ASSERT_EQ(reports().size(), 1);
  }

  QTemporaryDir folder_;
  QProcessEnvironment environment_;
  QProcess running_;
};

TEST_F(WindowCrash, IsReportedOnceByTheNextStart) {
  writeDesktopEntry();
  crashOnce();
  const QString report = reports()[0];
  EXPECT_THAT(QFileInfo(report).fileName().toStdString(), testing::MatchesRegex("Lumacheck_20.*_.*\\.crash"));
  EXPECT_EQ(QFile::permissions(library("Logs/DiagnosticReports")) & 0x0077, QFile::Permissions());
  const std::string text = contentOf(report).toStdString();
  EXPECT_THAT(text, HasSubstr("Process:         Lumacheck ["));
  EXPECT_THAT(text, HasSubstr("Signal:          SIGSEGV (11), code 0, sent by a process\n"));
  EXPECT_THAT(text, testing::ContainsRegex("\nThread [0-9]+ Crashed: Lumacheck\n0  .*libc"));
  EXPECT_THAT(text, HasSubstr("  libQt6Core.so.6"));

  start();
  EXPECT_TRUE(waitUntil([&] { return given() == report.toUtf8() + "\n"; })) << given().toStdString();
  EXPECT_EQ(endWith(SIGTERM), 0);
  expectLogged("Application crashed on last launch", 1);
  EXPECT_GE(stamp("exit"), stamp("launch"));

  start();
  EXPECT_EQ(endWith(SIGKILL), SIGKILL) << "a run that ends without a report";
  start();
  EXPECT_EQ(endWith(SIGTERM), 0);
  expectLogged("Application crashed on last launch", 1);
  EXPECT_EQ(given(), report.toUtf8() + "\n");
  EXPECT_EQ(reports().size(), 1);
}

TEST_F(WindowCrash, AnOrderlyEndIsNone) {
  writeDesktopEntry();
  for (int run = 0; run < 2; ++run) {
    start();
    EXPECT_EQ(endWith(SIGTERM), 0);
  }
  EXPECT_EQ(reports(), QStringList());
  expectLogged("Application crashed on last launch", 0);
  EXPECT_EQ(given(), "");
}

TEST_F(WindowCrash, IsHandedToTheApplicationInTheBundleFirst) {
  writeDesktopEntry();
  writeBundle();
  crashOnce();
  QFile::remove(path("data/Crash Line"));
  start();
  EXPECT_TRUE(waitUntil([&] { return given() == reports()[0].toUtf8() + "\n"; })) << given().toStdString();
  EXPECT_EQ(endWith(SIGTERM), 0);
}

TEST_F(WindowCrash, IsLoggedOnlyWhereTheHandOffIsTurnedOff) {
  writeDesktopEntry();
  for (const QVariant& value : {QVariant("1"), QVariant(true)}) {
    turnHandOffOff(value);
    for (const QString& report : reports()) QFile::remove(report);
    crashOnce();
    running_.readAll();
    start();
    EXPECT_EQ(endWith(SIGTERM), 0);
    EXPECT_THAT(running_.readAll().toStdString(), HasSubstr("Crash reporter disabled\n"));
  }
  expectLogged("Application crashed on last launch", 2);
  expectLogged("Crash reporter disabled", 2);
  EXPECT_EQ(given(), "");
}

}  // namespace

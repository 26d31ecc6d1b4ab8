// The program Lumacheck, installed into a folder, crashing and started again.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <csignal>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

using testing::HasSubstr;

class WindowCrash : public ProgramFixture {
 protected:
  void writeBundle() const {
    const QString bundle = path("prefix/lib/lumacheck/Contents/Resources/Crashline.app");
    writeCrashline(bundle + "/Contents/MacOS/crashline");
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"CFBundleExecutable", "crashline"}}, bundle + "/Contents/Info.plist"));
  }
  void turnHandOffOff(const QVariant& value) const {
    put(library("Preferences/com.quorvane.global.plist"),
        PropertyList::toBytes(QVariantMap{{"disable-crash-reporter", value}}).value_or(""));
  }

  QStringList reports() const {
    QStringList found;
    const QDir folder(library("Logs/DiagnosticReports"));
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) found << folder.filePath(name);
    return found;
  }
  /// How often the logs say it. What is logged before the superuser's log begins is not kept.
  void expectLogged(const char* text, int times) const {
    QByteArray all;
    for (int generation = 1; generation <= 5; ++generation) all += log(generation);
    if (::getuid() != 0) {
      EXPECT_EQ(all.count(text), times) << text;
    }
  }
  void crashOnce() {
    start();
    EXPECT_EQ(endWith(SIGSEGV), SIGSEGV);
    ASSERT_EQ(reports().size(), 1);
  }
};

TEST_F(WindowCrash, IsReportedOnceByTheNextStart) {
  writeCrashlineEntry();
  ASSERT_NO_FATAL_FAILURE(crashOnce());
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
  writeCrashlineEntry();
  for (int run = 0; run < 2; ++run) {
    start();
    EXPECT_EQ(endWith(SIGTERM), 0);
  }
  EXPECT_EQ(reports(), QStringList());
  expectLogged("Application crashed on last launch", 0);
  EXPECT_EQ(given(), "");
}

TEST_F(WindowCrash, IsHandedToTheApplicationInTheBundleFirst) {
  writeCrashlineEntry();
  writeBundle();
  ASSERT_NO_FATAL_FAILURE(crashOnce());
  QFile::remove(crashline());
  start();
  EXPECT_TRUE(waitUntil([&] { return given() == reports()[0].toUtf8() + "\n"; })) << given().toStdString();
  EXPECT_EQ(endWith(SIGTERM), 0);
}

TEST_F(WindowCrash, IsLoggedOnlyWhereTheHandOffIsTurnedOff) {
  writeCrashlineEntry();
  for (const QVariant& value : {QVariant("1"), QVariant(true)}) {
    turnHandOffOff(value);
    for (const QString& report : reports()) QFile::remove(report);
    ASSERT_NO_FATAL_FAILURE(crashOnce());
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

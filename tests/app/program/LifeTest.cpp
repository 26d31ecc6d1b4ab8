// One user's Lumacheck, from the first start on: what lies on the disk after each step.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <csignal>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* consent = "Help improve Quorvane software by submitting analytics and usage data";

class Life : public ProgramFixture {
 protected:
  Life() { writeCrashlineEntry(); }

  /// The files of the home, but for what other libraries keep there.
  QStringList homeFiles() const {
    QStringList files = filesBelow(path("home"));
    files.removeIf([](const QString& file) { return file.startsWith(".cache/fontconfig/"); });
    return files;
  }
  QStringList reports() const { return filesBelow(library("Logs/DiagnosticReports")); }
  void expectLog(int generation, const testing::Matcher<std::string>& content) const {
    if (::getuid() == 0 && generation > 1) return;  // the superuser's newest log is never rotated
    EXPECT_THAT(log(generation).toStdString(), content);
  }
  /// The settings with two movies, in an orderly state or not, after so many launches.
  static QString settingsAfter(int launches) {
    return "exit: date\nlastDestFile: string " + retaggedMovie() + "\nlastSourceFile: string " + plainMovie() +
           "\nlaunch: date\nlaunchCount: integer " + QString::number(launches) +
           "\nrecentPairs: array [{dest: string " + retaggedMovie() + ", source: string " + plainMovie() + "}]";
  }
  static void pass(int milliseconds) { QThread::msleep(static_cast<unsigned long>(milliseconds)); }
  bool orderly() const { return stamp("exit") >= stamp("launch"); }

  void firstLaunch();
  void secondLaunchWithTwoFiles();
  void secondStartWhileItRuns();
  void crash();
  void relaunchAfterTheCrash();
  void killedAndRelaunched();
  void switchedOnInThePreferences();
  void launchWithConsent();
};

void Life::firstLaunch() {
  EXPECT_THAT(homeFiles(), IsEmpty());
  start();
  EXPECT_EQ(contentsOf(defaultsFile()), "launch: date\nlaunchCount: integer 1");
  QStringList expected{".local/share/quorvane/Preferences/com.quorvane.Lumacheck.plist"};
  if (::getuid() != 0) expected.prepend(".local/share/quorvane/Logs/Quorvane/Lumacheck.1.log");
  EXPECT_EQ(homeFiles(), expected) << "and nothing of analytics";
  EXPECT_TRUE(waitUntil([this] { return log(1).contains("32-bit mode\n"); }));
  const std::string date = "20[0-9]{2}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} [+-][0-9]{4}";
  EXPECT_THAT(log(1).toStdString(),
              testing::ContainsRegex("^" + date + " - Log started: " + date + "\n" +  //
                                     date + " - Version: [0-9.]+\n" +                 //
                                     date + " - Path: " + program().toStdString() +   //
                                     "\n" + date + " - System: macOS .+, [0-9]+ CPU\\(s\\), [0-9.]+ GB RAM\n" + date +
                                     " - Running in 32-bit mode\n"));
  EXPECT_EQ(tell("checked qcLoggingCheck"), "no");
  EXPECT_EQ(tell("checked Link the playheads"), "yes") << "two empty movies are equally long";
  EXPECT_FALSE(stamp("exit").isValid());
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
  EXPECT_EQ(contentsOf(defaultsFile()), "exit: date\nlaunch: date\nlaunchCount: integer 1");
  EXPECT_TRUE(orderly());
  EXPECT_EQ(homeFiles(), expected);
  EXPECT_THAT(
      filesBelow(path("run")),
      Not(testing::Contains(testing::Truly([](const QString& name) { return name.startsWith("lumacheck-"); }))));
}

void Life::secondLaunchWithTwoFiles() {
  const QByteArray firstLog = log(1);
  start({plainMovie(), retaggedMovie()});
  EXPECT_TRUE(waitUntil([this] { return contentsOf(defaultsFile()).contains("recentPairs"); }));
  EXPECT_EQ(contentsOf(defaultsFile()), settingsAfter(2));
  EXPECT_FALSE(orderly()) << "while it runs";
  expectLog(2, testing::Eq(firstLog.toStdString()));
  expectLog(1, HasSubstr(" - Log started: "));
  pass(6000);
  EXPECT_THAT(dialogs(), IsEmpty()) << "nobody is asked before the third launch";
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_TRUE(orderly());
  EXPECT_EQ(contentsOf(decisionFile()), "none");
}

void Life::secondStartWhileItRuns() {
  const QByteArray secondLog = log(1);
  start();
  EXPECT_TRUE(waitUntil([this] { return log(1).contains("32-bit mode\n"); }));
  EXPECT_TRUE(waitUntil([this] { return contentsOf(defaultsFile()) == settingsAfter(3); }));
  expectLog(2, testing::Eq(secondLog.toStdString()));
  const QByteArray defaultsBefore = contentOf(defaultsFile()), logBefore = log(1);
  QProcess later;
  run(later, program());
  EXPECT_TRUE(later.waitForFinished(20000));
  EXPECT_EQ(later.exitCode(), 0);
  EXPECT_EQ(contentOf(defaultsFile()), defaultsBefore) << "no launch, no stamp";
  expectLog(1, testing::Eq(logBefore.toStdString()));
  expectLog(2, testing::Eq(secondLog.toStdString()));
}

void Life::crash() {
  EXPECT_TRUE(waitForDialog(consent));
  EXPECT_TRUE(press("More Info"));
  EXPECT_TRUE(waitUntil([this] { return tell("opened").contains("/support/posts/app_analytics_and_usage_data\""); }));
  EXPECT_EQ(contentsOf(decisionFile()), "none");
  EXPECT_THAT(reports(), IsEmpty());
  EXPECT_EQ(endWith(SIGSEGV), SIGSEGV);
  ASSERT_EQ(reports().size(), 1);
  EXPECT_THAT(reports()[0].toStdString(), testing::MatchesRegex("Lumacheck_20.*\\.crash"));
  EXPECT_FALSE(orderly());
  EXPECT_EQ(contentsOf(defaultsFile()), settingsAfter(3));
  expectLog(1, Not(HasSubstr("crashed")));
}

void Life::relaunchAfterTheCrash() {
  start();
  EXPECT_TRUE(waitUntil([this] { return !given().isEmpty(); }));
  EXPECT_EQ(given(), QFile::encodeName(library("Logs/DiagnosticReports/" + reports()[0])) + "\n");
  expectLog(2, HasSubstr(" - Application crashed on last launch\n"));
  expectLog(1, Not(HasSubstr("crashed")));
  expectLog(3, HasSubstr("Log started: "));
  EXPECT_EQ(contentsOf(defaultsFile()), settingsAfter(4));
  EXPECT_TRUE(waitForDialog(consent)) << "since nothing was decided";
  EXPECT_TRUE(press("Don't Allow"));
  EXPECT_TRUE(waitUntil([this] { return QFile::exists(decisionFile()); }));
  EXPECT_EQ(contentsOf(decisionFile()), "logQC: boolean false");
  EXPECT_EQ(endWith(SIGINT), 0);
  EXPECT_TRUE(orderly());
  EXPECT_EQ(contentsOf(eventsFile()), "none");
}

void Life::killedAndRelaunched() {
  start();
  EXPECT_EQ(endWith(SIGKILL), SIGKILL);
  EXPECT_FALSE(orderly());
  start();
  EXPECT_EQ(endWith(SIGHUP), 0);
  EXPECT_TRUE(orderly());
  EXPECT_EQ(given().count('\n'), 1) << "one crash, told once";
  for (int generation = 1; generation <= 2; ++generation) expectLog(generation, Not(HasSubstr("crashed")));
  if (::getuid() != 0) {
    EXPECT_THAT(
        QDir(library("Logs/Quorvane")).entryList(QDir::Files),
        ElementsAre("Lumacheck.1.log", "Lumacheck.2.log", "Lumacheck.3.log", "Lumacheck.4.log", "Lumacheck.5.log"));
  }
}

void Life::switchedOnInThePreferences() {
  start();
  pass(6000);
  EXPECT_THAT(dialogs(), IsEmpty()) << "it is decided";
  EXPECT_TRUE(choose("preferences"));
  EXPECT_TRUE(waitForDialog("Preferences"));
  EXPECT_EQ(tell("checked qcLoggingCheck"), "no");
  EXPECT_TRUE(press("Send anonymous usage data to Quorvane"));
  EXPECT_TRUE(waitUntil([this] { return contentsOf(decisionFile()) == "logQC: boolean true"; }));
  EXPECT_TRUE(press("Close"));
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
  EXPECT_EQ(contentsOf(eventsFile()), "none") << "the controller of that run was not told";
}

void Life::launchWithConsent() {
  start();
  EXPECT_EQ(tell("checked qcLoggingCheck"), "yes");
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
  EXPECT_EQ(contentsOf(eventsFile()), "array []")
      << "no event: those of a start are logged by the answer to the prompt";
  EXPECT_EQ(contentsOf(decisionFile()), "logQC: boolean true");
  EXPECT_EQ(contentsOf(defaultsFile()), settingsAfter(8));
}

TEST_F(Life, LeavesWhatIsToldAfterEachStep) {
  using Self = Life_LeavesWhatIsToldAfterEachStep_Test;
  const std::pair<const char*, void (Self::*)()> steps[] = {
      {"first launch", &Self::firstLaunch},
      {"second launch", &Self::secondLaunchWithTwoFiles},
      {"second start", &Self::secondStartWhileItRuns},
      {"crash", &Self::crash},
      {"relaunch", &Self::relaunchAfterTheCrash},
      {"killed", &Self::killedAndRelaunched},
      {"switched on", &Self::switchedOnInThePreferences},
      {"launch with consent", &Self::launchWithConsent},
  };
  for (const auto& [name, step] : steps) {
    SCOPED_TRACE(name);
    (this->*step)();
    ASSERT_FALSE(HasFailure()) << running_.readAll().toStdString();
  }
}

}  // namespace

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/log/QVException.h"
#include "SharedFiles/log/QVLog.h"
#include "tests/SharedFiles/EnvironmentGuard.h"

namespace {

/// The process's own log, each time in a process of its own: the shared controller exists once and for good.
class LogProcess : public ::testing::Test {
 protected:
  void SetUp() override {
    ::testing::FLAGS_gtest_death_test_style = "fast";
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) environment_.clear(variable);
    environment_.set("HOME", QFile::encodeName(home_.path()));
    ASSERT_EQ(chmod(QFile::encodeName(home_.path()).constData(), 0777), 0);
  }
  QString logFile() const { return home_.path() + "/.local/share/quorvane/Logs/Quorvane/test_shared_log.1.log"; }
  QByteArray log() const {
    QFile file(logFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no log)");
  }
  static qsizetype threads() { return QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); }

  /// Called first in each process: the superuser's log would lie outside the home folder.
  static void becomeOrdinary() {
    constexpr uid_t nobody = 65534;
    if (getuid() == 0 && setuid(nobody) != 0) std::_Exit(1);
  }

  QTemporaryDir home_;
  EnvironmentGuard environment_;
};

void checkThat(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "not so: " << what << std::endl;
  std::_Exit(1);
}

using LogProcessDeathTest = LogProcess;

TEST_F(LogProcessDeathTest, WritesWhatIsQueuedBeforeItEnds) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        QVLog::appendLog("Gamma: %f", 1.25);
        QVLog::fastAppendLog(std::string("std %s"), "text");
        QVLog::appendLogAndDebugPrint(QStringLiteral("QString %@"), QStringLiteral("ä"));
        QVLog::debugPrint("nowhere %d");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  const QByteArray text = log();
  EXPECT_TRUE(text.contains(" - Log started: ")) << text.toStdString();
  EXPECT_TRUE(text.contains("/test_shared_log\n"));
  EXPECT_TRUE(text.contains(" - System: macOS "));
  EXPECT_TRUE(text.contains(" - Running in 32-bit mode\n"));
  EXPECT_TRUE(text.contains(" - Gamma: 1.250000\n"));
  EXPECT_TRUE(text.contains(" - std text\n"));
  EXPECT_TRUE(text.contains(" - QString ä\n"));
  EXPECT_FALSE(text.contains("nowhere"));
  EXPECT_TRUE(QRegularExpression("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000 - Log started")
                  .match(QString::fromUtf8(text))
                  .hasMatch())
      << text.toStdString();
}

TEST_F(LogProcessDeathTest, OutlivesWhoeverReadsItsOutput) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        std::signal(SIGPIPE, SIG_DFL);
        int ends[2] = {};
        checkThat(::pipe(ends) == 0 && ::dup2(ends[1], STDOUT_FILENO) == STDOUT_FILENO, "the output is a pipe");
        ::close(ends[0]);
        ::close(ends[1]);
        QVLog::createNewLog();
        QVLog::appendLogAndPrint("first");
        QVLog::appendLogAndPrint("second");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_TRUE(log().contains(" - first\n")) << log().toStdString();
  EXPECT_TRUE(log().contains(" - second\n"));
}

TEST_F(LogProcessDeathTest, StartsNothingBeforeAnEntryIsQueued) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        const qsizetype before = threads();
        QVLog::sharedController().setLoggingDisabled(true);
        QVLog::sharedController().setNoPrinting(true);
        QVLog::createNewLog(QString(), true);
        QVLog::appendLog("nothing");
        QVLog::appendLogAndPrint("nothing");
        QVLog::finishWriting();
        checkThat(threads() == before, "no thread was started");
        checkThat(&QVLog::sharedController() == &QVLog::sharedController(), "there is one log");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_FALSE(QFile::exists(home_.path() + "/.local"));
}

TEST_F(LogProcessDeathTest, MayLogAfterItsEnd) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        QVLog::willTerminate();
        QVLog::appendLog("late");
        QVLog::finishWriting();
        checkThat(QVLog::availableLogs().size() == 1, "the log is listed");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_FALSE(log().contains("late"));
}

void throwUncaught(void (*thrower)()) noexcept {
  thrower();
}

TEST_F(LogProcessDeathTest, WritesTheReasonOfAnUncaughtExceptionBeforeItDies) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        throwUncaught([] { throw QVPlatformException("index 5 beyond 50% of bounds", "NSRangeException"); });
      },
      ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log().endsWith(" - index 5 beyond 50% of bounds\n")) << log().toStdString();
}

TEST_F(LogProcessDeathTest, WritesTheReasonOfAnyUncaughtException) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        throwUncaught([] { throw std::runtime_error("plain reason"); });
      },
      ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log().endsWith(" - plain reason\n")) << log().toStdString();
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        throwUncaught([] { throw 5; });
      },
      ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log().endsWith(" - unknown exception\n")) << log().toStdString();
}

TEST_F(LogProcessDeathTest, WritesTheReasonOfAnExceptionOnAnotherThread) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        std::thread([] { throw std::runtime_error("elsewhere"); }).join();
      },
      ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log().endsWith(" - elsewhere\n")) << log().toStdString();
}

TEST_F(LogProcessDeathTest, DiesOfAnExceptionOnTheWriterItself) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        QVLog::createNewLog();
        QVLog::sharedController().writeQueue()->addOperation([] { throw std::runtime_error("in the writer"); });
        std::this_thread::sleep_for(std::chrono::seconds(30));
      },
      ::testing::KilledBySignal(SIGABRT), "");
  EXPECT_TRUE(log().endsWith(" - in the writer\n")) << log().toStdString();
}

TEST_F(LogProcessDeathTest, HandsOnToTheHandlerThatStoodBefore) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        std::set_terminate([] { std::_Exit(7); });
        QVLog::createNewLog();
        std::terminate();
      },
      ::testing::ExitedWithCode(7), "");
  EXPECT_TRUE(log().endsWith(" - Running in 32-bit mode\n")) << log().toStdString();
}

TEST_F(LogProcessDeathTest, KnowsItsMainThread) {
  EXPECT_EXIT(
      {
        becomeOrdinary();
        const LogEnvironment environment = LogEnvironment::standard();
        bool elsewhere = true;
        std::thread([&] { elsewhere = environment.isMainThread(); }).join();
        checkThat(environment.isMainThread() && !elsewhere, "the main thread is known");
        const LogSystemSummary system = environment.system();
        checkThat(!system.version.isEmpty() && system.processorCount > 0 && system.physicalMemory > 1 << 20,
                  "the machine");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace

#include <QElapsedTimer>
#include <atomic>
#include <csignal>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "SharedFiles/tasks/QVTaskEx.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/tasks/Shell.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString timedOut = "Task /bin/sh timed out. Terminating...";
const QString longRun = "echo first; exec sleep 30";

class TimedTaskRuns : public testing::Test {
 protected:
  ProcessLog log_;
};

TEST_F(TimedTaskRuns, EndWithTheOutputUpToTheTimeOut) {
  const auto data = callBesideEventLoop([] { return QVTaskEx::dataFromTask(shell, {"-c", longRun}, 1.0); });
  EXPECT_EQ(data, QByteArray("first\n"));
  EXPECT_THAT(log_.entries(), ElementsAre(timedOut));
  EXPECT_TRUE(log_.printed().contains(timedOut));
}

TEST_F(TimedTaskRuns, EndWithTheStatusOfTheTerminatedProgram) {
  EXPECT_EQ(callBesideEventLoop([] {
              return QVTaskEx::terminationCodeFromTask(shell, {"-c", longRun}, 1.0);
            }),
            SIGTERM);
  EXPECT_THAT(log_.entries(), ElementsAre(timedOut));
}

TEST_F(TimedTaskRuns, LeaveAProgramAloneThatEndsInTime) {
  EXPECT_EQ(callBesideEventLoop([] { return QVTaskEx::stringFromTask(shell, {"-c", "echo done"}, 30.0); }), "done\n");
  EXPECT_EQ(callBesideEventLoop([] { return QVTaskEx::terminationCodeFromTask(shell, {"-c", "exit 4"}, 30.0); }), 4);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(TimedTaskRuns, CutTheirTimeOutToWholeSeconds) {
  constexpr std::int32_t least = -2147483647 - 1;
  const struct {
    double timeout;
    std::int32_t seconds;
  } rows[] = {{0, 0},
              {0.5, 0},
              {0.999, 0},
              {1, 1},
              {1.999, 1},
              {-0.999, 0},
              {-1, -1},
              {-1.999, -1},
              {2147483646.5, 2147483646},
              {2147483647.9, 2147483647},
              {2147483648.0, least},
              {-2147483648.9, least},
              {-2147483647.9, -2147483647},
              {1e300, least},
              {-1e300, least},
              {std::numeric_limits<double>::infinity(), least},
              {std::numeric_limits<double>::quiet_NaN(), least}};
  for (const auto& row : rows) EXPECT_EQ(QVTaskEx::wholeSeconds(row.timeout), row.seconds) << row.timeout;
}

TEST_F(TimedTaskRuns, EndAtTheCutSecond) {
  QElapsedTimer elapsed;
  elapsed.start();
  EXPECT_EQ(callBesideEventLoop([] { return QVTaskEx::terminationCodeFromTask("/bin/sleep", {"30"}, 1.9); }), SIGTERM);
  EXPECT_GE(elapsed.elapsed(), 1000);
  EXPECT_LT(elapsed.elapsed(), 1900);
}

TEST_F(TimedTaskRuns, CutHalfASecondToNone) {
  // The timer fires at once: it finds the program running or, having come first, nothing.
  QElapsedTimer elapsed;
  elapsed.start();
  const int code = callBesideEventLoop([] {
    return QVTaskEx::terminationCodeFromTask(shell, {"-c", "exec sleep 1.5"}, 0.5);
  });
  if (code == SIGTERM) {
    EXPECT_LT(elapsed.elapsed(), 1400);
    EXPECT_THAT(log_.entries(), ElementsAre(timedOut));
  } else {
    EXPECT_EQ(code, 0);
    EXPECT_THAT(log_.entries(), IsEmpty());
  }
}

TEST_F(TimedTaskRuns, TakeATimeOutThatDoesNotFitForOneThatIsOver) {
  for (const double seconds : {1e12, -1e12, std::numeric_limits<double>::quiet_NaN()}) {
    const auto task = QVTaskEx::create();
    std::atomic<bool> started = false, over = false;
    // What the timer of such a run does, with the program already there.
    ChildProcess& process = *[&] {
      auto made = std::make_shared<ChildProcess>(ProgramCall{.path = "/bin/sleep", .arguments = {"30"}});
      made->launch();
      task->setTheTask(made);
      return made;
    }();
    callBesideEventLoop([&] {
      started = true;
      task->setupTimeout(std::numeric_limits<std::int32_t>::min());
      over = true;
      return 0;
    });
    process.waitUntilExit();
    EXPECT_EQ(process.terminationStatus(), SIGTERM);
    const int code = callBesideEventLoop([&] {
      return QVTaskEx::terminationCodeFromTask(shell, {"-c", "exec sleep 1"}, seconds);
    });
    EXPECT_TRUE(code == SIGTERM || code == 0) << code;
  }
}

TEST_F(TimedTaskRuns, WaitForALongProgramWhenTheTimeOutIsOneThatEndsNothing) {
  QElapsedTimer elapsed;
  elapsed.start();
  callBesideEventLoop([] {
    QVTaskEx::runTask(shell, {"-c", "sleep 2"}, 1.0);
    return 0;
  });
  EXPECT_GE(elapsed.elapsed(), 2000);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(TimedTaskRuns, OnTheMainThreadAreNotInterrupted) {
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "sleep 1.5"}, 1.0), 0);
  runEventLoopUntil([] { return false; }, 100);
  EXPECT_THAT(log_.entries(), IsEmpty()) << "the timer came late and found no task";
}

TEST_F(TimedTaskRuns, HoldTheProcessWhileItRuns) {
  const auto task = QVTaskEx::create();
  std::atomic<bool> ended = false;
  std::thread run([&] {
    EXPECT_EQ(task->terminationCodeFromTaskInstance(shell, {"-c", "exec sleep 30"}, 60), SIGTERM);
    ended = true;
  });
  ASSERT_TRUE(runEventLoopUntil([&] { return task->theTask() && task->theTask()->isRunning(); }));
  task->terminateTask();
  EXPECT_EQ(task->theTask(), nullptr);
  EXPECT_TRUE(runEventLoopUntil([&] { return ended.load(); }));
  run.join();
}

TEST_F(TimedTaskRuns, LetTheTimerOfOneRunEndTheNext) {
  const auto task = QVTaskEx::create();
  callBesideEventLoop([&] { return task->terminationCodeFromTaskInstance("/bin/true", {}, 1.0); });
  EXPECT_EQ(callBesideEventLoop([&] { return task->terminationCodeFromTaskInstance("/bin/sleep", {"20"}, 60.0); }),
            SIGTERM);
  EXPECT_THAT(log_.entries(), ElementsAre("Task /bin/sleep timed out. Terminating..."));
}

TEST_F(TimedTaskRuns, NeverPutTheProcessOfARunThatNothingEndsWhereTheTimerLooks) {
  const auto task = QVTaskEx::create();
  std::atomic<bool> ended = false;
  std::thread run([&] {
    task->runTaskInstance("/bin/sleep", {"0.3"}, 0);
    ended = true;
  });
  runEventLoopUntil([&] {
    EXPECT_EQ(task->theTask(), nullptr);
    return ended.load();
  });
  run.join();
}

}  // namespace

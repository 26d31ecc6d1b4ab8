#include <atomic>
#include <csignal>
#include <mutex>
#include <vector>

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

/// Keeps what the delegate of a run was called with.
class Received {
 public:
  QVTaskEx::Delegate delegate() {
    return [this](const QByteArray& chunk, QVTaskEx& task, const QVariant& object) {
      const std::lock_guard guard(mutex_);
      chunks_.push_back(chunk);
      task_ = &task;
      object_ = object;
      if (chunk.isEmpty()) ended_ = true;
    };
  }
  bool waitForEnd() const {
    return runEventLoopUntil([this] { return ended_.load(); });
  }
  std::vector<QByteArray> chunks() const {
    const std::lock_guard guard(mutex_);
    return chunks_;
  }
  QByteArray all() const {
    QByteArray joined;
    for (const QByteArray& chunk : chunks()) joined += chunk;
    return joined;
  }
  const QVTaskEx* task() const { return task_; }
  QVariant object() const {
    const std::lock_guard guard(mutex_);
    return object_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<QByteArray> chunks_;
  std::atomic<const QVTaskEx*> task_ = nullptr;
  QVariant object_;
  std::atomic<bool> ended_ = false;
};

class AsynchronousTasks : public testing::Test {
 protected:
  void TearDown() override { waitForThread(std::move(task_)); }
  /// The thread of a run keeps the instance until it ends.
  static void waitForThread(std::shared_ptr<QVTaskEx> task) {
    const std::weak_ptr<QVTaskEx> kept = task;
    task.reset();
    ASSERT_TRUE(runEventLoopUntil([&] { return kept.expired(); }));
  }
  void start(const QString& script, const QVariant& object = {}) {
    task_->asyncDataFromTask(shell, {"-c", script}, received_.delegate(), object);
  }
  bool waitUntilCleared() {
    return runEventLoopUntil([this] { return task_->theTask() == nullptr; });
  }

  ProcessLog log_;
  Received received_;
  std::shared_ptr<QVTaskEx> task_ = QVTaskEx::create();
};

TEST_F(AsynchronousTasks, HandOverEachChunkAndThenAnEmptyOne) {
  start("printf one; sleep 0.2; printf two", "mine");
  ASSERT_TRUE(received_.waitForEnd());
  EXPECT_THAT(received_.chunks(), ElementsAre("one", "two", ""));
  EXPECT_EQ(received_.task(), task_.get());
  EXPECT_EQ(received_.object(), QVariant("mine"));
}

TEST_F(AsynchronousTasks, CallOnceForAProgramThatPrintsNothing) {
  start("echo dropped >&2");
  ASSERT_TRUE(received_.waitForEnd());
  ASSERT_TRUE(waitUntilCleared());
  EXPECT_THAT(received_.chunks(), ElementsAre(""));
  EXPECT_FALSE(received_.chunks()[0].isNull());
  EXPECT_FALSE(received_.object().isValid());
}

TEST_F(AsynchronousTasks, ForgetTheirDelegateAtTheEnd) {
  start("echo out", 5);
  ASSERT_TRUE(received_.waitForEnd());
  ASSERT_TRUE(waitUntilCleared());
  EXPECT_FALSE(task_->delegate());
  EXPECT_FALSE(task_->object().isValid());
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(AsynchronousTasks, TakeMegabytes) {
  start("head -c 3000000 /dev/zero");
  ASSERT_TRUE(received_.waitForEnd());
  EXPECT_EQ(received_.all().size(), 3000000);
}

TEST_F(AsynchronousTasks, PassOnTheEnvironment) {
  task_->asyncDataFromTask("/usr/bin/env", {}, received_.delegate(), {}, QVTaskEx::Environment{{"LUMA", "1"}});
  ASSERT_TRUE(received_.waitForEnd());
  EXPECT_EQ(received_.all(), "LUMA=1\n");
}

TEST_F(AsynchronousTasks, WithoutADelegateRunToTheirEnd) {
  task_->asyncDataFromTask(shell, {"-c", ": > \"$0\"", log_.home() + "/made"}, {}, {});
  ASSERT_TRUE(waitUntilCleared());
  EXPECT_TRUE(QFile::exists(log_.home() + "/made"));
}

TEST_F(AsynchronousTasks, TellOfAMissingProgramAndCallNobody) {
  task_->asyncDataFromTask("/no/such", {}, received_.delegate(), {});
  const QString told = "Unable to launch async task - task does not exist or is not executable";
  ASSERT_TRUE(runEventLoopUntil([&] { return log_.entries().contains(told); }));
  EXPECT_THAT(received_.chunks(), IsEmpty());
  EXPECT_FALSE(log_.printed().contains(told)) << "logged, not printed";
}

TEST_F(AsynchronousTasks, TellWhenThereIsNoTask) {
  task_->launchAsyncTask();
  EXPECT_THAT(log_.entries(), ElementsAre("Unable to launch async task - no task set"));
  EXPECT_TRUE(log_.printed().contains("no task set"));
}

TEST_F(AsynchronousTasks, TellOfAnExceptionAndEnd) {
  task_->asyncDataFromTask(log_.home(), {}, received_.delegate(), {});  // a folder passes this check
  ASSERT_TRUE(runEventLoopUntil([&] { return !log_.entries().isEmpty(); }));
  EXPECT_TRUE(log_.entries()[0].startsWith("Exception: "));
  EXPECT_THAT(received_.chunks(), IsEmpty());
}

TEST_F(AsynchronousTasks, AreTerminatedFromAnotherThread) {
  start("echo first; exec sleep 60");
  ASSERT_TRUE(runEventLoopUntil([this] { return !received_.chunks().empty(); }));
  const auto process = task_->theTask();
  task_->terminateAsyncTask();
  EXPECT_EQ(task_->theTask(), nullptr);
  process->waitUntilExit();
  EXPECT_EQ(process->terminationStatus(), SIGTERM);
  EXPECT_THAT(received_.chunks(), ElementsAre("first\n"));
}

TEST_F(AsynchronousTasks, AreTerminatedByTheirDelegate) {
  std::atomic<int> calls = 0;
  task_->asyncDataFromTask(shell, {"-c", "echo first; sleep 0.2; echo second; exec sleep 60"},
                           [&calls](const QByteArray& /*chunk*/, QVTaskEx& task, const QVariant& /*object*/) {
                             ++calls;
                             task.terminateTask();
                           },
                           {});
  ASSERT_TRUE(waitUntilCleared());
  runEventLoopUntil([] { return false; }, 400);
  EXPECT_EQ(calls, 1);
}

TEST_F(AsynchronousTasks, TerminateAProgramThatClosedItsOutputAndGoesOn) {
  start("exec >/dev/null; exec sleep 60");
  const auto process = task_->theTask();
  ASSERT_TRUE(received_.waitForEnd());
  process->waitUntilExit();
  EXPECT_EQ(process->terminationStatus(), SIGTERM);
}

TEST_F(AsynchronousTasks, AreTerminatedHoweverEarly) {
  for (int round = 0; round < 50; ++round) {
    auto task = QVTaskEx::create();
    task->asyncDataFromTask("/bin/sleep", {"60"}, received_.delegate(), {});
    const auto process = task->theTask();
    task->terminateAsyncTask();
    waitForThread(std::move(task));
    ASSERT_TRUE(runEventLoopUntil([&] { return !process->isRunning(); }));
  }
  EXPECT_THAT(received_.chunks(), IsEmpty());
}

}  // namespace

#include <QCoreApplication>
#include <QEventLoop>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/MainThread.h"

namespace {

class MainThreadCalls : public testing::Test {
 protected:
  void runUntil(const std::function<bool()>& condition) {
    while (!condition()) application_.processEvents(QEventLoop::WaitForMoreEvents, 10);
  }
  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  QCoreApplication application_{argc_, argv_};
  std::unique_ptr<MainThread> main_ = std::make_unique<MainThread>();
};

TEST_F(MainThreadCalls, RunInTheOrderGivenOnTheMainThread) {
  std::vector<int> order;
  std::thread caller([&] {
    for (int i = 0; i < 100; ++i) {
      MainThread::perform([&order, i] {
        EXPECT_TRUE(MainThread::isCurrent());
        order.push_back(i);
      });
    }
  });
  runUntil([&] { return order.size() == 100; });
  caller.join();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(MainThreadCalls, AWaitingCallerGoesOnWhenItsWorkIsDone) {
  std::atomic<bool> ended = false;
  int done = 0;
  std::thread caller([&] {
    EXPECT_FALSE(MainThread::isCurrent());
    for (int i = 1; i <= 20; ++i) {
      MainThread::performAndWait([&] { ++done; });
      EXPECT_EQ(done, i);
    }
    ended = true;
  });
  runUntil([&] { return ended.load(); });
  caller.join();
}

TEST_F(MainThreadCalls, RunAtOnceOnTheMainThreadItself) {
  bool ran = false;
  MainThread::performAndWait([&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST_F(MainThreadCalls, WorkMayRunTheEventLoopAndWhatWaitsBehindItRunsThere) {
  bool inner = false, ended = false;
  MainThread::perform([&] {
    runUntil([&] { return inner; });
    ended = true;
  });
  MainThread::perform([&] { inner = true; });
  runUntil([&] { return ended; });
}

TEST_F(MainThreadCalls, AreDroppedWhenTheMainThreadTakesNoMore) {
  auto kept = std::make_shared<int>(0);
  std::thread caller([&] { MainThread::performAndWait([&] { ++*kept; }); });
  std::thread another([kept] { MainThread::perform([kept] { ++*kept; }); });
  another.join();
  main_.reset();
  caller.join();
  EXPECT_EQ(*kept, 0);
  EXPECT_EQ(kept.use_count(), 1);
  MainThread::perform([kept] { ++*kept; });
  EXPECT_EQ(kept.use_count(), 1);
}

}  // namespace

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "system/SerialQueue.h"
#include "tests/system/ThreadsRefused.h"

namespace sys {
namespace {

TEST(SerialQueue, RunsOperationsInTheOrderAddedOnOneThreadOfItsOwn) {
  SerialQueue queue;
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(queue.addOperation([&, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
      EXPECT_TRUE(queue.isCurrent());
    }));
  }
  queue.waitUntilAllOperationsAreFinished();
  std::vector<int> expected(100);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(order, expected);
  EXPECT_EQ(threads, std::vector<std::thread::id>(100, threads.front()));
  EXPECT_NE(threads.front(), std::this_thread::get_id());
  EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueue, CountsTheOperationThatRuns) {
  SerialQueue queue;
  std::promise<void> begun;
  std::promise<void> gate;
  EXPECT_EQ(queue.operationCount(), 0U);
  queue.addOperation([&] {
    begun.set_value();
    gate.get_future().wait();
  });
  begun.get_future().wait();
  EXPECT_EQ(queue.operationCount(), 1U);
  queue.addOperation([] {});
  EXPECT_EQ(queue.operationCount(), 2U);
  gate.set_value();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(SerialQueue, DropsOnlyWhatHasNotBegunWhenCancelled) {
  SerialQueue queue;
  std::promise<void> begun;
  std::promise<void> gate;
  std::atomic<int> ran = 0;
  queue.addOperation([&] {
    begun.set_value();
    gate.get_future().wait();
    ++ran;
  });
  for (int i = 0; i < 5; ++i) queue.addOperation([&] { ++ran; });
  begun.get_future().wait();
  queue.cancelAllOperations();
  EXPECT_EQ(queue.operationCount(), 1U);
  queue.addOperation([&] { ran += 10; });
  gate.set_value();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(ran, 11);
}

TEST(SerialQueue, DoesNotWaitForItselfInsideAnOperation) {
  SerialQueue queue;
  bool done = false;
  queue.addOperation([&] {
    queue.addOperation([&] { done = true; });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(done);
  });
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(done);
}

TEST(SerialQueue, TakesNothingAfterItWasShutDown) {
  SerialQueue queue;
  std::atomic<int> ran = 0;
  queue.addOperation([&] { ++ran; });
  queue.waitUntilAllOperationsAreFinished();
  queue.shutDown();
  EXPECT_FALSE(queue.addOperation([&] { ++ran; }));
  queue.waitUntilAllOperationsAreFinished();
  queue.shutDown();
  EXPECT_EQ(ran, 1);
}

TEST(SerialQueue, MayBeShutDownInsideAnOperation) {
  auto queue = std::make_unique<SerialQueue>();
  std::promise<void> done;
  queue->addOperation([&] { queue->shutDown(); });
  queue->addOperation([] {});
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_FALSE(queue->addOperation([] {}));
}

TEST(SerialQueue, IsNotCurrentOnAThreadThatGotTheNumberOfItsOwn) {
  SerialQueue queue;
  std::promise<std::thread::id> number;
  queue.addOperation([&] {
    queue.shutDown();
    number.set_value(std::this_thread::get_id());
  });
  const std::thread::id ended = number.get_future().get();
  queue.waitUntilAllOperationsAreFinished();
  queue.shutDown();
  bool reused = false;
  for (int i = 0; i < 200 && !reused; ++i) {
    std::thread([&] {
      reused = std::this_thread::get_id() == ended;
      EXPECT_FALSE(queue.isCurrent());
    }).join();
  }
}

TEST(SerialQueue, NeverStartsAThreadUnused) {
  SerialQueue queue;
  queue.waitUntilAllOperationsAreFinished();
  queue.cancelAllOperations();
  EXPECT_EQ(queue.operationCount(), 0U);
}

TEST(SerialQueue, DropsOperationsWhileTheSystemGivesNoThread) {
  SerialQueue queue;
  bool ran = false;
  {
    const ThreadsRefused refused;
    EXPECT_FALSE(queue.addOperation([&ran] { ran = true; }));
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.waitUntilAllOperationsAreFinished();
  }
  EXPECT_FALSE(ran);
  EXPECT_TRUE(queue.addOperation([&ran] { ran = true; }));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(ran);
}

TEST(SerialQueue, KeepsTheOrderOfEachOfManyThreads) {
  constexpr int threadCount = 4;
  constexpr int perThread = 500;
  SerialQueue queue;
  std::vector<std::vector<int>> seen(threadCount);
  std::vector<std::thread> threads;
  threads.reserve(threadCount);
  for (int thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < perThread; ++i) {
        queue.addOperation([&, thread, i] { seen[static_cast<std::size_t>(thread)].push_back(i); });
        if (i % 100 == 0) queue.waitUntilAllOperationsAreFinished();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  queue.waitUntilAllOperationsAreFinished();
  for (const std::vector<int>& numbers : seen) {
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(perThread));
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
  }
}

}  // namespace
}  // namespace sys

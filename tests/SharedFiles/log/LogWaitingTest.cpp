#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/SharedFiles/log/LogFixture.h"

namespace {

using ::testing::IsEmpty;

class QVLogWaiting : public LogFixture {
 protected:
  void SetUp() override {
    LogFixture::SetUp();
    sink_ = std::make_shared<TestSink>();
    sink_->before = [this] { opened_.wait(); };
    log_->setFileHandle(sink_);
  }
  void TearDown() override {
    open();
    log_.reset();
  }
  void open() {
    if (!std::exchange(isOpen_, true)) gate_.set_value();
  }
  /// Whether the operation waits for the writer, which is held up.
  bool waits(const std::function<void()>& operation) { return !returns(operation, std::chrono::milliseconds(150)); }
  bool returnsAtOnce(const std::function<void()>& operation) { return returns(operation, std::chrono::seconds(20)); }
  bool returns(const std::function<void()>& operation, std::chrono::milliseconds within) {
    std::future<void> done = std::async(std::launch::async, operation);
    const bool returned = done.wait_for(within) == std::future_status::ready;
    open();
    return returned;
  }

  std::promise<void> gate_;
  std::shared_future<void> opened_ = gate_.get_future().share();
  bool isOpen_ = false;
  std::shared_ptr<TestSink> sink_;
};

TEST_F(QVLogWaiting, AShortEntryOffTheMainThreadWaits) {
  onMainThread_ = false;
  EXPECT_TRUE(waits([this] { log_->appendLog("short"); }));
}

TEST_F(QVLogWaiting, AnEntryOf99CharactersWaits) {
  onMainThread_ = false;
  EXPECT_TRUE(waits([this] { log_->appendLog(QString(99, 'x')); }));
}

TEST_F(QVLogWaiting, AnEntryOf100CharactersDoesNotWait) {
  onMainThread_ = false;
  EXPECT_TRUE(returnsAtOnce([this] { log_->appendLog(QString(100, 'x')); }));
}

TEST_F(QVLogWaiting, ASpacedEntryIsAsLongAsItsText) {
  onMainThread_ = false;
  EXPECT_TRUE(returnsAtOnce([this] { log_->appendLog(QString(99, ' ') + "x"); }));
}

TEST_F(QVLogWaiting, AnEntryBehind100CharactersDoesNotWait) {
  onMainThread_ = false;
  log_->fastAppendLog(QString(95, 'x'));
  EXPECT_TRUE(returnsAtOnce([this] { log_->appendLog("short"); }));
}

TEST_F(QVLogWaiting, AnEntryWithFewerInTheQueueWaits) {
  onMainThread_ = false;
  log_->fastAppendLog(QString(94, 'x'));
  EXPECT_TRUE(waits([this] { log_->appendLog("short"); }));
}

TEST_F(QVLogWaiting, TheMainThreadNeverWaits) {
  EXPECT_TRUE(returnsAtOnce([this] { log_->appendLog("short"); }));
}

TEST_F(QVLogWaiting, TheFastFormNeverWaits) {
  onMainThread_ = false;
  EXPECT_TRUE(returnsAtOnce([this] { log_->fastAppendLog("short"); }));
}

TEST_F(QVLogWaiting, TheOtherFormsWaitAsTheyAppend) {
  onMainThread_ = false;
  EXPECT_TRUE(waits([this] { log_->appendLogAndDebugPrint("short"); }));
}

TEST_F(QVLogWaiting, BytesInQueueAreTheCharactersNotYetWritten) {
  log_->fastAppendLog("  four  ");
  log_->fastAppendLog("äöü");
  EXPECT_EQ(log_->bytesInQueue(), 7U);
  open();
  log_->finishWriting();
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

TEST_F(QVLogWaiting, TheEndOfTheProgramWritesAShortBacklog) {
  for (int i = 0; i < 10; ++i) log_->fastAppendLog("entry %d", {i});
  EXPECT_TRUE(waits([this] { log_->willTerminate(); }));
  EXPECT_EQ(sink_->lines.size(), 10U);
}

TEST_F(QVLogWaiting, TheEndOfTheProgramDropsALongBacklog) {
  for (int i = 0; i < 11; ++i) log_->fastAppendLog("entry %d", {i});
  while (queue_->operationCount() != 11) std::this_thread::yield();
  std::thread opener([this] {
    while (queue_->operationCount() > 1) std::this_thread::yield();
    open();
  });
  log_->willTerminate();
  opener.join();
  // At most the entry that was being written: the others were cancelled.
  EXPECT_LE(sink_->lines.size(), 1U);
}

TEST_F(QVLogWaiting, TheEndOfTheProgramClosesTheLog) {
  open();
  log_->setAppName("named");
  log_->willTerminate();
  EXPECT_EQ(log_->appName(), "demo");
  EXPECT_EQ(log_->writeQueue(), nullptr);
  EXPECT_EQ(log_->fileHandle(), nullptr);
  log_->appendLog("late");
  log_->finishWriting();
  log_->willTerminate();
  EXPECT_THAT(sink_->lines, IsEmpty());
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

}  // namespace

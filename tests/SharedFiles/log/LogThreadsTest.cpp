#include <QRegularExpression>
#include <array>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/SharedFiles/log/LogFixture.h"

namespace {

class LogThreads : public LogFixture {
 protected:
  static constexpr int threadCount = 4;

  void SetUp() override {
    LogFixture::SetUp();
    onMainThread_ = false;
  }
  static void onThreads(const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int number = 0; number < threadCount; ++number) threads.emplace_back(work, number);
    for (std::thread& thread : threads) thread.join();
  }
  /// The lines of every generation, oldest first.
  QList<QByteArray> allLines() const {
    QByteArray all;
    for (int generation = 5; generation >= 1; --generation) {
      if (QFile::exists(file(generation))) all += contents(file(generation));
    }
    return all.split('\n');
  }
  /// Expects each thread's entries "<thread> <number>" once and in order.
  void expectAllInOrder(int each) const {
    std::array<int, threadCount> next{};
    const QRegularExpression entry(" - thread (\\d) entry (\\d+)");
    for (const QByteArray& line : allLines()) {
      const QRegularExpressionMatch match = entry.match(QString::fromUtf8(line));
      if (!match.hasMatch()) continue;
      int& expected = next.at(static_cast<std::size_t>(match.captured(1).toInt()));
      EXPECT_EQ(match.captured(2).toInt(), expected);
      ++expected;
    }
    for (const int count : next) EXPECT_EQ(count, each);
  }
};

TEST_F(LogThreads, EntriesOfEachThreadKeepTheirOrder) {
  constexpr int perThread = 200;
  log_->createNewLog();
  onThreads([this](int thread) {
    for (int i = 0; i < perThread; ++i) {
      if (i % 3 == 0) {
        log_->appendLog("thread %d entry %d", {thread, i});
      } else {
        log_->fastAppendLog("thread %d entry %d", {thread, i});
      }
    }
  });
  log_->finishWriting();
  expectAllInOrder(perThread);
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

TEST_F(LogThreads, NothingIsLostWhenGenerationsChangeMeanwhile) {
  constexpr int perThread = 60;
  const QString filling(8000, 'x');
  log_->createNewLog();
  onThreads([this, &filling](int thread) {
    for (int i = 0; i < perThread; ++i) log_->appendLog("thread %d entry %d %@", {thread, i, filling});
  });
  log_->finishWriting();
  expectAllInOrder(perThread);
  EXPECT_TRUE(QFile::exists(file(4)));
  EXPECT_TRUE(contents(file(1)).startsWith(header() + line("Log truncated at 500KB")));
  for (int generation = 1; generation <= 4; ++generation) {
    EXPECT_LT(contents(file(generation)).size(), 500000 + 8100);
  }
}

TEST_F(LogThreads, FieldsMayChangeWhileEntriesAreWritten) {
  log_->createNewLog();
  onThreads([this](int thread) {
    for (int i = 0; i < 100; ++i) {
      log_->fastAppendLog("thread %d entry %d", {thread, i});
      if (thread == 0) log_->setNoPrinting(i % 2 == 0);
      if (thread == 1) log_->finishWriting();
      if (thread == 2) {
        EXPECT_EQ(log_->appName(), "demo");
      }
      if (thread == 3) log_->appendLogAndDebugPrint("side entry");
    }
  });
  log_->finishWriting();
  expectAllInOrder(100);
}

TEST_F(LogThreads, ANewLogMayStartWhileEntriesAreWritten) {
  log_->createNewLog();
  onThreads([this](int thread) {
    for (int i = 0; i < 50; ++i) {
      if (thread == 0 && i % 10 == 0) log_->createNewLog();
      log_->appendLog("thread %d entry %d", {thread, i});
    }
  });
  log_->finishWriting();
  EXPECT_TRUE(QFile::exists(file(5)));
}

TEST_F(LogThreads, TheEndMayComeWhileEntriesAreQueued) {
  log_->createNewLog();
  onThreads([this](int thread) {
    for (int i = 0; i < 200; ++i) {
      if (thread == 0 && i == 50) log_->willTerminate();
      log_->appendLog("thread %d entry %d", {thread, i});
    }
  });
  log_->finishWriting();
  EXPECT_EQ(log_->writeQueue(), nullptr);
  EXPECT_EQ(log_->fileHandle(), nullptr);
}

TEST_F(LogThreads, EchoesWholeLines) {
  log_->createNewLog();
  onThreads([this](int thread) {
    for (int i = 0; i < 50; ++i) log_->appendLogAndPrint("thread %d entry %d", {thread, i});
  });
  std::istringstream printed(output_.str());
  int lines = 0;
  for (std::string text; std::getline(printed, text); ++lines) {
    EXPECT_TRUE(QRegularExpression("^thread \\d entry \\d+$").match(QString::fromStdString(text)).hasMatch()) << text;
  }
  EXPECT_EQ(lines, threadCount * 50);
}

}  // namespace

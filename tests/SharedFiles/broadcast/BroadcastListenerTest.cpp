#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <atomic>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/broadcast/BroadcastFixture.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

// A sanitizer keeps what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsOurs = false;
#elif defined(__has_feature)
constexpr bool memoryIsOurs = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool memoryIsOurs = true;
#endif

class BroadcastListeners : public Broadcasts {
 protected:
  bool portIsFree() const { return LoopbackSocket("127.0.0.1", port_).isBound(); }
};

/// Resident memory in bytes.
long residentMemory() {
  QFile file("/proc/self/statm");
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  return file.readAll().split(' ').at(1).toLong() * ::sysconf(_SC_PAGESIZE);
}

TEST_F(BroadcastListeners, LeaveThePortFreeAndAreNotCalledAgain) {
  for (int round = 0; round < 20; ++round) {
    std::atomic<bool> mayBeCalled = true;
    std::atomic<int> calls = 0, late = 0;
    QVBroadcast::listenOnPort(port_, [&](const QVariantMap&) {
      ++calls;
      if (!mayBeCalled) ++late;
    });
    std::thread flood([&] {
      while (mayBeCalled) sender_.send("x", port_);
    });
    while (calls == 0) std::this_thread::yield();
    QVBroadcast::stopListeningOnPort(port_);
    mayBeCalled = false;
    flood.join();
    EXPECT_TRUE(portIsFree());
    EXPECT_EQ(late, 0);
  }
}

TEST_F(BroadcastListeners, EndWhenStoppedBeforeTheyBegan) {
  for (int round = 0; round < 200; ++round) {
    QVBroadcast::listenOnPort(port_, Heard().delegate());
    QVBroadcast::stopListeningOnPort(port_);
    ASSERT_TRUE(portIsFree()) << round;
  }
  EXPECT_THAT(log_.entries(), Each("Broadcast: Socket closed"));
}

TEST_F(BroadcastListeners, CanBeStoppedByTheirDelegate) {
  std::atomic<int> calls = 0;
  QVBroadcast::listenOnPort(port_, [&](const QVariantMap&) {
    ++calls;
    QVBroadcast::stopListeningOnPort(port_);
  });
  EXPECT_TRUE(runEventLoopUntil([&] {
    sender_.send("x", port_);
    return calls > 0;
  }));
  QVBroadcast::stopListeningOnPort(port_);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(portIsFree());
}

TEST_F(BroadcastListeners, CanBeStoppedByManyThreadsAtOnce) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  std::vector<std::thread> threads;
  std::atomic<int> free = 0;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      QVBroadcast::stopListeningOnPort(port_);
      ++free;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(portIsFree());
  EXPECT_THAT(log_.entries(), ElementsAre("Broadcast: Socket closed"));
}

TEST_F(BroadcastListeners, OfOtherPortsGoOn) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  QVBroadcast::stopListeningOnPort(sender_.port());
  EXPECT_TRUE(answers(heard));
}

TEST_F(BroadcastListeners, LetGoOfTheDelegateWhenTheyEnd) {
  const auto kept = std::make_shared<int>();
  QVBroadcast::listenOnPort(port_, [copy = kept](const QVariantMap&) {});
  EXPECT_TRUE(runEventLoopUntil([&] { return !portIsFree(); }));
  EXPECT_EQ(kept.use_count(), 2);
  QVBroadcast::stopListeningOnPort(port_);
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(BroadcastListeners, OutliveAFloodOfRandomBytes) {
  const Heard heard;
  std::atomic<int> wrong = 0, received = 0;
  QVBroadcast::listenOnPort(port_, [&, greeted = heard.delegate()](const QVariantMap& response) {
    const QByteArray data = response.value("data").toByteArray();
    if (data == Heard::greeting) return greeted(response);
    ++received;
    if (data.isEmpty() || data.size() > 1024 || response.value("ip") != "127.0.0.1") ++wrong;
  });
  ASSERT_TRUE(answers(heard));
  const long before = residentMemory();
  QRandomGenerator generator(11);
  QByteArray bytes(1500, Qt::Uninitialized);
  for (int i = 0; i < 100000; ++i) {
    for (qsizetype at = 0; at < bytes.size(); at += 30) bytes[at] = static_cast<char>(generator.generate());
    sender_.send(bytes.left(i % 500 == 0 ? 0 : generator.bounded(1, 1501)), port_);
  }
  EXPECT_TRUE(answers(heard));
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(received, 1000);
  constexpr long bound = 16L << 20;
  EXPECT_TRUE(!memoryIsOurs || residentMemory() - before < bound);
  EXPECT_THAT(log_.entries(), Each("Broadcast: No data received"));
}

TEST_F(BroadcastListeners, DoNotStartAToolForEveryDatagram) {
  const Heard heard;
  std::atomic<int> listed = 0, received = 0;
  QElapsedTimer elapsed;
  elapsed.start();
  QVBroadcast::listenOnPort(port_,
                            [&, greeted = heard.delegate()](const QVariantMap& response) {
                              ++received;
                              greeted(response);
                            },
                            true,
                            {.interfaces =
                                 [&] {
                                   ++listed;
                                   return NetworkInterfaces("inet 127.0.0.5 up");
                                 },
                             .isCurrentHost = [](const QString&) { return false; }});
  ASSERT_TRUE(answers(heard, "127.0.0.6"));
  for (int i = 0; i < 20000; ++i) LoopbackSocket(i % 2 ? "127.0.0.6" : "127.0.0.5").send("x", port_);
  EXPECT_TRUE(answers(heard, "127.0.0.6"));
  EXPECT_GT(received, 100);
  EXPECT_LE(listed, elapsed.elapsed() / QVBroadcast::listingMilliseconds + 1);
  QVBroadcast::stopListeningOnPort(port_);
}

}  // namespace

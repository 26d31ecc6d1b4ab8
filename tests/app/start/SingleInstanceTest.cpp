#include <QEventLoop>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <barrier>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "app/start/SingleInstance.h"
#include "tests/check/CapturedLog.h"

namespace {

class SecondStart : public testing::Test {
 protected:
  SecondStart() {
    EXPECT_FALSE(first_.handOver({}));
    QObject::connect(&first_, &SingleInstance::filesOpened, [this](const QStringList& files) { opened_ << files; });
  }
  /// A second start in this process would wait for an answer that this thread has to give: speaks for it.
  bool handOver(const QStringList& files, uid_t user = ::getuid()) {
    bool done = false;
    const std::unique_ptr<QThread> second(QThread::create([&] {
      SingleInstance other(name_, user);
      done = other.handOver(files);
    }));
    second->start();
    while (!second->wait(2)) QTest::qWait(2);
    return done;
  }
  QTemporaryDir folder_;
  QString name_ = folder_.filePath("meeting");
  SingleInstance first_{name_};
  QList<QStringList> opened_;
};

TEST_F(SecondStart, HandsItsFilesToTheWindowThatRuns) {
  const QStringList files{"/a/source.mov", "/b/mit Umläuten, \n.mov"};
  EXPECT_TRUE(handOver(files));
  EXPECT_EQ(opened_, QList<QStringList>{files});
}

TEST_F(SecondStart, WantsTheWindowEvenWithoutFiles) {
  EXPECT_TRUE(handOver({}));
  EXPECT_EQ(opened_, QList<QStringList>{QStringList()});
}

TEST_F(SecondStart, HandsOverTheFirstOfMoreFilesThanAMessageHolds) {
  QStringList files;
  for (int i = 0; i < 20000; ++i) files << QStringLiteral("/a/") + QString(80, u'\n') + QString::number(i);
  EXPECT_TRUE(handOver(files));
  ASSERT_EQ(opened_.size(), 1);
  EXPECT_GT(opened_[0].size(), 1000);
  EXPECT_EQ(opened_[0], files.first(opened_[0].size()));
}

TEST_F(SecondStart, TellsNothingToAWindowOfAnotherUser) {
  EXPECT_FALSE(handOver({"/a.mov"}, ::getuid() + 1));
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(SecondStart, OpensAWindowOfItsOwnWhereTheFirstGoes) {
  first_.leave();
  EXPECT_FALSE(handOver({"/a.mov"}));
  EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(SecondStart, CannotBeMadeByOtherUsers) {
  EXPECT_EQ(
      QFileInfo(name_).permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
      QFile::Permissions());
}

TEST_F(SecondStart, IsNotFooledByNoise) {
  QLocalSocket noise;
  noise.connectToServer(name_);
  ASSERT_TRUE(noise.waitForConnected(1000));
  noise.write(QByteArray(2 << 20, '\xff'));
  for (int i = 0; i < 100 && noise.state() == QLocalSocket::ConnectedState; ++i) QTest::qWait(10);
  EXPECT_TRUE(opened_.isEmpty());
  EXPECT_TRUE(handOver({"/a.mov"}));
}

TEST(FirstStart, TakesThePlaceOfOneThatCrashed) {
  QTemporaryDir folder;
  const QString name = folder.filePath("meeting");
  QFile left(name);
  ASSERT_TRUE(left.open(QIODevice::WriteOnly));
  SingleInstance first(name);
  EXPECT_FALSE(first.handOver({"/a.mov"}));
  QLocalSocket socket;
  socket.connectToServer(name);
  EXPECT_TRUE(socket.waitForConnected(1000));
}

TEST(FirstStart, IsOneOfThoseThatRace) {
  QTemporaryDir folder;
  for (int round = 0; round < 40; ++round) {
    const QString name = folder.filePath(QString::number(round));
    if (round % 2 == 1) {
      QFile left(name);  // by one that crashed
      ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    }
    constexpr int starts = 4;
    std::barrier together(starts);
    std::atomic<int> handedOver = 0, windows = 0;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < starts; ++i) {
      threads.emplace_back(QThread::create([&] {
        SingleInstance start(name);
        together.arrive_and_wait();
        ++(start.handOver({}) ? handedOver : windows);
        QEventLoop loop;  // the window answers
        while (handedOver + windows < starts) loop.processEvents(QEventLoop::AllEvents, 5);
      }));
      threads.back()->start();
    }
    for (const auto& thread : threads) thread->wait();
    ASSERT_EQ(windows, 1) << "round " << round;
  }
}

TEST(FirstStart, IsTheNextWhereTheWindowGoesWithoutAnAnswer) {
  QTemporaryDir folder;
  const QString name = folder.filePath("meeting");
  QLocalServer going;
  ASSERT_TRUE(going.listen(name));
  std::atomic<int> answer = -1;
  const std::unique_ptr<QThread> second(QThread::create([&] {
    SingleInstance start(name);
    answer = start.handOver({"/a.mov"}) ? 1 : 0;
  }));
  second->start();
  ASSERT_TRUE(going.waitForNewConnection(5000));
  std::unique_ptr<QLocalSocket>(going.nextPendingConnection()).reset();
  going.close();
  second->wait();
  EXPECT_EQ(answer, 0);
}

}  // namespace

#include <QTimer>
#include <chrono>
#include <limits>
#include <thread>

#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/files/FileFixture.h"

namespace {

using ::testing::IsEmpty;

/// Operations whose effect shows some time after administrator rights began to bring it about.
class LateEffects : public FileFixture {
 protected:
  void SetUp() override {
    privileges_.effect = [this] {
      later_ = std::thread([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        late_();
      });
    };
  }
  void TearDown() override {
    if (later_.joinable()) later_.join();
  }
  /// What the operation answers once `late` is brought about.
  bool after(const std::function<void()>& late, const std::function<bool()>& operation) {
    late_ = late;
    const bool answer = operation();
    if (later_.joinable()) later_.join();
    return answer;
  }
  static void make(const QString& file) { EXPECT_EQ(::mkdir(QFile::encodeName(file).constData(), 0700), 0); }
  static void remove(const QString& file) { EXPECT_EQ(::unlink(QFile::encodeName(file).constData()), 0); }

  std::function<void()> late_;
  std::thread later_;
};

TEST_F(LateEffects, AreWaitedFor) {
  const auto brings = [](const QString& gone, const QString& made) {
    return [gone, made] {
      if (!gone.isEmpty()) remove(gone);
      if (!made.isEmpty()) make(made);
    };
  };
  const QString file = write("file"), other = write("other"), moved = write("moved"), taken = write("taken");
  write(".Trash", "in the way");
  EXPECT_TRUE(after(brings(file, {}), [&] { return QVFileManager::trashFile(file, 60.0, services_); }));
  EXPECT_FALSE(stands(file));
  EXPECT_TRUE(after(brings(taken, taken), [&] { return QVFileManager::createDirectory(taken, 60.0, services_); }));
  make(path("there"));
  EXPECT_TRUE(after(brings(other, {}), [&] { return QVFileManager::copyFile(other, path("there"), 60.0, services_); }));
  EXPECT_TRUE(after(brings(moved, {}), [&] { return QVFileManager::moveFile(moved, path("there"), 60.0, services_); }));
  EXPECT_FALSE(stands(moved));
  EXPECT_EQ(privileges_.calls.size(), 4);
}

TEST_F(LateEffects, AreWaitedForOnOtherThreads) {
  const QString file = write("file");
  write(".Trash", "in the way");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(callBesideEventLoop(
      [&] { return after([&] { remove(file); }, [&] { return QVFileManager::trashFile(file, 60.0, services_); }); }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(LateEffects, ThatDoNotShowInTimeAreFailures) {
  const QString file = write("file");
  write(".Trash", "in the way");
  privileges_.effect = [] {};
  const auto start = std::chrono::steady_clock::now();
  for (const double timeout : {0.2, 0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(QVFileManager::trashFile(file, timeout, services_));
  }
  const auto passed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(passed, std::chrono::milliseconds(200));
  EXPECT_LT(passed, std::chrono::seconds(20));
}

TEST_F(LateEffects, LetTheMainThreadHandleEventsMeanwhile) {
  const QString file = write("file");
  write(".Trash", "in the way");
  privileges_.effect = [] {};
  QTimer::singleShot(50, [&] { remove(file); });
  EXPECT_TRUE(QVFileManager::trashFile(file, 60.0, services_));
}

TEST_F(LateEffects, AreNotWaitedForWhenTheyShowAtOnce) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(callBesideEventLoop([&] {
    return QVFileManager::createDirectory(path("a/b"), 60.0, services_) &&
           QVFileManager::copyFile(path("a"), path("c"), 60.0, services_) &&
           QVFileManager::moveFile(path("c"), path("d"), 60.0, services_) &&
           QVFileManager::trashFile(path("d"), 60.0, services_) &&
           QVFileManager::removeFile(path("a"), 60.0, services_);
  }));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_THAT(privileges_.calls, IsEmpty());
}

}  // namespace

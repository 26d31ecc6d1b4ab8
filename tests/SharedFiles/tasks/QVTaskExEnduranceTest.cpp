#include <QDir>
#include <QElapsedTimer>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SharedFiles/tasks/QVTaskEx.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

constexpr int rounds = 2500;  // of four runs

qsizetype openDescriptors() {
  return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size();
}

/// Whether any child is left, running or not yet collected.
bool hasChildren() {
  siginfo_t information{};
  return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

TEST(TaskEndurance, TenThousandRunsLeaveNoZombieAndNoDescriptor) {
  const ProcessLog log;
  ASSERT_TRUE(QVTaskEx::runTask("/bin/true"));
  const qsizetype before = openDescriptors();
  for (int round = 0; round < rounds; ++round) {
    ASSERT_EQ(QVTaskEx::dataFromTask("/bin/echo", {"out"}, nullptr), QByteArray("out\n"));
    ASSERT_EQ(QVTaskEx::terminationCodeFromTask("/bin/false"), 1);
    ASSERT_TRUE(QVTaskEx::runTask("/bin/true"));
    QVTaskEx::runTaskAndReturn("/bin/true");
  }
  QElapsedTimer elapsed;
  elapsed.start();
  while (hasChildren() && elapsed.elapsed() < 20000) ::usleep(10000);
  EXPECT_FALSE(hasChildren());
  EXPECT_EQ(openDescriptors(), before);
}

TEST(TaskEndurance, LaunchesThatFailLeaveNoDescriptor) {
  const ProcessLog log;
  EXPECT_EQ(QVTaskEx::dataFromTask(log.home(), {}, nullptr), std::nullopt);
  const qsizetype before = openDescriptors();
  for (int round = 0; round < 100; ++round) EXPECT_EQ(QVTaskEx::dataFromTask(log.home(), {}, nullptr), std::nullopt);
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace

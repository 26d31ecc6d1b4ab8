#include <QProcess>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/SharedFiles/AnalyticsFixture.h"

namespace {

class AnalyticsKilled : public Analytics {};

TEST_F(AnalyticsKilled, LeavesAReadableCache) {
  qsizetype most = 0;
  for (int milliseconds = 30; milliseconds < 150; milliseconds += 30) {
    QProcess recorder;
    recorder.start(QCoreApplication::applicationFilePath(), {"--record-events"});
    ASSERT_TRUE(recorder.waitForReadyRead(60000)) << "it says that it has begun";
    QTest::qSleep(milliseconds);
    ::kill(static_cast<pid_t>(recorder.processId()), SIGKILL);
    ASSERT_TRUE(recorder.waitForFinished(60000));
    EXPECT_EQ(recorder.exitStatus(), QProcess::CrashExit);
    const auto read = PropertyList::read(cacheFile());
    ASSERT_TRUE(read.has_value());
    EXPECT_GE(read->toList().size(), most) << "a later start goes on with it";
    most = read->toList().size();
  }
  EXPECT_GT(most, 4);
}

}  // namespace

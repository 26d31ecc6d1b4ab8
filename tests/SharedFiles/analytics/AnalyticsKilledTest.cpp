#include <QElapsedTimer>
#include <QProcess>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/SharedFiles/analytics/AnalyticsFixture.h"
#include "tests/SharedFiles/analytics/HttpsServer.h"

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

TEST_F(AnalyticsKilled, QuitsSoonWithAnUploadUnderWay) {
  const ServerCertificate certificate = ServerCertificate::make();
  QFile file(home_.filePath("certificate.pem"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(certificate.certificate.toPem());
  file.close();
  using Manner = HttpsServer::Manner;
  for (const Manner manner : {Manner::KeepsSilent, Manner::Trickles, Manner::Answers, Manner::HangsUp}) {
    HttpsServer server(certificate);
    server.setManner(manner);
    QProcess program;
    QElapsedTimer since;
    since.start();
    program.start(QCoreApplication::applicationFilePath(),
                  {"--upload-and-quit", server.address().toString(), file.fileName()});
    runUntil([&] { return program.state() == QProcess::NotRunning; });
    EXPECT_LT(since.elapsed(), 10000);
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << program.readAllStandardError().toStdString();
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(PropertyList::read(cacheFile()), QVariant(QVariantList())) << "what was sent is not kept";
  }
}

}  // namespace

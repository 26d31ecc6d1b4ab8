#include <future>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "tests/SharedFiles/log/LogFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class QVLogEntries : public LogFixture {};

TEST_F(QVLogEntries, StartsAGenerationWithTheHeader) {
  log_->createNewLog();
  log_->finishWriting();
  EXPECT_EQ(contents(file(1)), header());
  EXPECT_EQ(output_.str(), "");
}

TEST_F(QVLogEntries, LeavesOutOfTheHeaderWhatTheBundleDoesNotHave) {
  start(ordinaryUser, BundleInfo({}, "/bin/demo"));
  log_->createNewLog();
  log_->finishWriting();
  EXPECT_EQ(contents(file(1)), line("Log started: " + QByteArray(date)) + line("Path: /bin/demo") +
                                   line("System: macOS 14.2, 8 CPU(s), 16.00 GB RAM") + line("Running in 32-bit mode"));
  start(ordinaryUser, BundleInfo());
  log_->createNewLog("bare");
  log_->finishWriting();
  EXPECT_EQ(contents(file(1, "bare")), line("Log started: " + QByteArray(date)) +
                                           line("System: macOS 14.2, 8 CPU(s), 16.00 GB RAM") +
                                           line("Running in 32-bit mode"));
}

TEST_F(QVLogEntries, DateEveryEntryInItsZone) {
  log_->createNewLog();
  log_->finishWriting();
  now_ = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::OffsetFromUTC, -(3 * 3600 + 30 * 60));
  log_->appendLog("west");
  log_->finishWriting();
  now_ = QDateTime(QDate(2026, 1, 2), QTime(23, 4, 5), Qt::OffsetFromUTC, 5 * 3600 + 45 * 60);
  log_->appendLog("east");
  EXPECT_EQ(entries(), "2026-01-02 03:04:05 -0330 - west\n2026-01-02 23:04:05 +0545 - east\n");
}

TEST_F(QVLogEntries, TrimsWhiteSpaceAndLineBreaksFromBothEnds) {
  log_->createNewLog();
  log_->appendLog(" \n\t a\n b \r\n");
  log_->fastAppendLog("%@", {"\u00a0\u2028 c\u2029"});
  EXPECT_EQ(entries(), line("a\n b") + line("c"));
}

TEST_F(QVLogEntries, DropsAnEntryOfSpacesAndLineBreaks) {
  log_->createNewLog();
  log_->finishWriting();
  const quint32 written = log_->bytesWritten();
  for (const char* text : {"", " ", "\n", " \n \r\n\t"}) {
    log_->appendLog(text);
    log_->fastAppendLog(text);
    log_->appendLogAndDebugPrint(text);
  }
  EXPECT_EQ(entries(), "");
  EXPECT_EQ(log_->bytesWritten(), written);
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

TEST_F(QVLogEntries, DoNothingWithoutAFormat) {
  log_->createNewLog();
  log_->appendLog(QString());
  log_->fastAppendLog(QString());
  log_->appendLogAndPrint(QString());
  log_->appendLogAndDebugPrint(QString());
  EXPECT_EQ(entries(), "");
  EXPECT_EQ(output_.str(), "");
}

TEST_F(QVLogEntries, KeepAPerCentSignInAPlainText) {
  log_->createNewLog();
  log_->appendLog("Progress 50% done");
  log_->appendLog("100%");
  log_->appendLog("%d of %@, 5%. %+d");
  log_->appendLog("%@ at 7%, %i left", {"copy", 3});
  EXPECT_EQ(entries(),
            line("Progress 50% done") + line("100%") + line("%d of %@, 5%. %+d") + line("copy at 7%, 3 left"));
}

TEST_F(QVLogEntries, MarkAnArgumentThatIsNotThere) {
  log_->createNewLog();
  log_->appendLog("%@ %d %s", {"one"});
  log_->fastAppendLog("%d", {"text"});
  EXPECT_EQ(entries(), line("one <missing> <missing>") + line("<mismatch>"));
}

TEST_F(QVLogEntries, KeepTheirOrder) {
  log_->createNewLog();
  QByteArray expected;
  for (int i = 0; i < 200; ++i) {
    log_->fastAppendLog("entry %d", {i});
    expected += line("entry " + QByteArray::number(i));
  }
  EXPECT_EQ(entries(), expected);
}

TEST_F(QVLogEntries, CountTheBytesOfTheirLines) {
  log_->createNewLog();
  log_->appendLog("ä");
  log_->finishWriting();
  EXPECT_EQ(log_->bytesWritten(), static_cast<quint32>((header() + line("ä")).size()));
}

TEST_F(QVLogEntries, AreEchoedCleanedForTheTerminal) {
  log_->createNewLog();
  log_->appendLogAndPrint("  copied %d%% of %@\n", {50, "a.mov"});
  log_->appendLogAndPrint("%@", {QString::fromUtf16(u"a%@b%c\0d", 8)});
  log_->appendLogAndPrint("%@", {"%%@@ 5"});
  EXPECT_EQ(output_.str(), "copied 50%% of a.mov\nab%%cd\n%%@ 5\n");
  EXPECT_THAT(entries().toStdString(), ::testing::HasSubstr(line("copied 50% of a.mov").toStdString()));
}

TEST_F(QVLogEntries, AreNotEchoedByTheDebugForm) {
  log_->createNewLog();
  log_->appendLogAndDebugPrint(" %@ \n", {"quiet"});
  EXPECT_EQ(entries(), line("quiet"));
  EXPECT_EQ(output_.str(), "");
}

TEST_F(QVLogEntries, AreNotEchoedWhenPrintingIsOff) {
  log_->createNewLog(QString(), true);
  log_->appendLogAndPrint("quiet");
  EXPECT_EQ(entries(), line("quiet"));
  EXPECT_EQ(output_.str(), "");
  EXPECT_TRUE(log_->noPrinting());
}

TEST_F(QVLogEntries, OpenTheCurrentFileThemselvesAndGoToItsEnd) {
  put(file(1), "before\n");
  log_->appendLog("after");
  log_->finishWriting();
  EXPECT_EQ(contents(file(1)), "before\n" + line("after"));
  EXPECT_NE(log_->fileHandle(), nullptr);
}

TEST_F(QVLogEntries, TellOnTheOutputWhenThereIsNoFileToOpen) {
  log_->appendLog("lost 5% of it");
  log_->finishWriting();
  EXPECT_EQ(output_.str(), "Unable to log the following information: lost 5% of it\nUnable to open log for output\n");
  EXPECT_FALSE(QFile::exists(userFolder()));
  EXPECT_EQ(log_->bytesInQueue(), 0U);
  log_->setNoPrinting(true);
  log_->appendLog("lost too");
  log_->finishWriting();
  EXPECT_EQ(output_.str().find("too"), std::string::npos);
}

TEST_F(QVLogEntries, GoOnAfterAnExceptionWhileWriting) {
  auto sink = std::make_shared<TestSink>();
  int calls = 0;
  sink->before = [&calls] {
    if (++calls == 1) throw QVPlatformException("disk is full");
  };
  log_->setFileHandle(sink);
  log_->fastAppendLog("first");
  log_->fastAppendLog("second");
  log_->finishWriting();
  EXPECT_EQ(output_.str(), "Exception writing to log: disk is full\n");
  EXPECT_THAT(sink->lines, ElementsAre(line("second")));
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

TEST_F(QVLogEntries, TellThatAFileCannotBeWrittenTo) {
  const std::shared_ptr<LogSink> full = LogFileSink::open("/dev/full", LogFileSink::IfMissing::Fail);
  ASSERT_NE(full, nullptr);
  log_->setFileHandle(full);
  log_->appendLog("x");
  log_->finishWriting();
  EXPECT_EQ(output_.str(), "Exception writing to log: No space left on device\n");
}

TEST_F(QVLogEntries, StopWhenLoggingIsDisabled) {
  auto sink = std::make_shared<TestSink>();
  log_->setFileHandle(sink);
  log_->setLoggingDisabled(true);
  log_->createNewLog();
  log_->appendLog("a");
  log_->fastAppendLog("b");
  log_->appendLogAndPrint("c");
  log_->appendLogAndDebugPrint("d");
  log_->finishWriting();
  EXPECT_THAT(sink->lines, IsEmpty());
  EXPECT_EQ(output_.str(), "");
  EXPECT_EQ(log_->fileHandle(), sink);
  EXPECT_FALSE(QFile::exists(userFolder()));
}

TEST_F(QVLogEntries, QueuedBeforeLoggingWasDisabledStayCounted) {
  std::promise<void> gate;
  queue_->addOperation([&gate] { gate.get_future().wait(); });
  log_->fastAppendLog("four");
  log_->setLoggingDisabled(true);
  gate.set_value();
  log_->finishWriting();
  EXPECT_EQ(log_->bytesInQueue(), 4U);
  EXPECT_EQ(output_.str(), "");
}

TEST(QVLogEscaping, MakesStrayPerCentSignsLiteral) {
  const struct {
    const char *text, *escaped;
  } rows[] = {{"", ""},
              {"plain", "plain"},
              {"50% done", "50%% done"},
              {"50%.", "50%%."},
              {"50%!", "50%%!"},
              {"50%, x", "50%%, x"},
              {"50%-x", "50%%-x"},
              {"50%;", "50%%;"},
              {"50%:", "50%%:"},
              {"50%+", "50%%+"},
              {"50%% done", "50%% done"},
              {"%% %%. %%!", "%% %%. %%!"},
              {"%@ %i %s", "%@ %i %s"},
              {"50%", "50%"},
              {"50%%", "50%%"},
              {"50%%%@", "50%%@"},
              {"%%%", "%%"},
              {"% % %", "%% %% %"},
              {"%0.2f", "%0.2f"},
              {"%.2f", "%%.2f"},
              {"%-5d", "%%-5d"},
              {"%?", "%?"},
              {"%%%% ", "%%%% "}};
  for (const auto& row : rows) {
    EXPECT_EQ(QVLog::escapeTextForLogging(row.text).toStdString(), row.escaped) << row.text;
  }
  EXPECT_TRUE(QVLog::escapeTextForLogging(QString()).isNull());
}

TEST_F(QVLogEntries, GoToAnotherSinkWithTheSameFormat) {
  putSetting("1");
  const QByteArray path = QFile::encodeName(root_.path()) + "/other.log";
  put(path, "before\n");
  log_->setSink(LogFileSink::open(path, LogFileSink::IfMissing::Create));
  log_->appendLog("one %d", {1});
  log_->setBytesWritten(LogController::sizeLimit);
  log_->appendLog("two");
  log_->finishWriting();
  EXPECT_EQ(contents(path), "before\n" + line("one 1") + line("two"));
  log_->createNewLog(QString(), true);
  log_->finishWriting();
  EXPECT_EQ(contents(path), "before\n" + line("one 1") + line("two") + header());
  EXPECT_FALSE(QFile::exists(userFolder()));
  EXPECT_EQ(output_.str(), "");
}

TEST_F(QVLogEntries, GoBackToTheFilesWithoutTheSink) {
  auto sink = std::make_shared<TestSink>();
  log_->createNewLog();
  log_->finishWriting();
  log_->setSink(sink);
  log_->appendLog("elsewhere");
  log_->finishWriting();
  log_->setSink(nullptr);
  log_->appendLog("here");
  EXPECT_EQ(entries(), line("here"));
  EXPECT_THAT(sink->lines, ElementsAre(line("elsewhere")));
}

TEST(LogFileSink, OpensAFileByItsOwnBytes) {
  const QTemporaryDir folder;
  const QByteArray path = QFile::encodeName(folder.path()) + "/\xff\xfe.log";
  EXPECT_EQ(LogFileSink::open(path, LogFileSink::IfMissing::Fail), nullptr);
  const std::shared_ptr<LogSink> sink = LogFileSink::open(path, LogFileSink::IfMissing::Create);
  ASSERT_NE(sink, nullptr);
  sink->write("x\n");
  EXPECT_EQ(::unlink(path.constData()), 0);
  EXPECT_EQ(LogFileSink::open(QFile::encodeName(folder.path()) + "/none/x.log", LogFileSink::IfMissing::Create),
            nullptr);
}

TEST(LogFileSink, DoesNotWaitForAReaderOfAPipe) {
  const QTemporaryDir folder;
  const QByteArray path = QFile::encodeName(folder.path()) + "/pipe";
  ASSERT_EQ(::mkfifo(path.constData(), 0600), 0);
  EXPECT_EQ(LogFileSink::open(path, LogFileSink::IfMissing::Create), nullptr);
}

static_assert(!std::is_default_constructible_v<QVLog>, "the process has one log");
static_assert(!std::is_copy_constructible_v<LogController> && !std::is_move_constructible_v<LogController>);

}  // namespace

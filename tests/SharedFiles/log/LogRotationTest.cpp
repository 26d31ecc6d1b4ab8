#include <QDir>
#include <QFileInfo>
#include <functional>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/SharedFiles/log/LogFixture.h"

namespace {

class LogRotation : public LogFixture {
 protected:
  QStringList filesIn(const QString& folder) const { return QDir(folder).entryList(QDir::Files, QDir::Name); }
  void newGeneration(const QByteArray& entry) {
    log_->createNewLog();
    log_->appendLog(entry);
    log_->finishWriting();
  }
};

/// A folder in which nothing can be moved, made or removed while this lives; its files can be written.
class FixedFolder {
 public:
  explicit FixedFolder(const QString& path) : path_(QFile::encodeName(path)) {
    EXPECT_EQ(::chmod(path_.constData(), 0555), 0);
  }
  ~FixedFolder() { ::chmod(path_.constData(), 0755); }
  FixedFolder(const FixedFolder&) = delete;
  FixedFolder& operator=(const FixedFolder&) = delete;

 private:
  const QByteArray path_;
};

TEST_F(LogRotation, KeepsFiveGenerationsAndDropsTheOldest) {
  for (const char* entry : {"first", "second", "third", "fourth", "fifth", "sixth"}) newGeneration(entry);
  EXPECT_EQ(filesIn(userFolder()), QStringList({"demo.1.log", "demo.2.log", "demo.3.log", "demo.4.log", "demo.5.log"}));
  int generation = 1;
  for (const char* entry : {"sixth", "fifth", "fourth", "third", "second"}) {
    EXPECT_EQ(contents(file(generation++)), header() + line(entry));
  }
  EXPECT_EQ(output_.str(), "");
}

TEST_F(LogRotation, MovesOverAGap) {
  put(file(1), "one");
  put(file(3), "three");
  log_->createNewLog();
  EXPECT_EQ(filesIn(userFolder()), QStringList({"demo.1.log", "demo.2.log", "demo.4.log"}));
  EXPECT_EQ(contents(file(2)), "one");
  EXPECT_EQ(contents(file(4)), "three");
}

TEST_F(LogRotation, LeavesTheOlderOnesWithoutACurrentFile) {
  put(file(2), "two");
  put(file(5), "five");
  log_->createNewLog();
  EXPECT_EQ(contents(file(2)), "two");
  EXPECT_EQ(contents(file(5)), "five");
}

TEST_F(LogRotation, LeavesOtherApplicationsAlone) {
  put(file(1, "other"), "other");
  newGeneration("a");
  newGeneration("b");
  EXPECT_EQ(contents(file(1, "other")), "other");
  EXPECT_FALSE(QFile::exists(file(2, "other")));
}

TEST_F(LogRotation, DropsWhateverStandsInThePlaceOfTheOldest) {
  const QString kept = root_.path() + "/kept";
  put(kept + "/inside", "precious");
  const std::function<void()> blocks[] = {[this] { put(file(5) + "/a/inside", "x"); },
                                          [&] { ASSERT_TRUE(QFile::link(kept, file(5))); },
                                          [&] { ASSERT_TRUE(QFile::link(kept + "/none", file(5))); }};
  for (const auto& block : blocks) {
    ASSERT_TRUE(!QFile::exists(userFolder()) || QDir(userFolder()).removeRecursively());
    for (int generation = 1; generation <= 4; ++generation) put(file(generation), QByteArray::number(generation));
    block();
    newGeneration("next");
    for (int generation = 1; generation <= 4; ++generation)
      EXPECT_EQ(contents(file(generation + 1)), QByteArray::number(generation));
    EXPECT_EQ(contents(file(1)), header() + line("next"));
  }
  EXPECT_EQ(contents(kept + "/inside"), "precious") << "a link is dropped itself";
  EXPECT_EQ(output_.str(), "");
}

TEST_F(LogRotation, NeverReachesThroughALinkThatItCannotDrop) {
  if (::geteuid() == 0) GTEST_SKIP() << "whom nothing stops";
  const QString kept = root_.path() + "/kept";
  put(kept + "/inside", "precious");
  put(file(1), "stands\n");
  ASSERT_TRUE(QFile::link(kept, file(5)));
  const FixedFolder fixed(userFolder());
  log_->createNewLog();
  EXPECT_EQ(contents(kept + "/inside"), "precious");
}

TEST_F(LogRotation, MovesALinkInThePlaceOfTheCurrentLogAndLeavesWhatItLeadsTo) {
  const QString kept = root_.path() + "/kept";
  put(kept, "precious");
  ASSERT_TRUE(QDir().mkpath(userFolder()));
  ASSERT_TRUE(QFile::link(kept, file(1)));
  newGeneration("next");
  EXPECT_EQ(contents(file(1)), header() + line("next"));
  EXPECT_FALSE(QFileInfo(file(1)).isSymLink());
  EXPECT_EQ(QFileInfo(file(2)).symLinkTarget(), kept);
  EXPECT_EQ(contents(kept), "precious");
}

TEST_F(LogRotation, StopsAtAMoveThatFails) {
  if (::geteuid() == 0) GTEST_SKIP() << "whom nothing stops";
  for (int generation = 1; generation <= 4; ++generation) put(file(generation), QByteArray::number(generation));
  const FixedFolder fixed(userFolder());
  log_->createNewLog();
  EXPECT_EQ(output_.str(), "Unable to move file " + file(4).toStdString() + " to " + file(5).toStdString() + ".\n");
  for (int generation = 1; generation <= 4; ++generation) {
    EXPECT_EQ(contents(file(generation)), QByteArray::number(generation));
  }
  EXPECT_EQ(log_->fileHandle(), nullptr);
}

TEST_F(LogRotation, AppendsToTheFileThatStandsAfterAFailure) {
  if (::geteuid() == 0) GTEST_SKIP() << "whom nothing stops";
  put(file(1), "stands\n");
  put(file(4), "4");
  const FixedFolder fixed(userFolder());
  log_->createNewLog(QString(), true);
  log_->appendLog("next");
  log_->finishWriting();
  EXPECT_EQ(contents(file(1)), "stands\n" + line("next"));
  EXPECT_EQ(output_.str(), "");
}

TEST_F(LogRotation, TellsThatTheFolderCannotBeMade) {
  put(root_.path() + "/home/Library/Logs", "in the way");
  log_->createNewLog();
  EXPECT_EQ(output_.str(), "Unable to create folder " + userFolder().toStdString() + ".\n");
  log_->createNewLog(QString(), true);
  EXPECT_EQ(output_.str().find('\n'), output_.str().size() - 1);
}

TEST_F(LogRotation, TellsThatTheFileCannotBeMade) {
  put(userFolder(), "a file in the folder's place");
  log_->createNewLog();
  EXPECT_TRUE(QString::fromStdString(output_.str()).startsWith("Unable to create log file " + file(1) + " - "));
  EXPECT_GT(output_.str().size(), 30 + static_cast<std::size_t>(file(1).size()));
  EXPECT_EQ(output_.str().back(), '\n');
}

TEST_F(LogRotation, NamesTheFilesAfterTheExecutableWhateverNameIsGiven) {
  EXPECT_EQ(log_->appName(), "demo");
  log_->createNewLog("given");
  EXPECT_EQ(filesIn(userFolder()), QStringList("demo.1.log"));
}

TEST_F(LogRotation, NamesTheFilesAfterTheNameSet) {
  log_->setAppName("set");
  log_->createNewLog("given");
  EXPECT_EQ(filesIn(userFolder()), QStringList("set.1.log"));
}

TEST_F(LogRotation, TakesTheGivenNameWithoutAnExecutable) {
  start(ordinaryUser, BundleInfo());
  EXPECT_TRUE(log_->appName().isEmpty());
  log_->createNewLog("given");
  EXPECT_EQ(log_->appName(), "given");
  EXPECT_EQ(filesIn(userFolder()), QStringList("given.1.log"));
}

TEST_F(LogRotation, IsUnknownWithoutAnyName) {
  start(ordinaryUser, BundleInfo());
  log_->createNewLog();
  EXPECT_EQ(filesIn(userFolder()), QStringList("Unknown.1.log"));
  EXPECT_EQ(log_->appName(), "Unknown");
}

TEST_F(LogRotation, StartsAGenerationPastTheSizeLimit) {
  log_->createNewLog();
  log_->finishWriting();
  const QByteArray entry = line("an entry");
  log_->setBytesWritten(499990);
  ASSERT_GE(entry.size(), 10);
  log_->appendLog("an entry");
  log_->finishWriting();
  EXPECT_EQ(contents(file(2)), header() + entry);
  EXPECT_EQ(contents(file(1)), header() + line("Log truncated at 500KB"));
  EXPECT_EQ(log_->bytesWritten(), static_cast<quint32>(contents(file(1)).size()));
  EXPECT_EQ(log_->bytesInQueue(), 0U);
}

TEST_F(LogRotation, HasItsLimitAtExactly500000Bytes) {
  log_->createNewLog();
  log_->finishWriting();
  const auto length = static_cast<quint32>(line("x").size());
  log_->setBytesWritten(500000 - 2 * length - 1);
  log_->appendLog("x");
  log_->appendLog("x");
  log_->finishWriting();
  EXPECT_EQ(log_->bytesWritten(), 499999U);
  EXPECT_FALSE(QFile::exists(file(2)));
  log_->setBytesWritten(500000 - length);
  log_->appendLog("x");
  log_->finishWriting();
  EXPECT_TRUE(QFile::exists(file(2)));
}

TEST_F(LogRotation, PutsTheHeaderBeforeWhatWasQueuedAtTheSizeLimit) {
  log_->createNewLog();
  log_->finishWriting();
  const QByteArray big(300000, 'x');
  for (char number = '1'; number <= '4'; ++number) log_->fastAppendLog("%c%@", {number, big});
  log_->finishWriting();
  EXPECT_EQ(contents(file(3)), header() + line("1" + big) + line("2" + big));
  EXPECT_EQ(contents(file(2)), header() + line("Log truncated at 500KB") + line("3" + big) + line("4" + big));
  EXPECT_EQ(contents(file(1)), header() + line("Log truncated at 500KB"));
}

TEST_F(LogRotation, StartsAGenerationOffTheMainThreadWithoutWaitingForItself) {
  onMainThread_ = false;
  log_->createNewLog();
  log_->finishWriting();
  log_->setBytesWritten(499999);
  log_->appendLog("x");
  EXPECT_EQ(contents(file(1)), header() + line("Log truncated at 500KB"));
}

TEST_F(LogRotation, PrintsAgainAfterTheSizeLimit) {
  log_->createNewLog(QString(), true);
  log_->finishWriting();
  log_->setBytesWritten(500000);
  log_->appendLog("x");
  log_->finishWriting();
  EXPECT_FALSE(log_->noPrinting());
}

TEST_F(LogRotation, ListsTheGenerationsThatExist) {
  EXPECT_EQ(log_->availableLogs(), QStringList());
  put(file(4), "4");
  put(file(1), "1");
  put(file(1, "other"), "1");
  EXPECT_EQ(log_->availableLogs(), QStringList({file(1), file(4)}));
}

struct Setting {
  const char* what;
  QVariant value;
  bool disables;
  friend void PrintTo(const Setting& row, std::ostream* out) { *out << row.what; }
};

class LogSettings : public LogRotation, public ::testing::WithParamInterface<Setting> {};

TEST_P(LogSettings, DisableLoggingByOneOrTrueOnly) {
  putSetting(GetParam().value);
  log_->createNewLog();
  log_->appendLog("entry");
  log_->finishWriting();
  EXPECT_EQ(log_->loggingDisabled(), GetParam().disables);
  EXPECT_EQ(QFile::exists(file(1)), !GetParam().disables);
  EXPECT_EQ(output_.str(), GetParam().disables ? "Logging is disabled\n" : "");
}

INSTANTIATE_TEST_SUITE_P(Values, LogSettings,
                         ::testing::Values(Setting{"StringOne", "1", true}, Setting{"True", true, true},
                                           Setting{"NumberOne", 1, true}, Setting{"RealOne", 1.0, true},
                                           Setting{"StringYes", "YES", false}, Setting{"StringTrue", "true", false},
                                           Setting{"StringZero", "0", false}, Setting{"NumberZero", 0, false},
                                           Setting{"False", false, false}, Setting{"NumberTwo", 2, false},
                                           Setting{"RealHalf", 0.5, false}, Setting{"Array", QVariantList{1}, false},
                                           Setting{"Data", QByteArray("1"), false}),
                         [](const auto& row) { return std::string(row.param.what); });

TEST_F(LogRotation, IsOnWithABrokenSettingsFile) {
  put(root_.path() + "/home/Library/Preferences/com.quorvane.global.plist", "<plist><dict><key>disable-logging</key>");
  log_->createNewLog();
  EXPECT_FALSE(log_->loggingDisabled());
  EXPECT_TRUE(QFile::exists(file(1)));
}

TEST_F(LogRotation, IsQuietAboutBeingDisabledWithoutPrinting) {
  putSetting(true);
  log_->createNewLog(QString(), true);
  EXPECT_TRUE(log_->loggingDisabled());
  EXPECT_EQ(output_.str(), "");
}

TEST_F(LogRotation, StaysDisabledOnceItIs) {
  putSetting(true);
  log_->createNewLog();
  putSetting(false);
  log_->createNewLog();
  EXPECT_TRUE(log_->loggingDisabled());
  EXPECT_EQ(output_.str(), "Logging is disabled\n");
  EXPECT_FALSE(QFile::exists(userFolder()));
}

class SuperuserLog : public LogRotation {
 protected:
  void SetUp() override {
    LogFixture::SetUp();
    start(superuser);
  }
  QString current() const { return machineFolder() + "/demo.1.log"; }
};

TEST_F(SuperuserLog, WritesMachineWideButMakesTheUsersFolder) {
  ASSERT_TRUE(QDir().mkpath(machineFolder()));
  newGeneration("entry");
  EXPECT_EQ(contents(current()), header() + line("entry"));
  EXPECT_TRUE(QFileInfo(userFolder()).isDir());
  EXPECT_EQ(filesIn(userFolder()), QStringList());
}

TEST_F(SuperuserLog, RotatesTheUsersFilesAndEmptiesTheMachineWideOne) {
  put(current(), "machine");
  put(file(1), "one");
  put(file(5), "five");
  log_->createNewLog();
  log_->finishWriting();
  EXPECT_EQ(contents(current()), header());
  EXPECT_EQ(filesIn(machineFolder()), QStringList("demo.1.log"));
  EXPECT_EQ(filesIn(userFolder()), QStringList("demo.2.log"));
  EXPECT_EQ(contents(file(2)), "one");
}

TEST_F(SuperuserLog, RotatesOnlyWhereTheMachineWideFileExists) {
  ASSERT_TRUE(QDir().mkpath(machineFolder()));
  put(file(1), "one");
  log_->createNewLog();
  EXPECT_EQ(filesIn(userFolder()), QStringList("demo.1.log"));
}

TEST_F(SuperuserLog, DoesNotMakeTheMachineWideFolder) {
  log_->createNewLog();
  EXPECT_TRUE(QString::fromStdString(output_.str()).startsWith("Unable to create log file " + current() + " - "));
  EXPECT_FALSE(QFile::exists(machineFolder()));
}

TEST_F(SuperuserLog, AppendsToTheMachineWideFile) {
  put(current(), "before\n");
  log_->appendLog("after");
  log_->finishWriting();
  EXPECT_EQ(contents(current()), "before\n" + line("after"));
}

TEST_F(SuperuserLog, ListsTheUsersFilesOnly) {
  put(current(), "machine");
  EXPECT_EQ(log_->availableLogs(), QStringList());
  put(file(2), "two");
  EXPECT_EQ(log_->availableLogs(), QStringList(file(2)));
}

}  // namespace

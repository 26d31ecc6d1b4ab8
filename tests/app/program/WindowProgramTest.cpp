// The program Lumacheck, started as a user starts it.

#include <QFile>
#include <QProcess>
#include <csignal>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

using testing::HasSubstr;

class WindowProgram : public ProgramFixture {};

TEST_F(WindowProgram, OpensTwoFilesAndEndsWhenAsked) {
  start({plainMovie(), retaggedMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == retaggedMovie(); }));
  EXPECT_EQ(lastFile("lastSourceFile"), plainMovie());
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_THAT(log(1).toStdString(), HasSubstr("Log started: "));
}

TEST_F(WindowProgram, OutlivesWhoeverReadsItsOutput) {
  start({plainMovie(), retaggedMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == retaggedMovie(); }));
  running_.closeReadChannel(QProcess::StandardOutput);
  EXPECT_TRUE(choose("check"));
  EXPECT_TRUE(waitUntil([this] { return tell("report").contains("Checking files..."); }));
  EXPECT_TRUE(waitUntil([this] { return log(1).contains(" - Checking files...\n"); }));
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
}

TEST_F(WindowProgram, LetsNoFileTakeThePlaceOfAClosedStandardStream) {
  run(running_, "/bin/sh", {"-c", "exec \"$0\" \"$1\" <&- >&- 2>&-", program(), plainMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastSourceFile") == plainMovie(); }));
  for (const char* descriptor : {"0", "1", "2"})
    EXPECT_EQ(QFile::symLinkTarget(QString("/proc/%1/fd/%2").arg(running_.processId()).arg(descriptor)), "/dev/null");
  EXPECT_EQ(endWith(SIGTERM), 0);
}

TEST_F(WindowProgram, TakesFilesFromALaterStart) {
  start({plainMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastSourceFile") == plainMovie(); }));
  ASSERT_TRUE(QFile::copy(retaggedMovie(), path("home/relative.mov")));
  QProcess later;
  run(later, program(), {"relative.mov"});
  ASSERT_TRUE(later.waitForFinished(20000));
  EXPECT_EQ(later.exitCode(), 0);
  EXPECT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == path("home/relative.mov"); }));
}

TEST_F(WindowProgram, LooksForAnUpdaterUnlessTheSettingsForbidIt) {
  for (const bool check : {true, false}) {
    put(library("Preferences/com.quorvane.global.plist"),
        PropertyList::toBytes(QVariantMap{{"SUCheckAtStartup", check}}).value_or(""));
    start({check ? plainMovie() : darkerMovie()});
    // The second start shows the first one's movie again and takes its own on the other side.
    ASSERT_TRUE(waitUntil([&] {
      return check ? lastFile("lastSourceFile") == plainMovie() : lastFile("lastDestFile") == darkerMovie();
    }));
    EXPECT_EQ(endWith(SIGTERM), 0);
    EXPECT_EQ(running_.readAll().contains("Error: unable to find software updater"), check);
  }
}

TEST_F(WindowProgram, IsStartedByTheCommand) {
  run(running_, LUMACHECK_PROGRAM, {plainMovie(), darkerMovie()});
  EXPECT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == darkerMovie(); }));
}

TEST_F(WindowProgram, HasOneNameToScreenReadersWhateverItsFileIsCalled) {
  const QString link = path("prefix/bin/gamma-tool");
  ASSERT_TRUE(QFile::link(program(), link));
  run(running_, link);
  QByteArray name;
  EXPECT_TRUE(waitUntil([&] { return !(name = tell("name")).isEmpty(); }));
  EXPECT_EQ(name.toStdString(), "Lumacheck");
}

TEST_F(WindowProgram, SaysThatThereIsNoScreen) {
  environment_.remove("QT_QPA_PLATFORM");
  run(running_, program());
  EXPECT_EQ(ended(), 2);
  EXPECT_EQ(running_.exitStatus(), QProcess::NormalExit);
  EXPECT_THAT(running_.readAll().toStdString(), HasSubstr("there is no screen to open a window on"));
}

TEST_F(WindowProgram, AnswersWithoutAScreen) {
  environment_.remove("QT_QPA_PLATFORM");
  const std::pair<const char*, const char*> answers[] = {
      {"--version", "Lumacheck 1."}, {"--help", "Usage: Lumacheck [SOURCE [DEST]]"}, {"-h", "Usage: Lumacheck"}};
  for (const auto& [question, answer] : answers) {
    run(running_, program(), {question});
    EXPECT_EQ(ended(), 0);
    EXPECT_THAT(running_.readAll().toStdString(), testing::StartsWith(answer));
  }
  EXPECT_EQ(filesBelow(path("home")), QStringList()) << "nothing but the answer";
}

TEST_F(WindowProgram, SaysWhichNameItCannotOpen) {
  // Through a shell: Qt would encode the name.
  run(running_, "/bin/sh", {"-c", "exec \"$0\" \"$(printf '\\377.mov')\"", program()});
  EXPECT_TRUE(running_.waitForReadyRead());
  EXPECT_THAT(running_.readAll().toStdString(),
              HasSubstr("this name is not UTF-8, so the file is not opened: \xff.mov\n"));
}

}  // namespace

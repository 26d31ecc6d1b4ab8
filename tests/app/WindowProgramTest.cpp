// The program Lumacheck, started as a user starts it.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <functional>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/PropertyList.h"
#include "tests/app/WindowFixture.h"

namespace {

using testing::HasSubstr;

class WindowProgram : public testing::Test {
 protected:
  WindowProgram() {
    environment_ = QProcessEnvironment::systemEnvironment();
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "DISPLAY", "WAYLAND_DISPLAY"}) {
      environment_.remove(variable);
    }
    environment_.insert("HOME", home_.path());
    environment_.insert("XDG_RUNTIME_DIR", home_.path());
    environment_.insert("QT_QPA_PLATFORM", "offscreen");
  }
  ~WindowProgram() override {
    running_.kill();
    running_.waitForFinished();
  }

  void start(QProcess& process, const QStringList& arguments, const char* program = LUMACHECK_WINDOW) {
    process.setProcessEnvironment(environment_);
    process.setWorkingDirectory(home_.path());
    process.start(program, arguments);
    ASSERT_TRUE(process.waitForStarted());
  }
  static bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < 20000) QThread::msleep(20);
    return condition();
  }
  QString defaultsFile() const {
    return home_.filePath(".local/share/quorvane/Preferences/com.quorvane.Lumacheck.plist");
  }
  QString lastFile(const char* key) const {
    return PropertyList::readDictionary(defaultsFile()).value_or(QVariantMap()).value(key).toString();
  }
  QByteArray log() const {
    QFile file(home_.filePath(".local/share/quorvane/Logs/Quorvane/Lumacheck.1.log"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  QTemporaryDir home_;
  QProcessEnvironment environment_;
  QProcess running_;
};

TEST_F(WindowProgram, OpensTwoFilesAndEndsWhenAsked) {
  start(running_, {plainMovie(), retaggedMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == retaggedMovie(); }));
  EXPECT_EQ(lastFile("lastSourceFile"), plainMovie());
  ::kill(static_cast<pid_t>(running_.processId()), SIGTERM);
  ASSERT_TRUE(running_.waitForFinished(20000));
  EXPECT_EQ(running_.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(running_.exitCode(), 0);
  // The superuser's log lies in the machine-wide folder.
  if (::getuid() != 0) {
    EXPECT_THAT(log().toStdString(), HasSubstr("Log started: "));
  }
}

TEST_F(WindowProgram, TakesFilesFromALaterStart) {
  start(running_, {plainMovie()});
  ASSERT_TRUE(waitUntil([&] { return lastFile("lastSourceFile") == plainMovie(); }));
  ASSERT_TRUE(QFile::copy(retaggedMovie(), home_.filePath("relative.mov")));
  QProcess later;
  start(later, {"relative.mov"});
  ASSERT_TRUE(later.waitForFinished(20000));
  EXPECT_EQ(later.exitCode(), 0);
  EXPECT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == home_.filePath("relative.mov"); }));
}

TEST_F(WindowProgram, LooksForAnUpdaterUnlessTheSettingsForbidIt) {
  const QString settings = home_.filePath(".local/share/quorvane/Preferences/com.quorvane.global.plist");
  ASSERT_TRUE(QDir().mkpath(QFileInfo(settings).path()));
  for (const bool check : {true, false}) {
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"SUCheckAtStartup", check}}, settings));
    start(running_, {check ? plainMovie() : darkerMovie()});
    // The second start shows the first one's movie again and takes its own on the other side.
    ASSERT_TRUE(waitUntil([&] {
      return check ? lastFile("lastSourceFile") == plainMovie() : lastFile("lastDestFile") == darkerMovie();
    }));
    ::kill(static_cast<pid_t>(running_.processId()), SIGTERM);
    ASSERT_TRUE(running_.waitForFinished(20000));
    const bool looked = running_.readAllStandardOutput().contains("Error: unable to find software updater");
    EXPECT_EQ(looked, check);
  }
}

TEST_F(WindowProgram, IsStartedByTheCommand) {
  start(running_, {plainMovie(), darkerMovie()}, LUMACHECK_PROGRAM);
  EXPECT_TRUE(waitUntil([&] { return lastFile("lastDestFile") == darkerMovie(); }));
}

TEST_F(WindowProgram, SaysThatThereIsNoScreen) {
  environment_.remove("QT_QPA_PLATFORM");
  start(running_, {});
  ASSERT_TRUE(running_.waitForFinished(20000));
  EXPECT_EQ(running_.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(running_.exitCode(), 2);
  EXPECT_THAT(running_.readAllStandardError().toStdString(), HasSubstr("there is no screen to open a window on"));
}

}  // namespace

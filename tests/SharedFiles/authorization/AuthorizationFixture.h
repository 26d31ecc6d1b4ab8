#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QStringList>
#include <QThread>
#include <QTime>
#include <functional>
#include <list>
#include <memory>
#include <utility>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/authorization/AuthorizationController.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

/// A user with a home folder of the test's, at noon of the first of January 2024.
class TestPlatform : public LinuxPathPlatform {
 public:
  TestPlatform() : LinuxPathPlatform(1000, BundleInfo({}, "/opt/somewhere/bin/Lumacheck")) {}
  QString userName() const override { return "ann"; }
  std::time_t time() const override {
    return static_cast<std::time_t>(QDateTime(QDate(2024, 1, 1), QTime(12, 0)).toSecsSinceEpoch());
  }
};

/// Privileged operations whose pkcheck, pkexec and sudo are scripts that write down how they were called.
class AuthorizationFixture : public testing::Test {
 protected:
  using Interface = AuthorizationController::Interface;

  AuthorizationFixture() {
    standIn("pkcheck", "exit 0");
    standIn("pkexec", "shift; exec \"$@\"");
    standIn("sudo", "case $1 in -n) shift 2; exec \"$@\";; -S) read -r line; [ \"$line\" = 'open sesame' ];; esac");
  }

  QString at(const QString& name) const { return log_.home() + "/" + name; }
  AuthorizationPrograms programs() const {
    return {.pkcheck = at("bin/pkcheck"),
            .pkexec = at("bin/pkexec"),
            .sudo = at("bin/sudo"),
            .privileged = LUMACHECK_PRIVILEGED};
  }
  /// A program that writes down its name and arguments, its environment, and then does what the script says.
  void standIn(const QString& name, const QByteArray& script) const {
    QDir().mkpath(at("bin"));
    QFile::remove(at("bin/" + name));
    const QByteArray home = QFile::encodeName(log_.home());
    write("bin/" + name, "#!/bin/sh\nenv >>'" + home + "/environments'\n{ printf '%s\\037' " + name.toUtf8() +
                             " \"$@\"; printf '\\036'; } >>'" + home + "/calls'\n" + script + "\n");
    EXPECT_EQ(::chmod(QFile::encodeName(at("bin/" + name)).constData(), 0755), 0);
  }
  void write(const QString& name, const QByteArray& content) const {
    QDir().mkpath(QFileInfo(at(name)).path());
    QFile file(at(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  QByteArray read(const QString& name) const {
    QFile file(at(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  bool stands(const QString& name) const {
    struct stat status {};
    return ::lstat(QFile::encodeName(at(name)).constData(), &status) == 0;
  }
  QStringList namesIn(const QString& folder) const {
    return QDir(at(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  }

  /// The calls since the last question: each the name of a program and its arguments.
  QList<QStringList> calls() const {
    QList<QStringList> result;
    for (const QByteArray& call : read("calls").split('\036')) {
      if (call.isEmpty()) continue;
      QStringList words = QString::fromUtf8(call).split(QChar(037));
      words.removeLast();
      result.append(words);
    }
    QFile::remove(at("calls"));
    return result;
  }
  /// The same without what comes before the tool in a call of pkexec.
  QList<QStringList> toolLines() const {
    QList<QStringList> lines;
    for (const QStringList& call : calls()) {
      if (call.first() == "pkexec") lines.append(call.mid(3));
    }
    return lines;
  }

  AuthorizationEnvironment environment() {
    const AuthorizationEnvironment real = AuthorizationEnvironment::standard();
    const auto noted = [this](const QString& how, auto run) {
      return [this, how, run](const QString& tool, const QStringList& arguments) {
        superusersRuns_.append(QStringList{how, tool} + arguments);
        run(tool, arguments);
      };
    };
    return {.platform = &platform_,
            .userId = [this] { return userId_; },
            .programs = programs(),
            .runTask = noted("waited for", real.runTask),
            .runTaskAndReturn = noted("started", real.runTaskAndReturn)};
  }
  AuthorizationController& controller(Interface interface = Interface::gui) {
    return controllers_.emplace_back(environment(), interface);
  }
  /// What ran for the superuser since the last question: how, the tool and its arguments.
  QList<QStringList> superusersRuns() { return std::exchange(superusersRuns_, {}); }
  AuthorizationController& superusers(Interface interface = Interface::none) {
    userId_ = 0;
    return controller(interface);
  }
  void becomeUser(uid_t userId) { userId_ = userId; }

  /// What the function writes to the system console.
  static QString console(const std::function<void()>& act) {
    testing::internal::CaptureStderr();
    act();
    return QString::fromStdString(testing::internal::GetCapturedStderr());
  }
  static bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 5000 && !condition(); ++i) QThread::msleep(2);
    return condition();
  }

  ProcessLog log_;
  TestPlatform platform_;

 private:
  uid_t userId_ = 1000;
  QList<QStringList> superusersRuns_;
  std::list<AuthorizationController> controllers_;
};

#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>

#include <gtest/gtest.h>

/// The program Lumacheck, installed into a folder and started as a user starts it, offscreen and in a home of its own,
/// with a hand in it that does what a test says.
class ProgramFixture : public testing::Test {
 protected:
  ProgramFixture();
  ~ProgramFixture() override;

  static bool waitUntil(const std::function<bool()>& condition);
  static QByteArray contentOf(const QString& path);
  /// Writes a file and the folders that lead to it.
  static void put(const QString& path, const QByteArray& content);

  QString path(const QString& name) const { return folder_.filePath(name); }
  QString library(const QString& rest) const { return path("home/.local/share/quorvane/") + rest; }
  QString defaultsFile() const { return library("Preferences/com.quorvane.Lumacheck.plist"); }
  QString decisionFile() const { return library("Preferences/com.quorvane.qc.plist"); }
  QString eventsFile() const { return path("home/.cache/Quorvane/QC/com.quorvane.Lumacheck"); }

  /// What another reader finds in a property list: a line for every key, "key: type value", sorted. Dates show no
  /// value. "none" for a file that is not there.
  static QString contentsOf(const QString& propertyList);
  QDateTime stamp(const char* key) const;
  QString lastFile(const char* key) const;

  /// The text of a generation. The superuser's newest lies in the machine's folder.
  QByteArray log(int generation) const;
  /// The files below a folder, sorted, as they stand below it.
  static QStringList filesBelow(const QString& folder);

  /// A stand-in for the application that takes crash reports: notes in given() the files it gets. On the desktop, or
  /// at a path.
  void writeCrashlineEntry() const;
  void writeCrashline(const QString& file) const;
  QString crashline() const { return path("data/Crash Line"); }
  QByteArray given() const { return contentOf(path("given")); }

  QString program() const { return path("prefix/bin/Lumacheck"); }
  /// Starts a program, which need not go on, in the home.
  void run(QProcess& process, const QString& program, const QStringList& arguments = {});
  /// Starts the window and waits until it answers.
  void start(const QStringList& files = {});
  /// Waits for the end: 0 after an orderly one, else the signal or the exit status that it came with.
  int ended();
  int endWith(int signal);

  /// Tells the hand; its answer, empty when there is none within ten seconds.
  QByteArray tell(const QString& what) const;
  QStringList dialogs() const;
  bool press(const QString& button) const { return tell("press " + button) == "yes"; }
  bool choose(const QString& action) const { return tell("choose " + action) == "yes"; }
  bool waitForDialog(const QString& name) const;

  QTemporaryDir folder_;
  QProcessEnvironment environment_;
  QProcess running_;

 private:
  static void install(const QString& file, const QString& target);
};

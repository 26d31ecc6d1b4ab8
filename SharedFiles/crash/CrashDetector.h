#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <optional>

#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "SharedFiles/tasks/PlatformTools.h"

/// What a crash detector is built on. References outlive it.
struct CrashDetectorEnvironment {
  const PathPlatform& paths;  ///< where crash reports and the shared settings lie
  UserDefaults& defaults;     ///< keeps the stamps
  BundleInfo bundle;          ///< its CFBundleName is the application's name where none is given
  QString bundlePath;         ///< the folder of the bundle
  PlatformTools tools;
  std::function<QDateTime()> now;
  std::function<void(const QString& text)> console;
  /// Runs a program with a time-out in seconds and waits for it.
  std::function<void(const QString& path, const QStringList& arguments, double timeout)> runTask;
  /// Opens a file with the application in a bundle, or with the one of an identifier; false when it could not.
  std::function<bool(const QString& application, const QString& file)> openWithApplication;
  std::function<bool(const QString& identifier, const QString& file)> openWithIdentifier;

  /// The running program's.
  static CrashDetectorEnvironment standard();
};

/// Finds out at the start whether the run before ended in a crash: it stamps the time of every launch and every orderly
/// exit, and looks, when the last launch has no later exit, for a crash report written after that launch. QVCrashline
/// is the door to the process's own.
///
/// Stamps are dates with milliseconds under the keys "launch" and "exit", in the user defaults or, where a path is
/// given, in that property list, whose other keys are kept. A null path or name means that none is given. Everything
/// fails quietly: what is missing or unreadable leads to no crash found or no hand-off.
///
/// Runs on the caller's thread, which is to be one at a time.
class CrashDetector {
 public:
  /// applicationDidCrashWithLog: receives the path of the report, on the main thread. An empty one does not respond.
  using Delegate = std::function<void(const QString& reportPath)>;

  explicit CrashDetector(CrashDetectorEnvironment environment) : environment_(std::move(environment)) {}

  /// startCrashline:plistPath:delegate: checkForCrashes(), has the delegate told of what was found, without waiting,
  /// and stamps the launch.
  void startCrashline(const QString& name, const QString& plistPath, const Delegate& delegate) const;
  /// stopCrashline: stamps the exit.
  void stopCrashline(const QString& plistPath) const;
  /// checkForCrashes:plistPath: the report of the run before, handed to the crash-report application unless the shared
  /// settings turn that off; null when the run before ended well, or without a report.
  QString checkForCrashes(const QString& name, const QString& plistPath) const;
  /// chownPlist: gives a file below a folder "Users" to the user that the next component of its path names.
  void chownPlist(const QString& path) const;

 private:
  void stamp(const QString& key, const QString& plistPath) const;
  std::optional<QDateTime> stamped(const QString& key, const QString& plistPath) const;
  QString reportSince(const QDateTime& launch, const QString& name) const;
  QStringList reportFolders() const;
  bool handOffDisabled() const;
  void handOff(const QString& report) const;

  const CrashDetectorEnvironment environment_;
};

#pragma once

#include <QString>

#include "SharedFiles/crash/CrashDetector.h"

/// Finds out at the start whether the run before ended in a crash, and hands the crash report to the crash-report
/// application: the bundle "Crashline.app" among the host bundle's resources (`lib/lumacheck/Contents/Resources` under
/// the prefix), else the desktop entry com.quorvane.Crashline.desktop. See CrashDetector for what each operation does.
/// A null name or path means that none is given. On one thread at a time, normally the main thread.
class QVCrashline final {
 public:
  QVCrashline() = delete;

  using Delegate = CrashDetector::Delegate;

  /// startCrashline
  static void startCrashline() { startCrashline(QString(), QString(), {}); }
  /// startCrashlineWithDelegate:
  static void startCrashlineWithDelegate(const Delegate& delegate) { startCrashline(QString(), QString(), delegate); }
  /// startCrashline:plistPath:
  static void startCrashline(const QString& name, const QString& plistPath) { startCrashline(name, plistPath, {}); }
  /// startCrashline:plistPath:delegate:
  static void startCrashline(const QString& name, const QString& plistPath, const Delegate& delegate);
  /// stopCrashline
  static void stopCrashline() { stopCrashline(QString()); }
  /// stopCrashline:
  static void stopCrashline(const QString& plistPath);
  /// checkForCrashes
  static QString checkForCrashes() { return checkForCrashes(QString(), QString()); }
  /// checkForCrashes:plistPath:
  static QString checkForCrashes(const QString& name, const QString& plistPath);
  /// chownPlist:
  static void chownPlist(const QString& path);
};

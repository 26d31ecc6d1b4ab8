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
  /// startCrashline:plistPath:
  /// startCrashline:plistPath:delegate:
  static void startCrashline(const QString& name = {}, const QString& plistPath = {}, const Delegate& delegate = {}) {
    detector().startCrashline(name, plistPath, delegate);
  }
  /// startCrashlineWithDelegate:
  static void startCrashlineWithDelegate(const Delegate& delegate) { startCrashline({}, {}, delegate); }
  /// stopCrashline
  /// stopCrashline:
  static void stopCrashline(const QString& plistPath = {}) { detector().stopCrashline(plistPath); }
  /// checkForCrashes
  /// checkForCrashes:plistPath:
  static QString checkForCrashes(const QString& name = {}, const QString& plistPath = {}) {
    return detector().checkForCrashes(name, plistPath);
  }
  /// chownPlist:
  static void chownPlist(const QString& path) { detector().chownPlist(path); }

 private:
  static CrashDetector detector() { return CrashDetector(CrashDetectorEnvironment::standard()); }
};

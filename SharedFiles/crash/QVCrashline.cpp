#include "SharedFiles/crash/QVCrashline.h"

namespace {

CrashDetector detector() {
  return CrashDetector(CrashDetectorEnvironment::standard());
}

}  // namespace

void QVCrashline::startCrashline(const QString& name, const QString& plistPath, const Delegate& delegate) {
  detector().startCrashline(name, plistPath, delegate);
}

void QVCrashline::stopCrashline(const QString& plistPath) {
  detector().stopCrashline(plistPath);
}

QString QVCrashline::checkForCrashes(const QString& name, const QString& plistPath) {
  return detector().checkForCrashes(name, plistPath);
}

void QVCrashline::chownPlist(const QString& path) {
  detector().chownPlist(path);
}

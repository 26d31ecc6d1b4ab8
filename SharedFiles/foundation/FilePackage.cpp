#include "SharedFiles/foundation/FilePackage.h"

#include <QFile>

#include <unistd.h>

namespace {

bool isAccessible(const QString& path, int mode) {
  return !path.isEmpty() && ::access(QFile::encodeName(path).constData(), mode) == 0;
}

}  // namespace

bool isFilePackageAtPath(const QString& path) {
  return isAccessible(path + "/Contents/Info.plist", F_OK) || isAccessible(path + "/AppRun", F_OK);
}

bool fileExists(const QString& path) {
  return isAccessible(path, F_OK);
}

bool isExecutableFileAtPath(const QString& path) {
  return isAccessible(path, X_OK);
}

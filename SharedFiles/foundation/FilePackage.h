#pragma once

#include <QFileInfo>
#include <QString>

/// Whether something stands there, or where its link leads.
inline bool fileExists(const QString& path) {
  return QFileInfo::exists(path);
}

/// Whether this process may run what stands there; a folder counts when it may be entered.
inline bool isExecutableFileAtPath(const QString& path) {
  return QFileInfo(path).isExecutable();
}

/// Whether the path is a package: a folder that users see as one file. That is a folder with `Contents/Info.plist` or
/// `AppRun` inside. Links are followed. Callable from any thread.
inline bool isFilePackageAtPath(const QString& path) {
  return fileExists(path + "/Contents/Info.plist") || fileExists(path + "/AppRun");
}

#pragma once

#include <QString>
#include <QStringList>

#include "SharedFiles/FileServices.h"

/// The working folder that logs are gathered in: every file lies in it under the full path that it comes from. The
/// operations tell on the console what fails and answer false; the folder then stays for a look at it.
class LogGathering {
 public:
  LogGathering(const PathPlatform& paths, const FileServices& files);

  const QString& folder() const { return folder_; }
  /// Files that were copied; one that was there already does not count.
  int filesCopied() const { return filesCopied_; }

  bool makeFolder();  ///< anew: what stands there is removed
  /// The logs, crash reports and preferences of the applications, the user's and then the machine's.
  bool copyLogs(const QStringList& names);
  bool copyFiles(const QStringList& paths);
  void removeFolder();

 private:
  bool copyDomain(const QStringList& names, bool user);
  bool copyLogFile(const QString& folder, const QString& name);
  bool copyPreferences(const QString& folder, const QString& name);

  const PathPlatform& paths_;
  const FileServices& files_;
  const QString folder_;
  int filesCopied_ = 0;
};

#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <stop_token>

#include "SharedFiles/files/FileServices.h"

/// How far a gathering is.
struct GatheringProgress {
  int files = 0;         ///< lie in the working folder
  bool packing = false;  ///< the archive is being made of them
};

/// Who watches a gathering.
struct GatheringWatch {
  std::stop_token stop = {};  ///< asked for from any thread
  /// Told on the thread that gathers.
  std::function<void(const GatheringProgress&)> progress = [](const GatheringProgress& /*progress*/) {};
};

/// The working folder that logs are gathered in: every file lies in it under the full path that it comes from. The
/// operations tell on the console what fails and answer false; the folder then stays for a look at it. Asked to stop
/// they answer false, too, and tell nothing.
class LogGathering {
 public:
  LogGathering(const PathPlatform& paths, const FileServices& files, GatheringWatch watch = {});

  const QString& folder() const { return folder_; }
  /// Files that were copied; one that was there already does not count.
  int filesCopied() const { return filesCopied_; }

  bool makeFolder();  ///< anew: what stands there is removed
  /// The logs, crash reports and preferences of the applications, the user's and then the machine's.
  bool copyLogs(const QStringList& names);
  bool copyFiles(const QStringList& paths);
  bool pack(const QString& archive);  ///< the folder, as the top of the archive
  void removeFolder();
  bool isCancelled() const { return watch_.stop.stop_requested(); }

 private:
  bool copyDomain(const QStringList& names, bool user);
  bool copyLogFile(const QString& folder, const QString& name);
  bool copyPreferences(const QString& folder, const QString& name);
  bool copy(const QString& source, const QString& destination, const char* failureLine);

  const PathPlatform& paths_;
  const FileServices& files_;
  const GatheringWatch watch_;
  const QString folder_;
  int filesCopied_ = 0;
};

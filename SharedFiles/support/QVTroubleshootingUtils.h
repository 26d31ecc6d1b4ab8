#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>
#include <stop_token>

#include "SharedFiles/files/FileServices.h"
#include "SharedFiles/support/Workspace.h"

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

/// What gathering and viewing logs ask of their surroundings.
struct TroubleshootingServices {
  const PathPlatform& paths = PathPlatform::standard();
  FileServices files = {};
  Workspace& workspace = Workspace::standard();
  std::function<QDateTime()> now = [] { return QDateTime::currentDateTime(); };
  GatheringWatch watch = {};
};

/// Gathers the logs, crash reports and preferences of applications into one archive on the desktop, and opens logs for
/// the user. Stateless; callable from any thread; the alerts are sheets without a window. Two gatherings at once would
/// share their working folder.
///
/// A gathering that is asked to stop does so soon, at the latest when the archiver has not gone for a second: the
/// working folder and the archive are removed, no alert is shown, a line of the log tells of it, and the answer is
/// false.
class QVTroubleshootingUtils final {
 public:
  QVTroubleshootingUtils() = delete;

  /// gatherLogsForAppWithName: false at once for no name.
  static bool gatherLogsForAppWithName(const QString& name, const TroubleshootingServices& services = {}) {
    return !name.isEmpty() && gatherLogsForAppsWithNames({name}, services);
  }
  /// gatherLogsForAppsWithNames: not silent.
  static bool gatherLogsForAppsWithNames(const QStringList& names, const TroubleshootingServices& services = {}) {
    return gatherLogsForAppsWithNames(names, false, {}, services);
  }
  /// gatherLogsForAppsWithNames:silent:
  static bool gatherLogsForAppsWithNames(const QStringList& names, bool silent,
                                         const TroubleshootingServices& services = {}) {
    return gatherLogsForAppsWithNames(names, silent, {}, services);
  }
  /// gatherLogsForAppsWithNames:silent:additionalFiles: whether an archive was written. Silent, it shows no alert.
  /// Every file lies in it under its full path, below the folder QV_App_Logs.
  static bool gatherLogsForAppsWithNames(const QStringList& names, bool silent, const QStringList& additionalFiles,
                                         const TroubleshootingServices& services = {});

  /// viewLogForApp: whether the viewer was opened on the application's log.
  static bool viewLogForApp(const QString& name, const TroubleshootingServices& services = {});
  /// viewTaskLogForApp: the same for the log of its runs as a task.
  static bool viewTaskLogForApp(const QString& name, const TroubleshootingServices& services = {});
};

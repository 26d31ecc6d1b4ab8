#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>

#include "SharedFiles/files/FileServices.h"
#include "SharedFiles/support/DesktopWorkspace.h"
#include "SharedFiles/support/LogGathering.h"

/// What gathering and viewing logs ask of their surroundings.
struct TroubleshootingServices {
  const PathPlatform& paths = PathPlatform::standard();
  FileServices files = {};
  Workspace& workspace = DesktopWorkspace::standard();
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
  static bool gatherLogsForAppWithName(const QString& name, const TroubleshootingServices& services = {});
  /// gatherLogsForAppsWithNames: not silent.
  static bool gatherLogsForAppsWithNames(const QStringList& names, const TroubleshootingServices& services = {});
  /// gatherLogsForAppsWithNames:silent:
  static bool gatherLogsForAppsWithNames(const QStringList& names, bool silent,
                                         const TroubleshootingServices& services = {});
  /// gatherLogsForAppsWithNames:silent:additionalFiles: whether an archive was written. Silent, it shows no alert.
  /// Every file lies in it under its full path, below the folder QV_App_Logs.
  static bool gatherLogsForAppsWithNames(const QStringList& names, bool silent, const QStringList& additionalFiles,
                                         const TroubleshootingServices& services = {});

  /// viewLogForApp: whether the viewer was opened on the application's log.
  static bool viewLogForApp(const QString& name, const TroubleshootingServices& services = {});
  /// viewTaskLogForApp: the same for the log of its runs as a task.
  static bool viewTaskLogForApp(const QString& name, const TroubleshootingServices& services = {});
};

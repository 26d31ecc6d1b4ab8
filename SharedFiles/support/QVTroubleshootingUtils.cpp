#include "SharedFiles/support/QVTroubleshootingUtils.h"

#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/support/LogGathering.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

void tell(const char* message, const char* text) {
  QVAlert::alertSheetWithMessageText(message, text, nullptr);
}

/// Makes the desktop folder, too: some desktops do without.
QString archivePath(const QString& name, const TroubleshootingServices& services) {
  const QString desktop = QVLocalPaths::desktopDirectory(services.paths);
  QVFileManager::createDirectory(desktop, false, services.files);
  const QString base = desktop + "/" + name + " Logs";
  QString path = base + ".zip";
  if (!QVFileManager::fileExistsAtPath(path)) return path;
  return base + "_" + services.now().toString("yyyyMMddhhmmss") + ".zip";
}

/// What a gathering that was called off leaves: nothing, and no word to the user, who knows.
bool cancelled(LogGathering& gathering, const QString& archive = {}) {
  gathering.removeFolder();
  if (const auto bytes = bytesOfPath(archive); bytes && !bytes->empty()) static_cast<void>(sys::removeTree(*bytes));
  QVLog::appendLog("Gathering the logs was cancelled.");
  return false;
}

bool viewLog(const QString& fileName, const char* missing, const TroubleshootingServices& services) {
  const QString path = QVLocalPaths::libraryDirectory(true, services.paths) + "/Logs/Quorvane/" + fileName;
  if (QVFileManager::fileExistsAtPath(path)) return services.workspace.openFile(path);
  tell("No log found", missing);
  return false;
}

}  // namespace

bool QVTroubleshootingUtils::gatherLogsForAppWithName(const QString& name, const TroubleshootingServices& services) {
  return !name.isEmpty() && gatherLogsForAppsWithNames({name}, services);
}

bool QVTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList& names,
                                                        const TroubleshootingServices& services) {
  return gatherLogsForAppsWithNames(names, false, services);
}

bool QVTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList& names, bool silent,
                                                        const TroubleshootingServices& services) {
  return gatherLogsForAppsWithNames(names, silent, {}, services);
}

bool QVTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList& names, bool silent,
                                                        const QStringList& additionalFiles,
                                                        const TroubleshootingServices& services) {
  if (names.isEmpty()) return false;
  LogGathering gathering(services.paths, services.files, services.watch);
  const bool copied = gathering.makeFolder() && gathering.copyLogs(names) && gathering.copyFiles(additionalFiles);
  if (gathering.isCancelled()) return cancelled(gathering);
  if (!copied) return false;
  if (gathering.filesCopied() == 0) {
    if (!silent) tell("No logs found", "There were no logs available to gather.");
    return false;
  }
  const QString archive = archivePath(names.first(), services);
  const bool packed = gathering.pack(archive);
  gathering.removeFolder();
  if (gathering.isCancelled()) return cancelled(gathering, packed ? archive : QString());
  if (!silent && packed) tell("Logs gathered successfully", "The gathered logs were placed on your desktop.");
  if (!silent && !packed) tell("Logs could not be gathered", "Please check your file permissions.");
  return packed;
}

bool QVTroubleshootingUtils::viewLogForApp(const QString& name, const TroubleshootingServices& services) {
  return viewLog(name + ".1.log", "You must perform a task before viewing the log.", services);
}

bool QVTroubleshootingUtils::viewTaskLogForApp(const QString& name, const TroubleshootingServices& services) {
  return viewLog(name + ".1.task.log",
                 "You must run the application as a task (e.g. through Taskwarden) before viewing a log.", services);
}

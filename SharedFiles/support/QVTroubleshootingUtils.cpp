#include "SharedFiles/support/QVTroubleshootingUtils.h"

#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <system_error>

#include <sys/stat.h>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

QString descriptionOf(int error) {
  return QString::fromStdString(std::generic_category().message(error));
}

/// Copies what stands at one path to another. What failed, or nothing.
std::optional<QString> copied(const QString& source, const QString& destination, const std::stop_token& stop) {
  const auto from = bytesOfPath(source), to = bytesOfPath(destination);
  if (source.isNull() || !from || !to) return descriptionOf(EINVAL);
  const sys::Result<void> result = sys::copyTree(*from, *to, stop);
  if (!result) return descriptionOf(result.error().code);
  return std::nullopt;
}

/// Where a link leads in the end, when something stands there and its name is text; else the path itself.
QString standardisedTarget(const QString& path) {
  if (!QFileInfo(path).isSymLink()) return path;
  const auto bytes = bytesOfPath(path);
  const std::unique_ptr<char, decltype(&std::free)> target(bytes ? ::realpath(bytes->c_str(), nullptr) : nullptr,
                                                           &std::free);
  return target ? fileNameAsText(target.get()).value_or(path) : path;
}

bool isThere(const QString& path) {
  const QFileInfo information(path);
  return information.exists() || information.isSymLink();
}

/// The working folder that logs are gathered in: every file lies in it under the full path that it comes from. The
/// operations tell on the console what fails and answer false; the folder then stays for a look at it. Asked to stop
/// they answer false, too, and tell nothing.
class LogGathering {
 public:
  explicit LogGathering(const TroubleshootingServices& services)
      : services_(services), folder_(QVLocalPaths::tempDirectory(services.paths) + "/QV_App_Logs") {}

  /// Files that were copied; one that was there already does not count.
  int filesCopied() const { return filesCopied_; }
  bool isCancelled() const { return services_.watch.stop.stop_requested(); }

  /// Makes the folder anew: what stands there is removed.
  bool makeFolder() {
    const auto bytes = bytesOfPath(folder_);
    if (bytes && isThere(folder_)) {
      if (const sys::Result<void> removed = sys::removeTree(*bytes); !removed) {
        logToConsole("Error removing existing folder: %@", descriptionOf(removed.error().code));
        return false;
      }
    }
    // Made by this very call, for the user alone: the folder around it is open to others.
    constexpr mode_t ownersOnly = 0700;
    QVFileManager::createDirectory(QFileInfo(folder_).path(), false, services_.files);
    if (bytes && ::mkdir(bytes->c_str(), ownersOnly) == 0) return true;
    logToConsole("Error creating temp folder: %@", descriptionOf(bytes ? errno : EINVAL));
    return false;
  }

  void removeFolder() {
    if (const auto bytes = bytesOfPath(folder_)) (void)sys::removeTree(*bytes);
  }

  /// The logs, crash reports and preferences of the applications, the user's and then the machine's.
  bool copyLogs(const QStringList& names) { return copyDomain(names, true) && copyDomain(names, false); }

  bool copyFiles(const QStringList& paths) {
    for (const QString& path : paths) {
      const QString absolute = absolutePath(path);
      const QString destination = folder_ + absolute;
      const QString destinationFolder = QFileInfo(destination).path();
      if (!absolute.isNull() && !QVFileManager::fileExistsAtPath(destinationFolder)) {
        QVFileManager::createDirectory(destinationFolder, services_.files);
      }
      if (!copy(absolute, destination, "Unable to copy file: %@")) return false;
    }
    return true;
  }

  /// Packs the folder, as the top of the archive.
  bool pack(const QString& archive) {
    services_.watch.progress({.files = filesCopied_, .packing = true});
    return QVFileManager::compressFile(folder_, archive, true, services_.files, services_.watch.stop);
  }

 private:
  bool copyDomain(const QStringList& names, bool user) {
    const auto copyMatches = [&](const QString& folder, const QString& wanted, const QString& extension) {
      for (const QString& entry : QVFileManager::filesInFolder(folder, "*")) {
        for (const QString& name : names) {
          const bool matches = entry.startsWith(wanted.arg(name)) && entry.endsWith(extension);
          if (matches && !copyLogFile(folder, entry)) return false;
        }
      }
      return true;
    };
    const QString logs = QVLocalPaths::logDirectory(user, services_.paths);
    const QString preferences = QVLocalPaths::prefsDirectory(user, services_.paths);
    return copyMatches(QVLocalPaths::libraryDirectory(user, services_.paths) + "/Logs/Quorvane", "%1", ".log") &&
           copyMatches(logs + "/CrashReporter", "%1_", ".crash") &&
           copyMatches(logs + "/DiagnosticReports", "%1_", ".crash") &&
           std::all_of(names.begin(), names.end(),
                       [&](const QString& name) { return copyPreferences(preferences, name); });
  }

  bool copyPreferences(const QString& folder, const QString& name) {
    const QString compact = QString(name).remove(' ');
    for (const QString& bundle : {compact, compact.toLower()}) {
      const QString file = "com.quorvane." + bundle + ".plist";
      if (isThere(folder + "/" + file)) return copyLogFile(folder, file);
    }
    return true;
  }

  bool copyLogFile(const QString& folder, const QString& name) {
    const QString destinationFolder = folder_ + folder, destination = destinationFolder + "/" + name;
    if (!QVFileManager::fileExistsAtPath(destinationFolder)) {
      QVFileManager::createDirectory(destinationFolder, false, services_.files);
    }
    if (isThere(destination)) return true;
    return copy(standardisedTarget(folder + "/" + name), destination, "Unable to copy log: %@");
  }

  bool copy(const QString& source, const QString& destination, const char* failureLine) {
    const auto failure = copied(source, destination, services_.watch.stop);
    if (failure && !isCancelled()) logToConsole(failureLine, *failure);
    if (failure) return false;
    services_.watch.progress({.files = ++filesCopied_});
    return true;
  }

  const TroubleshootingServices& services_;
  const QString folder_;
  int filesCopied_ = 0;
};

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

bool QVTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList& names, bool silent,
                                                        const QStringList& additionalFiles,
                                                        const TroubleshootingServices& services) {
  if (names.isEmpty()) return false;
  LogGathering gathering(services);
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

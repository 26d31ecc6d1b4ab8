#include "SharedFiles/support/LogGathering.h"

#include <QFileInfo>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

QString descriptionOf(int error) {
  return QString::fromStdString(std::generic_category().message(error));
}

QString descriptionOf(const sys::Error& error) {
  return descriptionOf(error.code);
}

/// Copies what stands at one path to another. What failed, or nothing.
std::optional<QString> copied(const QString& source, const QString& destination, const std::stop_token& stop) {
  const auto from = bytesOfPath(source), to = bytesOfPath(destination);
  if (source.isNull() || !from || !to) return descriptionOf(EINVAL);
  const sys::Result<void> result = sys::copyTree(*from, *to, stop);
  if (!result) return descriptionOf(result.error());
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

}  // namespace

LogGathering::LogGathering(const PathPlatform& paths, const FileServices& files, GatheringWatch watch)
    : paths_(paths),
      files_(files),
      watch_(std::move(watch)),
      folder_(QVLocalPaths::tempDirectory(paths) + "/QV_App_Logs") {}

bool LogGathering::makeFolder() {
  const auto bytes = bytesOfPath(folder_);
  if (bytes && isThere(folder_)) {
    if (const sys::Result<void> removed = sys::removeTree(*bytes); !removed) {
      logToConsole("Error removing existing folder: %@", descriptionOf(removed.error()));
      return false;
    }
  }
  // Made by this very call, for the user alone: the folder around it is open to others.
  constexpr mode_t ownersOnly = 0700;
  QVFileManager::createDirectory(QFileInfo(folder_).path(), false, files_);
  if (bytes && ::mkdir(bytes->c_str(), ownersOnly) == 0) return true;
  logToConsole("Error creating temp folder: %@", descriptionOf(bytes ? errno : EINVAL));
  return false;
}

void LogGathering::removeFolder() {
  if (const auto bytes = bytesOfPath(folder_)) (void)sys::removeTree(*bytes);
}

bool LogGathering::copyLogs(const QStringList& names) {
  return copyDomain(names, true) && copyDomain(names, false);
}

bool LogGathering::copyDomain(const QStringList& names, bool user) {
  const auto copyMatches = [&](const QString& folder, const QString& wanted, const QString& extension) {
    for (const QString& entry : QVFileManager::filesInFolder(folder, "*")) {
      for (const QString& name : names) {
        const bool matches = entry.startsWith(wanted.arg(name)) && entry.endsWith(extension);
        if (matches && !copyLogFile(folder, entry)) return false;
      }
    }
    return true;
  };
  const QString logs = QVLocalPaths::logDirectory(user, paths_);
  if (!copyMatches(QVLocalPaths::libraryDirectory(user, paths_) + "/Logs/Quorvane", "%1", ".log") ||
      !copyMatches(logs + "/CrashReporter", "%1_", ".crash") ||
      !copyMatches(logs + "/DiagnosticReports", "%1_", ".crash")) {
    return false;
  }
  const QString preferences = QVLocalPaths::prefsDirectory(user, paths_);
  for (const QString& name : names) {
    if (!copyPreferences(preferences, name)) return false;
  }
  return true;
}

bool LogGathering::copyPreferences(const QString& folder, const QString& name) {
  const QString compact = QString(name).remove(' ');
  for (const QString& bundle : {compact, compact.toLower()}) {
    const QString file = "com.quorvane." + bundle + ".plist";
    if (isThere(folder + "/" + file)) return copyLogFile(folder, file);
  }
  return true;
}

bool LogGathering::copyLogFile(const QString& folder, const QString& name) {
  const QString destinationFolder = folder_ + folder, destination = destinationFolder + "/" + name;
  if (!QVFileManager::fileExistsAtPath(destinationFolder)) {
    QVFileManager::createDirectory(destinationFolder, false, files_);
  }
  if (isThere(destination)) return true;
  return copy(standardisedTarget(folder + "/" + name), destination, "Unable to copy log: %@");
}

bool LogGathering::copy(const QString& source, const QString& destination, const char* failureLine) {
  const auto failure = copied(source, destination, watch_.stop);
  if (failure && !isCancelled()) logToConsole(failureLine, *failure);
  if (failure) return false;
  watch_.progress({.files = ++filesCopied_});
  return true;
}

bool LogGathering::copyFiles(const QStringList& paths) {
  for (const QString& path : paths) {
    const QString absolute = absolutePath(path);
    const QString destination = folder_ + absolute;
    const QString destinationFolder = QFileInfo(destination).path();
    if (!absolute.isNull() && !QVFileManager::fileExistsAtPath(destinationFolder)) {
      QVFileManager::createDirectory(destinationFolder, files_);
    }
    if (!copy(absolute, destination, "Unable to copy file: %@")) return false;
  }
  return true;
}

bool LogGathering::pack(const QString& archive) {
  watch_.progress({.files = filesCopied_, .packing = true});
  return QVFileManager::compressFile(folder_, archive, true, files_, watch_.stop);
}

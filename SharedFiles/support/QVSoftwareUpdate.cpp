#include "SharedFiles/support/QVSoftwareUpdate.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/SharedSettings.h"
#include "SharedFiles/support/FileTrust.h"
#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

constexpr auto updaterName = "/Quorvane Software Update.app";

bool checksAtStartup(const PathPlatform& paths) {
  const QVariant value = SharedSettings::value(QStringLiteral("SUCheckAtStartup"), paths);
  return value.typeId() != QMetaType::Bool || value.toBool();
}

QString temporaryPath(const PathPlatform& paths) {
  return QVLocalPaths::tempDirectory(paths) + updaterName;
}

/// Takes the right to write from the group of everything in a tree, as far as that can be done, and gives it to the
/// owner of every folder: what he may not write to goes into no other folder and cannot be emptied.
void leaveToTheOwner(const QString& tree) {
  namespace fs = std::filesystem;
  const fs::path top(tree.toStdString());
  const auto leave = [](const fs::path& path) {
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) return;
    fs::permissions(path, fs::perms::group_write, fs::perm_options::remove, ignored);
    if (fs::is_directory(path, ignored)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ignored);
  };
  leave(top);
  std::error_code error;
  fs::recursive_directory_iterator entry(top, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) leave(entry->path());
}

/// The path of the copy. One copy is made at a time, in a folder of its own until the group can no longer change it.
QString copyToTemporaryFolder(const QString& updater, const PathPlatform& paths) {
  static std::mutex copying;
  const std::lock_guard guard(copying);
  const FileServices files = {.paths = paths};
  QString copy = temporaryPath(paths);
  if (QVFileManager::fileExistsAtPath(copy) || QFileInfo(copy).isSymLink()) {
    QVFileManager::removeFile(copy, false, files);
  }
  const QTemporaryDir own(QVLocalPaths::tempDirectory(paths) + QStringLiteral("/updater-XXXXXX"));
  const QString made = own.path() + updaterName;
  if (own.isValid() && QVFileManager::copyFile(updater, made, false, files)) {
    leaveToTheOwner(made);
    QVFileManager::moveFile(made, copy, false, files);
  }
  return copy;
}

/// Whether what stands at the updater's path may be started; the log tells why not. What is installed for the whole
/// machine may.
bool isTrusted(const QString& updater, const PathPlatform& paths) {
  if (updater != temporaryPath(paths) || isOutOfOthersReach(updater, paths.realUserId())) return true;
  QVLog::appendLog("Unable to launch Software Update - others could have changed %@", updater);
  return false;
}

}  // namespace

SoftwareUpdateServices SoftwareUpdateServices::standard() {
  return {.runTaskAndReturn = [](const QString& path,
                                 const QStringList& arguments) { QVTaskEx::runTaskAndReturn(path, arguments); },
          .openApplication = [](const QString& applicationPath) { ApplicationBundle(applicationPath).open({}); }};
}

QVSoftwareUpdate::QVSoftwareUpdate(Services services) : services_(std::move(services)) {}

QVSoftwareUpdate::~QVSoftwareUpdate() {
  for (std::thread& check : checks_) check.join();
}

void QVSoftwareUpdate::startup() {
  if (!checksAtStartup(services_.paths)) return;
  try {
    checks_.emplace_back([this] { automaticallyCheckForUpdates(services_); });
  } catch (const std::system_error& failure) {
    QVLog::appendLog("Unable to launch Software Update - %@", failure.what());
  }
}

QString QVSoftwareUpdate::updaterPath(const Services& services) {
  QString installed =
      QVLocalPaths::applicationDirectory(false, services.paths) + QStringLiteral("/Quorvane") + updaterName;
  if (QVFileManager::fileExistsAtPath(installed)) return installed;
  if (!services.hostBundle.isEmpty()) {
    for (const char* folder : {"/Contents/Resources", "/Contents/MacOS"}) {
      const QString bundled = services.hostBundle + folder + updaterName;
      if (QVFileManager::fileExistsAtPath(bundled)) return copyToTemporaryFolder(bundled, services.paths);
    }
  }
  QVLog::appendLogAndPrint("Error: unable to find software updater");
  return {};
}

bool QVSoftwareUpdate::launchSoftwareUpdate(const Services& services) {
  const QString path = updaterPath(services);
  if (path.isNull() || !QVFileManager::fileExistsAtPath(path)) {
    QVLog::appendLog("Unable to launch Software Update - path doesn't exist");
    return false;
  }
  if (!isTrusted(path, services.paths)) return false;
  services.openApplication(path);
  return true;
}

void QVSoftwareUpdate::automaticallyCheckForUpdates(const Services& services) {
  const QString path = updaterPath(services);
  if (path.isNull()) {
    QVLog::appendLog("Unable to launch Software Update - path doesn't exist");
    return;
  }
  if (!QFileInfo(path).isDir()) {
    QVLog::appendLog("Unable to launch Software Update - updater bundle not found.");
    return;
  }
  if (!isTrusted(path, services.paths)) return;
  const QString executable = ApplicationBundle(path).executable();
  if (executable.isNull() || !QVFileManager::fileExistsAtPath(executable)) {
    QVLog::appendLog("Unable to launch Software Update - executable path doesn't exist");
    return;
  }
  services.runTaskAndReturn(executable, {QStringLiteral("-checkpath"), services.hostBundle});
}

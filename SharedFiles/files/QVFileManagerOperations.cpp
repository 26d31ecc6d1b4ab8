#include <QCoreApplication>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

#include <sys/stat.h>

#include "SharedFiles/authorization/QVAuthorization.h"
#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

/// A path as text and as bytes, absolute. None, with the log line `refusal`, for a null or empty path.
struct OperationPath {
  QString text;
  std::string bytes;
};

template <typename... Arguments>
std::optional<OperationPath> operationPath(const QString& path, const char* refusal, const Arguments&... arguments) {
  if (path.isEmpty()) {
    QVLog::appendLog(refusal, arguments...);
    return std::nullopt;
  }
  const QString text = absolutePath(path);
  if (text.isNull()) return std::nullopt;
  return OperationPath{text, text.toStdString()};
}

/// What was done, or else what administrator rights do after the log line.
template <typename Privileged>
bool orAuthorized(bool done, bool shouldAuth, const char* line, const QString& path, const FileServices& services,
                  const Privileged& privileged) {
  if (done || !shouldAuth) return done;
  QVLog::appendLog(line, path);
  if (services.privileges != nullptr) return privileged(*services.privileges);
  return privileged(QVAuthorization::sharedController());
}

bool isProtected(const OperationPath& path, const FileServices& services) {
  return QVLocalPaths::isPathSystemDirectory(path.text, true, services.paths);
}

/// The trash folder, which is made for nobody else's eyes when it is missing.
std::optional<QString> trashFolder(const FileServices& services) {
  const QString folder = QVLocalPaths::trashDirectory(services.paths);
  const auto bytes = folder.isEmpty() ? std::nullopt : bytesOfPath(folder);
  if (!bytes || (::mkdir(bytes->c_str(), S_IRWXU) != 0 && errno != EEXIST)) return std::nullopt;
  return folder;
}

sys::Result<void> moveToTrash(const OperationPath& path, const QString& folder) {
  const QString name = path.text.mid(path.text.lastIndexOf('/') + 1);
  for (int attempt = 0;; ++attempt) {
    auto result = sys::moveTree(path.bytes, QVFileManager::uniqueFilename(folder + '/' + name).toStdString());
    // Somebody else may have taken the free name meanwhile.
    constexpr int enough = 100;
    if (result || result.error().code != EEXIST || attempt == enough) return result;
  }
}

bool trash(const OperationPath& path, const FileServices& services) {
  struct stat status = {};
  if (::lstat(path.bytes.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR)) return true;
  if (isProtected(path, services)) return false;
  if (!S_ISLNK(status.st_mode)) QVFileManager::unlockFile(path.text);
  const auto folder = trashFolder(services);
  return folder && moveToTrash(path, *folder);
}

using Seconds = std::chrono::duration<double>;

bool isOccupied(const QString& path) {
  return sys::standsAt(absolutePath(path).toStdString());
}

void passTurn() {
  constexpr Seconds onMainThread(0.01), elsewhere(0.3);
  const bool main = MainThread::isCurrent();
  if (main) QCoreApplication::processEvents();
  std::this_thread::sleep_for(main ? onMainThread : elsewhere);
}

/// Waits for the effect of an operation; whether it showed within so many seconds.
bool showsWithin(double timeout, const std::function<bool()>& effect) {
  const auto start = std::chrono::steady_clock::now();
  while (!effect()) {
    const Seconds passed = std::chrono::steady_clock::now() - start;
    if (!(passed.count() < timeout)) return false;
    passTurn();
  }
  return true;
}

}  // namespace

bool QVFileManager::trashFile(const QString& path, bool shouldAuth, const FileServices& services) {
  const auto given = operationPath(path, "Error trashing file: path is nil");
  return given && orAuthorized(trash(*given, services), shouldAuth, "Error trashing file: %@. Authorizing...", path,
                               services, [&](auto& rights) { return rights.authTrashFile(given->text); });
}

bool QVFileManager::removeFile(const QString& path, bool shouldAuth, const FileServices& services) {
  const auto given = operationPath(path, "Error removing file: path is nil");
  return given && orAuthorized(!isProtected(*given, services) && sys::removeTree(given->bytes), shouldAuth,
                               "Error removing file: %@. Authorizing...", path, services,
                               [&](auto& rights) { return rights.authRemoveFile(given->text); });
}

bool QVFileManager::createDirectory(const QString& path, bool shouldAuth, const FileServices& services) {
  const auto given = operationPath(path, "Error creating folder: path is nil");
  return given && orAuthorized(sys::createFolders(given->bytes).has_value(), shouldAuth,
                               "Error creating folder: %@. Authorizing...", path, services,
                               [&](auto& rights) { return rights.authCreateDir(given->text); });
}

bool QVFileManager::copyFile(const QString& source, const QString& destination, bool shouldAuth,
                             const FileServices& services) {
  const auto from = operationPath(source, "Error copying file: source path is nil");
  const auto to =
      from ? operationPath(destination, "Error copying file %@: destination path is nil", source) : std::nullopt;
  return to && orAuthorized(sys::copyTree(from->bytes, to->bytes).has_value(), shouldAuth,
                            "Error copying file: %@. Authorizing...", source, services,
                            [&](auto& rights) { return rights.authCopyFile(from->text, to->text); });
}

bool QVFileManager::moveFile(const QString& source, const QString& destination, bool shouldAuth,
                             const FileServices& services) {
  const auto from = operationPath(source, "Error moving file: source path is nil");
  const auto to =
      from ? operationPath(destination, "Error moving file %@: destination path is nil", source) : std::nullopt;
  if (!to) return false;
  sys::Result<void> moved = sys::failure(EPERM, sys::Step::Remove, from->bytes);
  if (!isProtected(*from, services)) moved = sys::moveTree(from->bytes, to->bytes);
  if (!moved && moved.error().what == sys::Step::RemoveOriginal) {
    QVLog::appendLog("File %@ was copied to %@, but could not be removed: %@", source, destination,
                     QString::fromLocal8Bit(std::strerror(moved.error().code)));
    return false;
  }
  return orAuthorized(moved.has_value(), shouldAuth, "Error moving file: %@. Authorizing...", source, services,
                      [&](auto& rights) { return rights.authMoveFile(from->text, to->text); });
}

bool QVFileManager::trashFile(const QString& path, const FileServices& services) {
  return trashFile(path, true, services);
}

bool QVFileManager::removeFile(const QString& path, const FileServices& services) {
  return removeFile(path, true, services);
}

bool QVFileManager::createDirectory(const QString& path, const FileServices& services) {
  return createDirectory(path, true, services);
}

bool QVFileManager::copyFile(const QString& source, const QString& destination, const FileServices& services) {
  return copyFile(source, destination, true, services);
}

bool QVFileManager::moveFile(const QString& source, const QString& destination, const FileServices& services) {
  return moveFile(source, destination, true, services);
}

bool QVFileManager::trashFile(const QString& path, double timeout, const FileServices& services) {
  return trashFile(path, services) && showsWithin(timeout, [&] { return !isOccupied(path); });
}

bool QVFileManager::removeFile(const QString& path, double timeout, const FileServices& services) {
  return removeFile(path, services) && showsWithin(timeout, [&] { return !isOccupied(path); });
}

bool QVFileManager::createDirectory(const QString& path, double timeout, const FileServices& services) {
  return createDirectory(path, services) &&
         showsWithin(timeout, [&] { return sys::isFolderAt(absolutePath(path).toStdString()); });
}

bool QVFileManager::copyFile(const QString& source, const QString& destination, double timeout,
                             const FileServices& services) {
  return copyFile(source, destination, services) && showsWithin(timeout, [&] { return isOccupied(destination); });
}

bool QVFileManager::moveFile(const QString& source, const QString& destination, double timeout,
                             const FileServices& services) {
  return moveFile(source, destination, services) &&
         showsWithin(timeout, [&] { return isOccupied(destination) && !isOccupied(source); });
}

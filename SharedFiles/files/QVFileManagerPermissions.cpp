#include <optional>
#include <string>

#include <sys/stat.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

constexpr mode_t permissionBits = 07777, writeBits = S_IWUSR | S_IWGRP | S_IWOTH;

}  // namespace

bool QVFileManager::lockFile(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  return permissions && setPermissions(*permissions & ~writeBits, path);
}

bool QVFileManager::unlockFile(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  if (!permissions) return false;
  return (*permissions & S_IWUSR) != 0 || setPermissions(*permissions | S_IWUSR, path);
}

bool QVFileManager::isFileLocked(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  return permissions && (*permissions & writeBits) == 0;
}

std::optional<mode_t> QVFileManager::permissionsOfFile(const QString& path) {
  const auto bytes = bytesOfPath(path);
  struct stat status = {};
  if (!bytes || ::stat(bytes->c_str(), &status) != 0) return std::nullopt;
  return status.st_mode & permissionBits;
}

bool QVFileManager::setPermissions(mode_t permissions, const QString& path) {
  const auto bytes = bytesOfPath(path);
  return bytes && ::chmod(bytes->c_str(), permissions & permissionBits) == 0;
}

bool QVFileManager::setOwner(const QString& owner, const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  if (file.isNull() || owner.isEmpty()) return false;
  const ToolCommand command = services.tools.changeOwner(owner, file);
  return QVTaskEx::terminationCodeFromTask(command.path, QStringList{"-h", "--"} + command.arguments) == 0;
}

#include "SharedFiles/support/FileTrust.h"

#include <filesystem>
#include <system_error>

#include <sys/stat.h>

#include "SharedFiles/tasks/FileNameBytes.h"

namespace {

namespace fs = std::filesystem;

constexpr int mostLinks = 40;

bool belongsTo(const struct stat& status, uid_t user) {
  return status.st_uid == user || status.st_uid == 0;
}

bool othersMayWrite(const struct stat& status) {
  return !S_ISLNK(status.st_mode) && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

bool isSharedFolder(const struct stat& status) {
  return S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
}

/// Looks at every folder and link on the way to a path, first to last, and at what stands there. A shared folder may
/// only be on the way.
bool leadsToTrusted(const fs::path& path, uid_t user, int linksLeft) {
  fs::path reached;
  struct stat status = {};
  for (const fs::path& name : path) {
    reached /= name;
    if (::lstat(reached.c_str(), &status) != 0 || !belongsTo(status, user)) return false;
    if (othersMayWrite(status) && !isSharedFolder(status)) return false;
    if (!S_ISLNK(status.st_mode)) continue;
    std::error_code unreadable;
    const fs::path target = fs::read_symlink(reached, unreadable);
    if (unreadable || linksLeft == 0) return false;
    if (!leadsToTrusted(reached.parent_path() / target, user, linksLeft - 1)) return false;
  }
  return !othersMayWrite(status);
}

}  // namespace

bool isOutOfOthersReach(const QString& path, uid_t user) {
  const auto bytes = bytesOfPath(path);
  if (!bytes || bytes->empty() || bytes->front() != '/') return false;
  const fs::path top(*bytes);
  if (!leadsToTrusted(top, user, mostLinks)) return false;
  std::error_code error;
  if (!fs::is_directory(top, error)) return !error;
  fs::recursive_directory_iterator entry(top, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (!leadsToTrusted(entry->path(), user, mostLinks)) return false;
  }
  return !error;
}

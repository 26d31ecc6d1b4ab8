#include "system/FileTreeRemoval.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "system/FileTreeCopy.h"

namespace sys {

namespace {

/// Whether this process may remove an entry that belongs to `owner` from the open folder. 0 or an errno.
int removalError(int folder, uid_t owner) {
  struct stat status = {};
  if (::fstat(folder, &status) != 0) return errno;
  if (::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) != 0) return errno;
  const uid_t user = ::geteuid();
  const bool mayRemove = (status.st_mode & S_ISVTX) == 0 || user == 0 || user == status.st_uid || user == owner;
  return mayRemove ? 0 : EPERM;
}

}  // namespace

Result<void> TreeRemoval::remove(const FilePlace& place) {
  TRY(const struct stat status, place.status());
  if (record_ != nullptr && !record_->holds(status)) return place.failed(EBUSY, Step::Remove);
  const bool folder = S_ISDIR(status.st_mode);
  if (folder) {
    // A folder that stays locked shows below, with the reason.
    if (permissions_ == Permissions::forced)
      static_cast<void>(::fchmodat(place.folder, place.name.c_str(), S_IRWXU, 0) == 0);
    TRY(removeEntries(place));
  }
  if (::unlinkat(place.folder, place.name.c_str(), folder ? AT_REMOVEDIR : 0) != 0)
    return place.failed(errno, Step::Remove);
  return {};
}

Result<void> TreeRemoval::removeEntries(const FilePlace& place) {
  const Descriptor folder = place.openFolder();
  // An empty folder can go even if nobody may look into it.
  if (!folder.isOpen()) return errno == EACCES ? Result<void>() : Result<void>(place.failed(errno, Step::Remove));
  TRY(const auto names, namesInFolder({folder.get(), place.path}));
  for (const std::string& name : names) TRY(remove(place.inside(folder.get(), name)));
  return {};
}

Result<void> checkRemoval(const FilePlace& place, const TreeRecord& record) {
  TRY(const struct stat status, place.status());
  if (!record.holds(status)) return place.failed(EBUSY, Step::Remove);
  if (!S_ISDIR(status.st_mode)) return {};
  const Descriptor folder = place.openFolder();
  if (!folder.isOpen()) return place.failed(errno, Step::Remove);
  TRY(const auto names, namesInFolder({folder.get(), place.path}));
  for (const std::string& name : names) {
    const FilePlace entry = place.inside(folder.get(), name);
    TRY(checkRemovalFromFolder(entry));
    TRY(checkRemoval(entry, record));
  }
  return {};
}

Result<void> checkRemovalFromFolder(const FilePlace& place) {
  TRY(const struct stat status, place.status());
  if (const int number = removalError(place.folder, status.st_uid)) return place.failed(number, Step::Remove);
  return {};
}

}  // namespace sys

#include "system/FileTreeCopy.h"

#include <array>
#include <cerrno>
#include <climits>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "system/FileAttributes.h"
#include "system/FileCopying.h"
#include "system/FileTreeRemoval.h"

namespace sys {

namespace {

/// What a file system tells late, it tells when a descriptor is closed.
int closingError(int file) {
  const int other = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
  return other < 0 || ::close(other) != 0 ? errno : 0;
}

/// Owner and times of what is reached by its name alone: a link or special file.
void copyOwnerAndTimes(const FilePlace& to, const struct stat& status) {
  if (::fchownat(to.folder, to.name.c_str(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW) != 0) {
    static_cast<void>(
        ::fchownat(to.folder, to.name.c_str(), static_cast<uid_t>(-1), status.st_gid, AT_SYMLINK_NOFOLLOW) == 0);
  }
  const struct timespec times[] = {status.st_atim, status.st_mtim};
  ::utimensat(to.folder, to.name.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

}  // namespace

bool TreeRecord::holds(const struct stat& status) const {
  const auto found = stamps_.find({status.st_dev, status.st_ino});
  return found != stamps_.end() && (S_ISDIR(status.st_mode) || found->second == stampOf(status));
}

/// What a copy still lacks when its content is there.
Result<void> TreeCopy::settle(FileRef from, FileRef to, const struct stat& status) const {
  TRY(inheritAttributes(from, to, status, Heir::Copy));
  if (durability_ != Durability::synced || ::fsync(to.descriptor) == 0) return {};
  return failure(errno, Step::Sync, std::string(to.path));
}

Result<void> TreeCopy::copy(const FilePlace& from, const FilePlace& to) {
  TRY(const struct stat status, from.status());
  if (stop_.stop_requested()) return from.failed(ECANCELED, Step::Copy);
  record_.add(status);
  if (S_ISDIR(status.st_mode)) return copyFolder(from, to, status);
  if (S_ISREG(status.st_mode)) return copyRegularFile(from, to, status);
  if (S_ISLNK(status.st_mode)) return copyLink(from, to, status);
  return copySpecialFile(from, to, status);
}

Result<void> TreeCopy::copyFolder(const FilePlace& from, const FilePlace& to, const struct stat& status) {
  const Descriptor source = from.openFolder();
  struct stat opened = {};
  if (!source.isOpen() || ::fstat(source.get(), &opened) != 0) return from.failed(errno, Step::Open);
  if (!isSameFile(status, opened)) return from.failed(EAGAIN, Step::Open);
  TRY(const auto names, namesInFolder({source.get(), from.path}));
  if (::mkdirat(to.folder, to.name.c_str(), S_IRWXU) != 0) return to.failed(errno, Step::Create);
  const Descriptor made = to.openFolder();
  if (!made.isOpen()) return to.failed(errno, Step::Create);
  for (const std::string& name : names) TRY(copy(from.inside(source.get(), name), to.inside(made.get(), name)));
  return settle({source.get(), from.path}, {made.get(), to.path}, status);
}

Result<void> TreeCopy::copyRegularFile(const FilePlace& from, const FilePlace& to, const struct stat& status) {
  // Should something else have taken the file's place, opening it neither waits nor follows.
  const Descriptor source(
      ::openat(from.folder, from.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat opened = {};
  if (!source.isOpen() || ::fstat(source.get(), &opened) != 0) return from.failed(errno, Step::Open);
  if (!isSameFile(status, opened)) return from.failed(EAGAIN, Step::Open);
  const Descriptor made(::openat(to.folder, to.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!made.isOpen()) return to.failed(errno, Step::Create);
  const FileRef original{source.get(), from.path}, copy{made.get(), to.path};
  TRY(copyContents(original, copy, stop_));
  TRY(settle(original, copy, status));
  if (const int number = closingError(made.get())) return to.failed(number, Step::Write);
  return {};
}

Result<void> TreeCopy::copyLink(const FilePlace& from, const FilePlace& to, const struct stat& status) {
  std::array<char, PATH_MAX + 1> target = {};
  const ssize_t length = ::readlinkat(from.folder, from.name.c_str(), target.data(), target.size() - 1);
  if (length < 0) return from.failed(errno, Step::Read);
  if (::symlinkat(target.data(), to.folder, to.name.c_str()) != 0) return to.failed(errno, Step::Create);
  copyOwnerAndTimes(to, status);
  return {};
}

Result<void> TreeCopy::copySpecialFile(const FilePlace& from, const FilePlace& to, const struct stat& status) {
  if (::mknodat(to.folder, to.name.c_str(), (status.st_mode & S_IFMT) | 0600U, status.st_rdev) != 0) {
    return from.failed(errno, Step::Create);
  }
  copyOwnerAndTimes(to, status);
  TRY(const struct stat own, to.status());
  const mode_t permissions = permissionsOfCopy(status, own.st_uid, own.st_gid);
  if (::fchmodat(to.folder, to.name.c_str(), permissions, 0) != 0) return to.failed(errno, Step::SetAttributes);
  return {};
}

Result<void> PendingCopy::allowed(const FilePlace& from, const FilePlace& to) {
  TRY(const struct stat source, from.status());
  if (to.status()) return to.failed(EEXIST, Step::Create);
  if (S_ISDIR(source.st_mode) && isInside(to.folder, source)) return to.failed(EINVAL, Step::Create);
  return {};
}

PendingCopy::PendingCopy(FilePlace to, TreeCopy::Durability durability, const std::stop_token& stop)
    : to_(std::move(to)), pending_(to_.beside(ownName("-copy"))), copy_(durability, stop) {}

PendingCopy::~PendingCopy() {
  if (made_) static_cast<void>(TreeRemoval(TreeRemoval::Permissions::forced).remove(pending_));
}

Result<void> PendingCopy::make(const FilePlace& from) {
  made_ = !pending_.status().has_value();
  if (!made_) return to_.failed(EEXIST, Step::Create);
  return copy_.copy(from, pending_);
}

Result<void> PendingCopy::reveal() {
  if (const int number = renameWithoutReplacing(pending_, to_)) return to_.failed(number, Step::Create);
  made_ = false;
  return {};
}

}  // namespace sys

#include "system/FileContents.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr off_t toTheEnd = std::numeric_limits<off_t>::max();

int writeAll(int to, const char* bytes, std::size_t count, off_t at) {
  while (count > 0) {
    const ssize_t written = ::pwrite(to, bytes, count, at);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes += written;
    count -= static_cast<std::size_t>(written);
    at += written;
  }
  return 0;
}

/// From an offset to another or to the end of the file, whichever comes first.
int copyThroughMemory(int from, int to, off_t at, off_t end, const std::stop_token& stop) {
  std::vector<char> block(std::size_t{256} << 10U);
  while (at < end) {
    if (stop.stop_requested()) return ECANCELED;
    const off_t wanted = std::min(end - at, static_cast<off_t>(block.size()));
    const ssize_t got = ::pread(from, block.data(), static_cast<std::size_t>(wanted), at);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) return 0;
    if (const int number = writeAll(to, block.data(), static_cast<std::size_t>(got), at)) return number;
    at += got;
  }
  return 0;
}

int copyRange(int from, int to, off_t at, off_t end, const std::stop_token& stop) {
  constexpr off_t piece = off_t{64} << 20U;
  off_t writeAt = at;
  while (at < end) {
    if (stop.stop_requested()) return ECANCELED;
    const auto count = static_cast<std::size_t>(std::min(end - at, piece));
    const ssize_t copied = ::copy_file_range(from, &at, to, &writeAt, count, 0);
    if (copied > 0 || (copied < 0 && errno == EINTR)) continue;
    if (copied < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG)) return errno;
    return copyThroughMemory(from, to, at, end, stop);  // not between these two, or the end of the file
  }
  return 0;
}

int copyAllButHoles(int from, int to, off_t size, const std::stop_token& stop) {
  for (off_t at = 0; at < size;) {
    off_t data = ::lseek(from, at, SEEK_DATA);
    if (data < 0 && errno == ENXIO) return 0;  // a hole up to the end
    if (data < 0) data = at;
    off_t hole = ::lseek(from, data, SEEK_HOLE);
    if (hole <= data) hole = size;
    if (const int number = copyRange(from, to, data, std::min(hole, size), stop)) return number;
    at = hole;
  }
  return 0;
}

std::vector<std::string> attributeNames(int file) {
  std::vector<char> list(static_cast<std::size_t>(std::max<ssize_t>(::flistxattr(file, nullptr, 0), 0)));
  const ssize_t length = list.empty() ? 0 : ::flistxattr(file, list.data(), list.size());
  std::vector<std::string> names;
  for (auto at = list.cbegin(); at < list.cbegin() + std::max<ssize_t>(length, 0);) {
    names.emplace_back(&*at);
    at += static_cast<std::ptrdiff_t>(names.back().size()) + 1;
  }
  return names;
}

void copyExtendedAttributes(int from, int to) {
  for (const std::string& name : attributeNames(from)) {
    const ssize_t size = ::fgetxattr(from, name.c_str(), nullptr, 0);
    if (size < 0) continue;
    std::vector<char> value(static_cast<std::size_t>(size));
    if (::fgetxattr(from, name.c_str(), value.data(), value.size()) != size) continue;
    ::fsetxattr(to, name.c_str(), value.data(), value.size(), 0);
  }
}

}  // namespace

int copyContents(int from, int to, const std::stop_token& stop) {
  struct stat before = {}, after = {};
  if (::fstat(from, &before) != 0) return errno;
  if (const int number = copyAllButHoles(from, to, before.st_size, stop)) return number;
  if (::fstat(from, &after) != 0) return errno;
  const off_t size = std::min(before.st_size, after.st_size);
  if (::ftruncate(to, size) != 0) return errno;
  // What has been added since; all of a file that does not tell its size.
  return copyThroughMemory(from, to, size, toTheEnd, stop);
}

mode_t permissionsOfCopy(const struct stat& original, uid_t owner, gid_t group) {
  mode_t permissions = original.st_mode & 07777U;
  if (owner != original.st_uid) permissions &= ~mode_t{S_ISUID};
  if (group != original.st_gid && !S_ISDIR(original.st_mode)) permissions &= ~mode_t{S_ISGID};
  return permissions;
}

int copyAttributes(int from, int to, const struct stat& status) {
  if (::fchown(to, status.st_uid, status.st_gid) != 0) {
    static_cast<void>(::fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0);
  }
  copyExtendedAttributes(from, to);
  struct stat own = {};
  if (::fstat(to, &own) != 0) return errno;
  if (::fchmod(to, permissionsOfCopy(status, own.st_uid, own.st_gid)) != 0) return errno;
  const struct timespec times[] = {status.st_atim, status.st_mtim};
  return ::futimens(to, times) == 0 ? 0 : errno;
}

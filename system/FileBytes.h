#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "system/Error.h"
#include "system/FileCalls.h"

namespace sys {

/// Makes a system call until no signal interrupts it.
template <typename Call>
auto untilUninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// An open file of the caller's, and the path that an error names.
struct FileRef {
  int descriptor = -1;
  std::string_view path;
};

/// Whether two looks were at one file.
inline bool isSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino && (one.st_mode & S_IFMT) == (other.st_mode & S_IFMT);
}

/// What the system tells of it.
Result<struct stat> statusOf(FileRef file, FileCalls& calls = systemCalls());

/// Fills the memory from a place in a file on, as far as the file reaches. How many bytes it was.
Result<std::size_t> readAt(FileRef file, std::uint64_t offset, std::span<std::uint8_t> bytes,
                           FileCalls& calls = systemCalls());

/// Writes all bytes to a place in a file.
Result<void> writeAt(FileRef file, std::uint64_t offset, std::span<const std::uint8_t> bytes,
                     FileCalls& calls = systemCalls());

// Below: at the descriptor's own position, for pipes and terminals too.

/// What one read gives, at most `count` bytes: 0 at the end, -1 and errno when it fails.
ssize_t readSome(int descriptor, void* bytes, std::size_t count);

/// Writes all bytes, and waits where others made the descriptor one that does not block. 0 or an errno.
int writeAll(int descriptor, std::string_view bytes);

}  // namespace sys

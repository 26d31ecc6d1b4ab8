#pragma once

#include <cstddef>

#include <sys/types.h>

namespace movie {

/// The system calls by which a new file is made and filled, each as its manual page has it: -1 and errno on failure,
/// short counts, EINTR. Tests stand between a copy and its file system here.
class CopyCalls {
 public:
  virtual ~CopyCalls() = default;
  /// openat.
  virtual int open(int folder, const char* name, int flags, mode_t mode) = 0;
  /// unlinkat.
  virtual int unlink(int folder, const char* name) = 0;
  /// Gives an open file that has no name a name.
  virtual int link(int file, int folder, const char* name) = 0;
  /// renameat2 within one folder.
  virtual int rename(int folder, const char* from, const char* to, unsigned flags) = 0;
  virtual int fchown(int file, uid_t owner, gid_t group) = 0;
  virtual int fchmod(int file, mode_t mode) = 0;
  virtual int fsetxattr(int file, const char* name, const void* value, std::size_t size) = 0;
  virtual int ftruncate(int file, off_t size) = 0;
  /// fallocate with FALLOC_FL_KEEP_SIZE.
  virtual int reserve(int file, off_t offset, off_t size) = 0;
  virtual ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) = 0;
  /// copy_file_range; does not move the offsets that it is given.
  virtual ssize_t copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) = 0;
  virtual int fsync(int file) = 0;
};

/// The system's own. Lives as long as the program; usable from several threads.
CopyCalls& systemCopyCalls();

}  // namespace movie

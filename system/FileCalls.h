#pragma once

#include <cstddef>

#include <sys/stat.h>
#include <sys/types.h>

namespace sys {

/// The system calls by which files are written, each as its manual page has it: -1 and errno on failure, short counts,
/// EINTR. This class makes the calls; tests stand between the program and its files by overriding them. Descriptors are
/// closed without it. Usable from several threads.
class FileCalls {
 public:
  virtual ~FileCalls() = default;
  /// openat.
  virtual int open(int folder, const char* name, int flags, mode_t mode);
  virtual int fstat(int file, struct stat* status);
  /// unlinkat, for what is no folder.
  virtual int unlink(int folder, const char* name);
  /// Gives an open file that has no name a name.
  virtual int link(int file, int folder, const char* name);
  /// renameat2 within one folder.
  virtual int rename(int folder, const char* from, const char* to, unsigned flags);
  virtual int fchown(int file, uid_t owner, gid_t group);
  virtual int fchmod(int file, mode_t mode);
  virtual int futimens(int file, const struct timespec times[2]);
  virtual int fsetxattr(int file, const char* name, const void* value, std::size_t size);
  virtual int ftruncate(int file, off_t size);
  /// fallocate with FALLOC_FL_KEEP_SIZE.
  virtual int reserve(int file, off_t offset, off_t size);
  virtual ssize_t pread(int file, void* bytes, std::size_t count, off_t offset);
  virtual ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset);
  /// copy_file_range; does not move the offsets that it is given.
  virtual ssize_t copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count);
  virtual int fsync(int file);
  /// An exclusive open-file-description lock on the whole file, without waiting; it goes with the descriptor.
  virtual int lock(int file);
  /// Takes a read lease and gives it back: EAGAIN where anybody has the file open for writing. `file` is open for
  /// reading only.
  virtual int probeLease(int file);
};

/// The system's own. Lives as long as the program.
FileCalls& systemCalls();

}  // namespace sys

#pragma once

#include <cstddef>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace sys {

/// The system calls by which files are written, each as its manual page has it: -1 and errno on failure, short counts,
/// EINTR. This class makes the calls; tests stand between the program and its files by overriding them. Descriptors are
/// closed without it. Usable from several threads.
class FileCalls {
 public:
  virtual ~FileCalls() = default;
  virtual int open(int folder, const char* name, int flags, mode_t mode) { return ::openat(folder, name, flags, mode); }
  virtual int fstat(int file, struct stat* status) { return ::fstat(file, status); }
  /// For what is no folder.
  virtual int unlink(int folder, const char* name) { return ::unlinkat(folder, name, 0); }
  /// Gives an open file that has no name a name.
  virtual int link(int file, int folder, const char* name);
  /// Within one folder.
  virtual int rename(int folder, const char* from, const char* to, unsigned flags) {
    return ::renameat2(folder, from, folder, to, flags);
  }
  virtual int fchown(int file, uid_t owner, gid_t group) { return ::fchown(file, owner, group); }
  virtual int fchmod(int file, mode_t mode) { return ::fchmod(file, mode); }
  virtual int futimens(int file, const struct timespec times[2]) { return ::futimens(file, times); }
  virtual int fsetxattr(int file, const char* name, const void* value, std::size_t size) {
    return ::fsetxattr(file, name, value, size, 0);
  }
  virtual int ftruncate(int file, off_t size) { return ::ftruncate(file, size); }
  virtual int reserve(int file, off_t offset, off_t size) {
    return ::fallocate(file, FALLOC_FL_KEEP_SIZE, offset, size);
  }
  virtual ssize_t pread(int file, void* bytes, std::size_t count, off_t offset) {
    return ::pread(file, bytes, count, offset);
  }
  virtual ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    return ::pwrite(file, bytes, count, offset);
  }
  /// Does not move the offsets that it is given.
  virtual ssize_t copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) {
    return ::copy_file_range(from, &fromOffset, to, &toOffset, count, 0);
  }
  virtual int fsync(int file) { return ::fsync(file); }
  /// An exclusive open-file-description lock on the whole file, without waiting; it goes with the descriptor.
  virtual int lock(int file);
  /// Takes a read lease and gives it back: EAGAIN where anybody has the file open for writing. `file` is open for
  /// reading only.
  virtual int probeLease(int file);
};

/// The system's own. Lives as long as the program.
FileCalls& systemCalls();

}  // namespace sys

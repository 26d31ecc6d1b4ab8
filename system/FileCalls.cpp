#include "system/FileCalls.h"

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <signal.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace sys {

int FileCalls::open(int folder, const char* name, int flags, mode_t mode) {
  return ::openat(folder, name, flags, mode);
}

int FileCalls::fstat(int file, struct stat* status) {
  return ::fstat(file, status);
}

int FileCalls::unlink(int folder, const char* name) {
  return ::unlinkat(folder, name, 0);
}

int FileCalls::link(int file, int folder, const char* name) {
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  return ::linkat(AT_FDCWD, path.c_str(), folder, name, AT_SYMLINK_FOLLOW);
}

int FileCalls::rename(int folder, const char* from, const char* to, unsigned flags) {
  return ::renameat2(folder, from, folder, to, flags);
}

int FileCalls::fchown(int file, uid_t owner, gid_t group) {
  return ::fchown(file, owner, group);
}

int FileCalls::fchmod(int file, mode_t mode) {
  return ::fchmod(file, mode);
}

int FileCalls::futimens(int file, const struct timespec times[2]) {
  return ::futimens(file, times);
}

int FileCalls::fsetxattr(int file, const char* name, const void* value, std::size_t size) {
  return ::fsetxattr(file, name, value, size, 0);
}

int FileCalls::ftruncate(int file, off_t size) {
  return ::ftruncate(file, size);
}

int FileCalls::reserve(int file, off_t offset, off_t size) {
  return ::fallocate(file, FALLOC_FL_KEEP_SIZE, offset, size);
}

ssize_t FileCalls::pread(int file, void* bytes, std::size_t count, off_t offset) {
  return ::pread(file, bytes, count, offset);
}

ssize_t FileCalls::pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
  return ::pwrite(file, bytes, count, offset);
}

ssize_t FileCalls::copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) {
  return ::copy_file_range(from, &fromOffset, to, &toOffset, count, 0);
}

int FileCalls::fsync(int file) {
  return ::fsync(file);
}

int FileCalls::lock(int file) {
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return ::fcntl(file, F_OFD_SETLK, &whole);
}

int FileCalls::probeLease(int file) {
  // A lease that is broken meanwhile must not end the program, as SIGIO would: SIGURG is ignored by default.
  ::fcntl(file, F_SETSIG, SIGURG);
  if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return -1;
  return ::fcntl(file, F_SETLEASE, F_UNLCK);
}

FileCalls& systemCalls() {
  static FileCalls calls;
  return calls;
}

}  // namespace sys

#include "movie/copy/CopyCalls.h"

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace movie {

namespace {

class SystemCopyCalls final : public CopyCalls {
 public:
  int open(int folder, const char* name, int flags, mode_t mode) override {
    return ::openat(folder, name, flags, mode);
  }
  int unlink(int folder, const char* name) override { return ::unlinkat(folder, name, 0); }
  int link(int file, int folder, const char* name) override {
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    return ::linkat(AT_FDCWD, path.c_str(), folder, name, AT_SYMLINK_FOLLOW);
  }
  int rename(int folder, const char* from, const char* to, unsigned flags) override {
    return ::renameat2(folder, from, folder, to, flags);
  }
  int fchown(int file, uid_t owner, gid_t group) override { return ::fchown(file, owner, group); }
  int fchmod(int file, mode_t mode) override { return ::fchmod(file, mode); }
  int fsetxattr(int file, const char* name, const void* value, std::size_t size) override {
    return ::fsetxattr(file, name, value, size, 0);
  }
  int ftruncate(int file, off_t size) override { return ::ftruncate(file, size); }
  int reserve(int file, off_t offset, off_t size) override {
    return ::fallocate(file, FALLOC_FL_KEEP_SIZE, offset, size);
  }
  ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) override {
    return ::pwrite(file, bytes, count, offset);
  }
  ssize_t copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) override {
    return ::copy_file_range(from, &fromOffset, to, &toOffset, count, 0);
  }
  int fsync(int file) override { return ::fsync(file); }
};

}  // namespace

CopyCalls& systemCopyCalls() {
  static SystemCopyCalls calls;
  return calls;
}

}  // namespace movie

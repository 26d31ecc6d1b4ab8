#pragma once

#include <functional>
#include <memory>

#include "system/FileCalls.h"

namespace sys::test {

/// System calls of which some fail, as a test says; what does not fail is done by other calls, the system's own or
/// simulated ones.
class FaultyCalls : public FileCalls {
 public:
  enum class Call {
    Open,
    OpenUnnamed,
    Status,
    Unlink,
    Link,
    Rename,
    Owner,
    Mode,
    Times,
    Attribute,
    Resize,
    Reserve,
    Read,
    Write,
    Copy,
    Sync,
    Lock,
    Lease
  };
  /// What a call does instead of its work.
  struct Fault {
    int error = 0;            ///< errno; 0 for none
    bool shortCount = false;  ///< a read, write or copy does half of it, at least a byte
  };
  using FaultOf = std::function<Fault(Call call, std::size_t number)>;

  explicit FaultyCalls(FaultOf fault = nullptr, FileCalls& real = systemCalls())
      : fault_(std::move(fault)), real_(&real) {}

  /// Asked at every call, with the number of the call, from 0 on.
  void failWith(FaultOf fault) { fault_ = std::move(fault); }
  std::size_t callCount() const { return count_; }
  /// As a disk does it: a write is cut short only where a sector of so many bytes ends, or not at all.
  void cutWritesAtSectors(std::size_t size) { sector_ = size; }

  int open(int folder, const char* name, int flags, mode_t mode) override;
  int fstat(int file, struct stat* status) override;
  int unlink(int folder, const char* name) override;
  int link(int file, int folder, const char* name) override;
  int rename(int folder, const char* from, const char* to, unsigned flags) override;
  int fchown(int file, uid_t owner, gid_t group) override;
  int fchmod(int file, mode_t mode) override;
  int futimens(int file, const struct timespec times[2]) override;
  int fsetxattr(int file, const char* name, const void* value, std::size_t size) override;
  int ftruncate(int file, off_t size) override;
  int reserve(int file, off_t offset, off_t size) override;
  ssize_t pread(int file, void* bytes, std::size_t count, off_t offset) override;
  ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) override;
  ssize_t copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) override;
  int fsync(int file) override;
  int lock(int file) override;
  int probeLease(int file) override;

 private:
  bool fails(Call call);
  std::size_t shortened(std::size_t count) const;
  std::size_t shortenedWrite(std::size_t count, std::size_t offset) const;

  FaultOf fault_;
  FileCalls* real_;
  Fault now_;
  std::size_t count_ = 0, sector_ = 0;
};

}  // namespace sys::test

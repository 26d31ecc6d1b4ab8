#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "movie/save/WritableFile.h"

namespace movie::test {

/// A file in memory behind the system calls of a save: keeps a log of what changes it, and fails where it is told to.
/// Any path leads to it.
class SimulatedFile final : public FileCalls {
 public:
  enum class Call { Open, Close, Status, Read, Write, Sync, Resize, Reserve, Times, Lock, Lease };
  /// Something that changed the file, or made what came before durable.
  struct Change {
    Call call = Call::Write;   ///< Write, Sync or Resize
    std::uint64_t offset = 0;  ///< of a write; the new length of a resize
    Bytes bytes;
  };
  /// What a call does instead of its work.
  struct Fault {
    int error = 0;            ///< errno; 0 for none
    bool shortCount = false;  ///< a read or write does half of it, at least a byte
  };

  SimulatedFile(Bytes content, const FileStamp& stamp) : content_(std::move(content)), stamp_(stamp) {}

  const Bytes& content() const { return content_; }
  const std::vector<Change>& changes() const { return changes_; }
  std::size_t callCount() const { return calls_; }
  std::size_t openDescriptors() const { return open_; }
  /// Asked at every call but close, with the number of the call, from 0 on.
  void failWith(std::function<Fault(Call, std::size_t)> fault) { fault_ = std::move(fault); }

  int open(const char* path, int flags) override;
  int close(int descriptor) override;
  int fstat(int descriptor, struct stat* status) override;
  ssize_t pread(int descriptor, void* bytes, std::size_t count, off_t offset) override;
  ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) override;
  int fsync(int descriptor) override;
  int ftruncate(int descriptor, off_t size) override;
  int reserve(int descriptor, off_t offset, off_t size) override;
  int futimens(int descriptor, const struct timespec times[2]) override;
  int lock(int descriptor) override;
  int probeLease(int descriptor) override;

 private:
  Fault faultOf(Call call);
  int plain(Call call);

  Bytes content_;
  FileStamp stamp_;
  std::vector<Change> changes_;
  std::size_t calls_ = 0;
  std::size_t open_ = 0;
  std::function<Fault(Call, std::size_t)> fault_;
};

}  // namespace movie::test

#include "tests/support/SimulatedFile.h"

#include <algorithm>
#include <utility>

#include <sys/mman.h>

namespace movie::test {

class SimulatedFile::Memory final : public sys::FileCalls {
 public:
  Memory(Bytes content, const FileStamp& stamp) : content_(std::move(content)), stamp_(stamp) {}

  const Bytes& content() const { return content_; }
  const std::vector<Change>& changes() const { return changes_; }
  /// A descriptor is a real one, of a file that nothing is in; its inode tells whether the number is still ours.
  std::size_t openDescriptors() const {
    return static_cast<std::size_t>(std::count_if(handedOut_.begin(), handedOut_.end(), [](const auto& each) {
      struct stat status {};
      return ::fstat(each.first, &status) == 0 && status.st_ino == each.second;
    }));
  }

  int open(int, const char*, int, mode_t) override {
    struct stat status {};
    const int descriptor = ::memfd_create("simulated", MFD_CLOEXEC);
    if (::fstat(descriptor, &status) == 0) handedOut_.emplace_back(descriptor, status.st_ino);
    return descriptor;
  }
  int fstat(int, struct stat* status) override {
    *status = {};
    status->st_dev = stamp_.device;
    status->st_ino = stamp_.inode;
    status->st_nlink = 1;
    status->st_mode = S_IFREG | 0644;
    status->st_size = static_cast<off_t>(content_.size());
    status->st_mtim.tv_sec = stamp_.modifiedSeconds;
    status->st_mtim.tv_nsec = stamp_.modifiedNanoseconds;
    return 0;
  }
  ssize_t pread(int, void* bytes, std::size_t count, off_t offset) override {
    const auto from = std::min(content_.size(), static_cast<std::size_t>(offset));
    const std::size_t length = std::min(count, content_.size() - from);
    std::copy_n(content_.begin() + static_cast<std::ptrdiff_t>(from), length, static_cast<std::uint8_t*>(bytes));
    return static_cast<ssize_t>(length);
  }
  ssize_t pwrite(int, const void* bytes, std::size_t count, off_t offset) override {
    const auto at = static_cast<std::size_t>(offset);
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    if (content_.size() < at + count) content_.resize(at + count);
    std::copy_n(from, count, content_.begin() + static_cast<std::ptrdiff_t>(at));
    changes_.push_back({Call::Write, at, Bytes(from, from + count)});
    return static_cast<ssize_t>(count);
  }
  int fsync(int) override {
    changes_.push_back({Call::Sync, 0, {}});
    return 0;
  }
  int ftruncate(int, off_t size) override {
    content_.resize(static_cast<std::size_t>(size));
    changes_.push_back({Call::Resize, static_cast<std::uint64_t>(size), {}});
    return 0;
  }
  int reserve(int, off_t, off_t) override { return 0; }
  int futimens(int, const struct timespec[2]) override { return 0; }
  int lock(int) override { return 0; }
  int probeLease(int) override { return 0; }

 private:
  Bytes content_;
  FileStamp stamp_;
  std::vector<Change> changes_;
  std::vector<std::pair<int, ino_t>> handedOut_;
};

SimulatedFile::SimulatedFile(Bytes content, const FileStamp& stamp)
    : SimulatedFile(std::make_unique<Memory>(std::move(content), stamp)) {}
SimulatedFile::SimulatedFile(std::unique_ptr<Memory> memory)
    : FaultyCalls(nullptr, *memory), memory_(std::move(memory)) {}
SimulatedFile::SimulatedFile(SimulatedFile&&) noexcept = default;
SimulatedFile::~SimulatedFile() = default;

const Bytes& SimulatedFile::content() const {
  return memory_->content();
}
const std::vector<SimulatedFile::Change>& SimulatedFile::changes() const {
  return memory_->changes();
}
std::size_t SimulatedFile::openDescriptors() const {
  return memory_->openDescriptors();
}

}  // namespace movie::test

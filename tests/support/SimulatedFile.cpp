#include "tests/support/SimulatedFile.h"

#include <algorithm>
#include <cerrno>

namespace movie::test {

SimulatedFile::Fault SimulatedFile::faultOf(Call call) {
  const std::size_t number = calls_++;
  return fault_ ? fault_(call, number) : Fault{};
}

int SimulatedFile::plain(Call call) {
  const Fault fault = faultOf(call);
  errno = fault.error;
  return fault.error == 0 ? 0 : -1;
}

int SimulatedFile::open(const char*, int) {
  if (plain(Call::Open) != 0) return -1;
  ++open_;
  return 1000;
}

int SimulatedFile::close(int) {
  --open_;
  return 0;
}

int SimulatedFile::fstat(int, struct stat* status) {
  if (plain(Call::Status) != 0) return -1;
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

ssize_t SimulatedFile::pread(int, void* bytes, std::size_t count, off_t offset) {
  const Fault fault = faultOf(Call::Read);
  errno = fault.error;
  if (fault.error != 0) return -1;
  const auto from = std::min(content_.size(), static_cast<std::size_t>(offset));
  std::size_t length = std::min(count, content_.size() - from);
  if (fault.shortCount) length = std::min(length, std::max<std::size_t>(1, length / 2));
  std::copy_n(content_.begin() + static_cast<std::ptrdiff_t>(from), length, static_cast<std::uint8_t*>(bytes));
  return static_cast<ssize_t>(length);
}

ssize_t SimulatedFile::pwrite(int, const void* bytes, std::size_t count, off_t offset) {
  const Fault fault = faultOf(Call::Write);
  errno = fault.error;
  if (fault.error != 0) return -1;
  const std::size_t length = fault.shortCount ? std::max<std::size_t>(1, count / 2) : count;
  const auto at = static_cast<std::size_t>(offset);
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  if (content_.size() < at + length) content_.resize(at + length);
  std::copy_n(from, length, content_.begin() + static_cast<std::ptrdiff_t>(at));
  changes_.push_back({Call::Write, at, Bytes(from, from + length)});
  return static_cast<ssize_t>(length);
}

int SimulatedFile::fsync(int) {
  if (plain(Call::Sync) != 0) return -1;
  changes_.push_back({Call::Sync, 0, {}});
  return 0;
}

int SimulatedFile::ftruncate(int, off_t size) {
  if (plain(Call::Resize) != 0) return -1;
  content_.resize(static_cast<std::size_t>(size));
  changes_.push_back({Call::Resize, static_cast<std::uint64_t>(size), {}});
  return 0;
}

int SimulatedFile::reserve(int, off_t, off_t) {
  return plain(Call::Reserve);
}

int SimulatedFile::futimens(int, const struct timespec[2]) {
  return plain(Call::Times);
}

int SimulatedFile::lock(int) {
  return plain(Call::Lock);
}

int SimulatedFile::probeLease(int) {
  return plain(Call::Lease);
}

}  // namespace movie::test

#include "tests/support/FaultyCalls.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>

namespace sys::test {

bool FaultyCalls::fails(Call call) {
  now_ = fault_ ? fault_(call, count_) : Fault{};
  ++count_;
  errno = now_.error;
  return now_.error != 0;
}

std::size_t FaultyCalls::shortened(std::size_t count) const {
  return now_.shortCount ? std::max<std::size_t>(1, count / 2) : count;
}

std::size_t FaultyCalls::shortenedWrite(std::size_t count, std::size_t offset) const {
  const std::size_t some = shortened(count);
  if (sector_ == 0 || some == count) return some;
  const std::size_t whole = (offset + some) / sector_ * sector_;
  const std::size_t end = whole > offset ? whole : whole + sector_;
  return std::min(count, end - offset);
}

int FaultyCalls::open(int folder, const char* name, int flags, mode_t mode) {
  const Call call = (flags & O_TMPFILE) == O_TMPFILE ? Call::OpenUnnamed : Call::Open;
  return fails(call) ? -1 : real_->open(folder, name, flags, mode);
}

int FaultyCalls::fstat(int file, struct stat* status) {
  return fails(Call::Status) ? -1 : real_->fstat(file, status);
}

int FaultyCalls::unlink(int folder, const char* name) {
  return fails(Call::Unlink) ? -1 : real_->unlink(folder, name);
}

int FaultyCalls::link(int file, int folder, const char* name) {
  return fails(Call::Link) ? -1 : real_->link(file, folder, name);
}

int FaultyCalls::rename(int folder, const char* from, const char* to, unsigned flags) {
  return fails(Call::Rename) ? -1 : real_->rename(folder, from, to, flags);
}

int FaultyCalls::fchown(int file, uid_t owner, gid_t group) {
  return fails(Call::Owner) ? -1 : real_->fchown(file, owner, group);
}

int FaultyCalls::fchmod(int file, mode_t mode) {
  return fails(Call::Mode) ? -1 : real_->fchmod(file, mode);
}

int FaultyCalls::futimens(int file, const struct timespec times[2]) {
  return fails(Call::Times) ? -1 : real_->futimens(file, times);
}

int FaultyCalls::fsetxattr(int file, const char* name, const void* value, std::size_t size) {
  return fails(Call::Attribute) ? -1 : real_->fsetxattr(file, name, value, size);
}

int FaultyCalls::ftruncate(int file, off_t size) {
  return fails(Call::Resize) ? -1 : real_->ftruncate(file, size);
}

int FaultyCalls::reserve(int file, off_t offset, off_t size) {
  return fails(Call::Reserve) ? -1 : real_->reserve(file, offset, size);
}

ssize_t FaultyCalls::pread(int file, void* bytes, std::size_t count, off_t offset) {
  return fails(Call::Read) ? -1 : real_->pread(file, bytes, shortened(count), offset);
}

ssize_t FaultyCalls::pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
  return fails(Call::Write)
             ? -1
             : real_->pwrite(file, bytes, shortenedWrite(count, static_cast<std::size_t>(offset)), offset);
}

ssize_t FaultyCalls::copyRange(int from, off_t fromOffset, int to, off_t toOffset, std::size_t count) {
  return fails(Call::Copy) ? -1 : real_->copyRange(from, fromOffset, to, toOffset, shortened(count));
}

int FaultyCalls::fsync(int file) {
  return fails(Call::Sync) ? -1 : real_->fsync(file);
}

int FaultyCalls::lock(int file) {
  return fails(Call::Lock) ? -1 : real_->lock(file);
}

int FaultyCalls::probeLease(int file) {
  return fails(Call::Lease) ? -1 : real_->probeLease(file);
}

}  // namespace sys::test

#include "movie/save/WritableFile.h"

#include <cerrno>

#include <fcntl.h>

namespace movie {

using sys::Step;
using sys::untilUninterrupted;

tl::unexpected<MovieError> WritableFile::failure(int code, Step what) const {
  return tl::make_unexpected(fromSystem(sys::Error{code, what, path_}, Access::Write));
}

Result<WritableFile> WritableFile::open(const std::string& path, sys::FileCalls& calls) {
  WritableFile file(path, calls);
  if (path.find('\0') != std::string::npos) return file.failure(ENOENT);
  TRY(file.probe());
  file.descriptor_ = file.opened(O_RDWR);
  if (!file.descriptor_.isOpen()) return file.failure(errno);
  TRY(const auto status, file.status());
  if (!S_ISREG(status.st_mode)) return failed(path, Reason::NotRegularFile);
  TRY(file.lock());
  return file;
}

sys::Descriptor WritableFile::opened(int access) const {
  const int flags = access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  return sys::Descriptor(untilUninterrupted([&] { return calls_->open(AT_FDCWD, path_.c_str(), flags, 0); }));
}

/// Our own descriptor for writing would make the lease fail, so this comes before it. Where leases cannot be had, for
/// another's file or on a network, nothing is known and nothing refused.
Result<void> WritableFile::probe() const {
  const sys::Descriptor reading = opened(O_RDONLY);
  if (!reading.isOpen()) return errno == EACCES ? Result<void>{} : failure(errno);
  const int result = untilUninterrupted([&] { return calls_->probeLease(reading.get()); });
  return result != 0 && errno == EAGAIN ? failure(EAGAIN) : Result<void>{};
}

Result<void> WritableFile::lock() {
  locked_ = untilUninterrupted([&] { return calls_->lock(descriptor_.get()); }) == 0;
  if (!locked_ && (errno == EAGAIN || errno == EACCES)) return failed(path_, Reason::BeingSaved);
  return {};
}

Result<struct stat> WritableFile::status() const {
  return fromSystem(sys::statusOf(ref(), *calls_), Access::Write);
}

Result<FileStamp> WritableFile::stamp() const {
  TRY(const auto now, status());
  return stampOf(now);
}

Result<std::uint64_t> WritableFile::names() const {
  TRY(const auto now, status());
  return static_cast<std::uint64_t>(now.st_nlink);
}

Result<std::size_t> WritableFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  return fromSystem(sys::readAt(ref(), offset, bytes, *calls_), Access::Write);
}

Result<Bytes> WritableFile::read(std::uint64_t offset, std::size_t count) const {
  Bytes bytes(count);
  TRY(const auto done, read(offset, std::span(bytes)));
  bytes.resize(done);
  return bytes;
}

Result<void> WritableFile::write(std::uint64_t offset, ByteView bytes) {
  if (media_.overlaps(offset, offset + bytes.size())) return failed(path_, Reason::WriteHeldBack, {}, offset);
  return fromSystem(sys::writeAt(ref(), offset, bytes, *calls_), Access::Write);
}

Result<void> WritableFile::sync() {
  const int result = untilUninterrupted([&] { return calls_->fsync(descriptor_.get()); });
  return result == 0 ? Result<void>{} : failure(errno, Step::Sync);
}

Result<void> WritableFile::resize(std::uint64_t size) {
  if (media_.end() > size) return failed(path_, Reason::CutHeldBack, {}, size);
  const int result = untilUninterrupted([&] { return calls_->ftruncate(descriptor_.get(), static_cast<off_t>(size)); });
  return result == 0 ? Result<void>{} : failure(errno, Step::Resize);
}

Result<void> WritableFile::restoreTime(const FileStamp& stamp) {
  struct timespec times[2]{};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = stamp.modifiedSeconds;
  times[1].tv_nsec = stamp.modifiedNanoseconds;
  const int result = untilUninterrupted([&] { return calls_->futimens(descriptor_.get(), times); });
  return result == 0 ? Result<void>{} : failure(errno, Step::SetAttributes);
}

Result<WritableFile::Reservation> WritableFile::reserve(std::uint64_t offset, std::uint64_t size) {
  const int result = untilUninterrupted(
      [&] { return calls_->reserve(descriptor_.get(), static_cast<off_t>(offset), static_cast<off_t>(size)); });
  if (result == 0) return Reservation::Made;
  if (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL) return Reservation::Unsupported;
  return failure(errno, Step::Reserve);
}

}  // namespace movie

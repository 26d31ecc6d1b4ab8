#include "movie/atoms/ReadableFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>

namespace movie {

namespace {

/// Of a failed system call, `number` being errno.
tl::unexpected<MovieError> failure(const std::string& path, int number) {
  return failed(path, systemReason(number, Access::Read));
}

Result<void> refuseUnlessRegular(const std::string& path, mode_t mode) {
  if (S_ISREG(mode)) return {};
  return failed(path, S_ISDIR(mode) ? Reason::IsFolder : Reason::NotRegularFile);
}

}  // namespace

FileStamp stampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
          status.st_mtim.tv_nsec};
}

Result<ReadableFile> ReadableFile::open(const std::string& path) {
  if (path.find('\0') != std::string::npos) return failed(path, Reason::ZeroByteInName);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return failure(path, errno);
  TRY(refuseUnlessRegular(path, status.st_mode));

  ReadableFile file;
  file.path_ = path;
  file.descriptor_ = sys::Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  // What the name leads to can have changed since.
  if (!file.descriptor_.isOpen() || ::fstat(file.descriptor(), &status) != 0) return failure(path, errno);
  TRY(refuseUnlessRegular(path, status.st_mode));
  file.stamp_ = stampOf(status);
  return file;
}

bool ReadableFile::isAsOpened() const {
  struct stat now {};
  return ::fstat(descriptor(), &now) == 0 && stampOf(now) == stamp_;
}

Result<Bytes> ReadableFile::read(std::uint64_t offset, std::size_t count) const {
  if (offset >= size()) return Bytes{};
  Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(count, size() - offset)));
  TRY(const auto done, read(offset, std::span(bytes)));
  bytes.resize(done);
  return bytes;
}

Result<std::size_t> ReadableFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  return fromSystem(sys::readAt(ref(), offset, bytes), Access::Read);
}

}  // namespace movie

#include "movie/atoms/ReadableFile.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace movie {

namespace {

std::string reasonOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "there is no such file";
    case EACCES:
    case EPERM:
      return "there is no permission to read the file";
    default:
      return "the system says \"" + std::generic_category().message(error) + "\"";
  }
}

/// Why a file of that mode is no movie; empty for a regular file.
std::string refusalOf(mode_t mode) {
  if (S_ISREG(mode)) return {};
  return S_ISDIR(mode) ? "it is a folder" : "it is not a regular file";
}

tl::unexpected<MovieError> failure(const std::string& path, std::string reason) {
  return tl::make_unexpected(MovieError{path, {}, 0, std::move(reason)});
}

}  // namespace

Result<ReadableFile> ReadableFile::open(const std::string& path) {
  if (path.find('\0') != std::string::npos) return failure(path, "a file name cannot hold a zero byte");
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return failure(path, reasonOf(errno));
  if (auto refusal = refusalOf(status.st_mode); !refusal.empty()) return failure(path, std::move(refusal));

  ReadableFile file;
  file.path_ = path;
  file.descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  // What the name leads to can have changed since.
  if (file.descriptor_ < 0 || ::fstat(file.descriptor_, &status) != 0) return failure(path, reasonOf(errno));
  if (auto refusal = refusalOf(status.st_mode); !refusal.empty()) return failure(path, std::move(refusal));
  file.size_ = static_cast<std::uint64_t>(status.st_size);
  return file;
}

ReadableFile::~ReadableFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

ReadableFile::ReadableFile(ReadableFile&& other) noexcept {
  *this = std::move(other);
}

ReadableFile& ReadableFile::operator=(ReadableFile&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(descriptor_, other.descriptor_);
  std::swap(size_, other.size_);
  return *this;
}

Result<Bytes> ReadableFile::read(std::uint64_t offset, std::size_t count) const {
  if (offset >= size_) return Bytes{};
  Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset)));
  const auto done = read(offset, std::span(bytes));
  if (!done) return tl::make_unexpected(done.error());
  bytes.resize(*done);
  return bytes;
}

Result<std::size_t> ReadableFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got =
        ::pread(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return failure(path_, reasonOf(errno));
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

}  // namespace movie

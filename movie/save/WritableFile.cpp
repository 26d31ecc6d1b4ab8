#include "movie/save/WritableFile.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace movie {

namespace {

class SystemFileCalls final : public FileCalls {
 public:
  int open(const char* path, int flags) override { return ::open(path, flags); }
  int close(int descriptor) override { return ::close(descriptor); }
  int fstat(int descriptor, struct stat* status) override { return ::fstat(descriptor, status); }
  ssize_t pread(int descriptor, void* bytes, std::size_t count, off_t offset) override {
    return ::pread(descriptor, bytes, count, offset);
  }
  ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) override {
    return ::pwrite(descriptor, bytes, count, offset);
  }
  int fsync(int descriptor) override { return ::fsync(descriptor); }
  int ftruncate(int descriptor, off_t size) override { return ::ftruncate(descriptor, size); }
  int reserve(int descriptor, off_t offset, off_t size) override {
    return ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, offset, size);
  }
  int futimens(int descriptor, const struct timespec times[2]) override { return ::futimens(descriptor, times); }
  int lock(int descriptor) override {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return ::fcntl(descriptor, F_OFD_SETLK, &whole);
  }
  int probeLease(int descriptor) override {
    // A lease that is broken meanwhile must not end the program, as SIGIO would: SIGURG is ignored by default.
    ::fcntl(descriptor, F_SETSIG, SIGURG);
    if (::fcntl(descriptor, F_SETLEASE, F_RDLCK) != 0) return -1;
    return ::fcntl(descriptor, F_SETLEASE, F_UNLCK);
  }
};

constexpr int openFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

std::string clauseOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "there is no such file";
    case EACCES:
    case EPERM:
      return "there is no permission to write the file";
    case EROFS:
      return "the file system is read-only";
    case ENOSPC:
      return "the disk is full";
    case EDQUOT:
      return "the disk quota is used up";
    case EFBIG:
      return "the file would become larger than is allowed";
    case EISDIR:
      return "it is a folder";
    case ETXTBSY:
    case EAGAIN:
      return "another program has the file open for writing";
    default:
      return "the system says \"" + std::generic_category().message(error) + "\"";
  }
}

template <typename Call>
auto untilUninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace

FileCalls& systemFileCalls() {
  static SystemFileCalls calls;
  return calls;
}

tl::unexpected<MovieError> WritableFile::failure(int error, const char* doing) const {
  std::string reason = clauseOf(error);
  if (*doing != 0) reason += std::string(" (") + doing + ")";
  return tl::make_unexpected(MovieError{path_, {}, 0, std::move(reason)});
}

Result<WritableFile> WritableFile::open(const std::string& path, FileCalls& calls) {
  WritableFile file(path, calls);
  if (path.find('\0') != std::string::npos) return file.failure(ENOENT, "");
  if (auto status = file.probe(); !status) return tl::make_unexpected(status.error());
  file.descriptor_ = untilUninterrupted([&] { return calls.open(path.c_str(), O_RDWR | openFlags); });
  if (file.descriptor_ < 0) return file.failure(errno, "");
  const auto status = file.status();
  if (!status) return tl::make_unexpected(status.error());
  if (!S_ISREG(status->st_mode)) {
    return tl::make_unexpected(MovieError{path, {}, 0, "it is not a regular file"});
  }
  if (auto locked = file.lock(); !locked) return tl::make_unexpected(locked.error());
  return file;
}

/// Our own descriptor for writing would make the lease fail, so this comes before it. Where leases cannot be had, for
/// another's file or on a network, nothing is known and nothing refused.
Result<void> WritableFile::probe() const {
  const int descriptor = untilUninterrupted([&] { return calls_->open(path_.c_str(), O_RDONLY | openFlags); });
  if (descriptor < 0) return errno == EACCES ? Result<void>{} : failure(errno, "");
  const int result = untilUninterrupted([&] { return calls_->probeLease(descriptor); });
  const int error = errno;
  calls_->close(descriptor);
  if (result != 0 && error == EAGAIN) return failure(EAGAIN, "");
  return {};
}

Result<void> WritableFile::lock() {
  const int result = untilUninterrupted([&] { return calls_->lock(descriptor_); });
  locked_ = result == 0;
  if (!locked_ && (errno == EAGAIN || errno == EACCES)) {
    return tl::make_unexpected(MovieError{path_, {}, 0, "another program is saving the file, or has locked it"});
  }
  return {};
}

WritableFile::~WritableFile() {
  if (descriptor_ >= 0) calls_->close(descriptor_);
}

WritableFile::WritableFile(WritableFile&& other) noexcept
    : path_(std::move(other.path_)),
      calls_(other.calls_),
      descriptor_(std::exchange(other.descriptor_, -1)),
      locked_(other.locked_),
      media_(std::move(other.media_)) {}

Result<struct stat> WritableFile::status() const {
  struct stat status {};
  if (untilUninterrupted([&] { return calls_->fstat(descriptor_, &status); }) != 0) {
    return failure(errno, "looking at the file");
  }
  return status;
}

Result<FileStamp> WritableFile::stamp() const {
  const auto now = status();
  if (!now) return tl::make_unexpected(now.error());
  return FileStamp{now->st_dev, now->st_ino, static_cast<std::uint64_t>(now->st_size), now->st_mtim.tv_sec,
                   now->st_mtim.tv_nsec};
}

Result<std::uint64_t> WritableFile::names() const {
  const auto now = status();
  if (!now) return tl::make_unexpected(now.error());
  return static_cast<std::uint64_t>(now->st_nlink);
}

Result<std::size_t> WritableFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = untilUninterrupted([&] {
      return calls_->pread(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
    if (got < 0) return failure(errno, "reading the file");
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

Result<Bytes> WritableFile::read(std::uint64_t offset, std::size_t count) const {
  Bytes bytes(count);
  const auto done = read(offset, std::span(bytes));
  if (!done) return tl::make_unexpected(done.error());
  bytes.resize(*done);
  return bytes;
}

Result<void> WritableFile::write(std::uint64_t offset, ByteView bytes) {
  if (media_.overlaps(offset, offset + bytes.size())) {
    return tl::make_unexpected(MovieError{path_, {}, offset, "a write that would reach media data was held back"});
  }
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t wrote = untilUninterrupted([&] {
      return calls_->pwrite(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
    if (wrote < 0) return failure(errno, "writing the file");
    if (wrote == 0) return failure(EIO, "writing the file");
    done += static_cast<std::size_t>(wrote);
  }
  return {};
}

Result<void> WritableFile::sync() {
  if (untilUninterrupted([&] { return calls_->fsync(descriptor_); }) != 0) {
    return failure(errno, "bringing the file onto the disk");
  }
  return {};
}

Result<void> WritableFile::resize(std::uint64_t size) {
  if (media_.end() > size) {
    return tl::make_unexpected(MovieError{path_, {}, size, "a cut that would reach media data was held back"});
  }
  const auto end = static_cast<off_t>(size);
  if (untilUninterrupted([&] { return calls_->ftruncate(descriptor_, end); }) != 0) {
    return failure(errno, "setting the length of the file");
  }
  return {};
}

Result<void> WritableFile::restoreTime(const FileStamp& stamp) {
  struct timespec times[2]{};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = stamp.modifiedSeconds;
  times[1].tv_nsec = stamp.modifiedNanoseconds;
  if (untilUninterrupted([&] { return calls_->futimens(descriptor_, times); }) != 0) {
    return failure(errno, "setting the time of modification");
  }
  return {};
}

Result<WritableFile::Reservation> WritableFile::reserve(std::uint64_t offset, std::uint64_t size) {
  const auto begin = static_cast<off_t>(offset);
  const int result = untilUninterrupted([&] { return calls_->reserve(descriptor_, begin, static_cast<off_t>(size)); });
  if (result == 0) return Reservation::Made;
  if (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL) return Reservation::Unsupported;
  return failure(errno, "reserving room");
}

}  // namespace movie

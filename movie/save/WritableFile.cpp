#include "movie/save/WritableFile.h"

#include <algorithm>
#include <cerrno>
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

tl::unexpected<MovieError> WritableFile::failure(int error) const {
  return failed(path_, systemReason(error, Access::Write));
}

tl::unexpected<MovieError> WritableFile::failure(int error, Reason doing) const {
  return failed(path_, {Reason::Meanwhile, {systemReason(error, Access::Write), doing}});
}

Result<WritableFile> WritableFile::open(const std::string& path, FileCalls& calls) {
  WritableFile file(path, calls);
  if (path.find('\0') != std::string::npos) return file.failure(ENOENT);
  TRY(file.probe());
  file.descriptor_ = untilUninterrupted([&] { return calls.open(path.c_str(), O_RDWR | openFlags); });
  if (file.descriptor_ < 0) return file.failure(errno);
  TRY(const auto status, file.status());
  if (!S_ISREG(status.st_mode)) return failed(path, Reason::NotRegularFile);
  TRY(file.lock());
  return file;
}

/// Our own descriptor for writing would make the lease fail, so this comes before it. Where leases cannot be had, for
/// another's file or on a network, nothing is known and nothing refused.
Result<void> WritableFile::probe() const {
  const int descriptor = untilUninterrupted([&] { return calls_->open(path_.c_str(), O_RDONLY | openFlags); });
  if (descriptor < 0) return errno == EACCES ? Result<void>{} : failure(errno);
  const int result = untilUninterrupted([&] { return calls_->probeLease(descriptor); });
  const int error = errno;
  calls_->close(descriptor);
  if (result != 0 && error == EAGAIN) return failure(EAGAIN);
  return {};
}

Result<void> WritableFile::lock() {
  const int result = untilUninterrupted([&] { return calls_->lock(descriptor_); });
  locked_ = result == 0;
  if (!locked_ && (errno == EAGAIN || errno == EACCES)) return failed(path_, Reason::BeingSaved);
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
    return failure(errno, Reason::LookingAtFile);
  }
  return status;
}

Result<FileStamp> WritableFile::stamp() const {
  TRY(const auto now, status());
  return FileStamp{now.st_dev, now.st_ino, static_cast<std::uint64_t>(now.st_size), now.st_mtim.tv_sec,
                   now.st_mtim.tv_nsec};
}

Result<std::uint64_t> WritableFile::names() const {
  TRY(const auto now, status());
  return static_cast<std::uint64_t>(now.st_nlink);
}

Result<std::size_t> WritableFile::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = untilUninterrupted([&] {
      return calls_->pread(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
    if (got < 0) return failure(errno, Reason::ReadingFile);
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

Result<Bytes> WritableFile::read(std::uint64_t offset, std::size_t count) const {
  Bytes bytes(count);
  TRY(const auto done, read(offset, std::span(bytes)));
  bytes.resize(done);
  return bytes;
}

Result<void> WritableFile::write(std::uint64_t offset, ByteView bytes) {
  if (media_.overlaps(offset, offset + bytes.size())) return failed(path_, Reason::WriteHeldBack, {}, offset);
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t wrote = untilUninterrupted([&] {
      return calls_->pwrite(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
    if (wrote < 0) return failure(errno, Reason::WritingFile);
    if (wrote == 0) return failure(EIO, Reason::WritingFile);
    done += static_cast<std::size_t>(wrote);
  }
  return {};
}

Result<void> WritableFile::sync() {
  if (untilUninterrupted([&] { return calls_->fsync(descriptor_); }) != 0) return failure(errno, Reason::SyncingFile);
  return {};
}

Result<void> WritableFile::resize(std::uint64_t size) {
  if (media_.end() > size) return failed(path_, Reason::CutHeldBack, {}, size);
  const auto end = static_cast<off_t>(size);
  if (untilUninterrupted([&] { return calls_->ftruncate(descriptor_, end); }) != 0) {
    return failure(errno, Reason::SettingLength);
  }
  return {};
}

Result<void> WritableFile::restoreTime(const FileStamp& stamp) {
  struct timespec times[2]{};
  times[0].tv_nsec = UTIME_OMIT;
  times[1].tv_sec = stamp.modifiedSeconds;
  times[1].tv_nsec = stamp.modifiedNanoseconds;
  if (untilUninterrupted([&] { return calls_->futimens(descriptor_, times); }) != 0) {
    return failure(errno, Reason::SettingTime);
  }
  return {};
}

Result<WritableFile::Reservation> WritableFile::reserve(std::uint64_t offset, std::uint64_t size) {
  const auto begin = static_cast<off_t>(offset);
  const int result = untilUninterrupted([&] { return calls_->reserve(descriptor_, begin, static_cast<off_t>(size)); });
  if (result == 0) return Reservation::Made;
  if (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL) return Reservation::Unsupported;
  return failure(errno, Reason::ReservingRoom);
}

}  // namespace movie

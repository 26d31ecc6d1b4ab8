#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieFile.h"
#include "movie/save/MediaExtents.h"

namespace movie {

/// The system calls that a save makes, each as its manual page has it: -1 and errno on failure, short counts, EINTR.
/// Tests stand between a save and its file here.
class FileCalls {
 public:
  virtual ~FileCalls() = default;
  virtual int open(const char* path, int flags) = 0;
  virtual int close(int descriptor) = 0;
  virtual int fstat(int descriptor, struct stat* status) = 0;
  virtual ssize_t pread(int descriptor, void* bytes, std::size_t count, off_t offset) = 0;
  virtual ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) = 0;
  virtual int fsync(int descriptor) = 0;
  virtual int ftruncate(int descriptor, off_t size) = 0;
  /// fallocate with FALLOC_FL_KEEP_SIZE.
  virtual int reserve(int descriptor, off_t offset, off_t size) = 0;
  virtual int futimens(int descriptor, const struct timespec times[2]) = 0;
  /// An exclusive open-file-description lock on the whole file, without waiting; it goes with the descriptor.
  virtual int lock(int descriptor) = 0;
  /// Takes a read lease and gives it back: EAGAIN where anybody has the file open for writing. `descriptor` is open for
  /// reading only.
  virtual int probeLease(int descriptor) = 0;
};

/// The system's own. Lives as long as the program; usable from several threads.
FileCalls& systemFileCalls();

/// A regular file that is open for reading and writing, locked where its file system has locks, and not open for
/// writing anywhere else as far as the system tells. Interrupted and short reads and writes go on. Used by one thread.
class WritableFile {
 public:
  /// Follows links. Errors: what the name leads to is no regular file, may not be written, is being written or saved by
  /// somebody else.
  static Result<WritableFile> open(const std::string& path, FileCalls& calls);

  ~WritableFile();
  WritableFile(WritableFile&& other) noexcept;
  WritableFile& operator=(WritableFile&&) = delete;
  WritableFile(const WritableFile&) = delete;
  WritableFile& operator=(const WritableFile&) = delete;

  const std::string& path() const { return path_; }
  bool isLocked() const { return locked_; }  ///< false where the file system has no locks

  Result<FileStamp> stamp() const;
  Result<std::uint64_t> names() const;  ///< how many the file has

  /// As many bytes as the file has from there on.
  Result<std::size_t> read(std::uint64_t offset, std::span<std::uint8_t> bytes) const;
  Result<Bytes> read(std::uint64_t offset, std::size_t count) const;

  /// From now on a write or a cut that would reach any of these bytes fails, with nothing done.
  void protect(MediaExtents media) { media_ = std::move(media); }

  Result<void> write(std::uint64_t offset, ByteView bytes);
  Result<void> sync();
  Result<void> resize(std::uint64_t size);

  /// Gives the file the time of modification that a stamp has.
  Result<void> restoreTime(const FileStamp& stamp);

  enum class Reservation { Made, Unsupported };
  /// Room on the disk behind the end of the file, without making it longer.
  Result<Reservation> reserve(std::uint64_t offset, std::uint64_t size);

 private:
  WritableFile(std::string path, FileCalls& calls) : path_(std::move(path)), calls_(&calls) {}
  tl::unexpected<MovieError> failure(int error) const;
  tl::unexpected<MovieError> failure(int error, Reason doing) const;
  Result<struct stat> status() const;
  Result<void> probe() const;
  Result<void> lock();

  std::string path_;
  FileCalls* calls_;
  int descriptor_ = -1;
  bool locked_ = false;
  MediaExtents media_;
};

}  // namespace movie

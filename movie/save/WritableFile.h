#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <sys/types.h>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/ReadableFile.h"
#include "movie/save/MediaExtents.h"
#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace movie {

/// A regular file that is open for reading and writing, locked where its file system has locks, and not open for
/// writing anywhere else as far as the system tells. Interrupted and short reads and writes go on. Used by one thread.
class WritableFile {
 public:
  /// Follows links. Errors: what the name leads to is no regular file, may not be written, is being written or saved by
  /// somebody else.
  static Result<WritableFile> open(const std::string& path, sys::FileCalls& calls);

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
  WritableFile(std::string path, sys::FileCalls& calls) : path_(std::move(path)), calls_(&calls) {}
  sys::FileRef ref() const { return {descriptor_.get(), path_}; }
  tl::unexpected<MovieError> failure(int code, sys::Step what = sys::Step::OpenToWrite) const;
  sys::Descriptor opened(int access) const;
  Result<struct stat> status() const;
  Result<void> probe() const;
  Result<void> lock();

  std::string path_;
  sys::FileCalls* calls_;
  sys::Descriptor descriptor_;
  bool locked_ = false;
  MediaExtents media_;
};

}  // namespace movie

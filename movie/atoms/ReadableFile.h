#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include <sys/stat.h>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"
#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace movie {

/// Which file it was and how it stood, to tell whether it is still that one.
struct FileStamp {
  std::uint64_t device = 0, inode = 0;
  std::uint64_t size = 0;
  std::int64_t modifiedSeconds = 0, modifiedNanoseconds = 0;

  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

FileStamp stampOf(const struct stat& status);

/// A regular file, open for reading. The descriptor's own position is never used, so that several threads may read.
class ReadableFile {
 public:
  /// Never blocks and never opens anything but a regular file: a named pipe or a device is refused unopened.
  static Result<ReadableFile> open(const std::string& path);

  const std::string& path() const { return path_; }
  int descriptor() const { return descriptor_.get(); }
  sys::FileRef ref() const { return {descriptor(), path_}; }
  const FileStamp& stamp() const { return stamp_; }   ///< of when it was opened
  bool isAsOpened() const;                            ///< its stamp is that still
  std::uint64_t size() const { return stamp_.size; }  ///< bytes, when it was opened

  /// As many of `count` bytes from `offset` on as the file has; fewer at its end. Allocates no more than size() asks
  /// for.
  Result<Bytes> read(std::uint64_t offset, std::size_t count) const;
  /// Into memory that is there; how many bytes it was.
  Result<std::size_t> read(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

 private:
  std::string path_;
  sys::Descriptor descriptor_;
  FileStamp stamp_;
};

}  // namespace movie

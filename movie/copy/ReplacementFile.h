#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <sys/stat.h>
#include <sys/types.h>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"
#include "movie/copy/CopyCalls.h"

namespace movie {

/// A new file that takes its name only when it is complete. The target appears, or is replaced, whole or not at all.
/// Used by one thread.
///
/// On ext4, XFS, Btrfs, F2FS and tmpfs it has no name until then, so that nothing stays behind of a process that is
/// killed, but for a complete file when that happens while it takes another's place. Elsewhere it is written beside the
/// target under a name of its own, ".lumacheck-<16 digits>.partial".
///
/// A file of that name gives the new one its mode, its owner and group where the system allows it, its access control
/// list and its extended attributes. Where it cannot have the group, its group may do what all others may.
class ReplacementFile {
 public:
  /// A target that is a symbolic link means the file that it leads to, also one that does not exist yet. Refused: a
  /// folder, anything else that is no regular file, and a file that may not be written.
  static Result<ReplacementFile> create(const std::string& path, CopyCalls& calls = systemCopyCalls());

  /// What was not published goes.
  ~ReplacementFile();
  ReplacementFile(ReplacementFile&& other) noexcept;
  ReplacementFile& operator=(ReplacementFile&&) = delete;
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  int descriptor() const { return file_; }  ///< open for reading and writing
  CopyCalls& calls() const { return *calls_; }
  const std::string& path() const { return path_; }

  /// Makes it that long, all zeros, and takes no space for it.
  Result<void> resize(std::uint64_t size);
  /// Takes space for that many bytes at a place, where the file system can do that.
  Result<void> reserve(std::uint64_t offset, std::uint64_t size);
  Result<void> write(std::uint64_t offset, ByteView bytes);

  /// Everything to the disk, then the name, then the folder to the disk. An error after the name stands says so. A file
  /// that has come to the name since create() found none there is not replaced: an error.
  Result<void> publish();

  /// The error of a failed system call on the target, `number` being errno.
  tl::unexpected<MovieError> failure(int number) const;

 private:
  ReplacementFile(std::string path, CopyCalls& calls) : path_(std::move(path)), calls_(&calls) {}
  Result<void> settleTarget();
  Result<void> openFolder(const std::string& folder);
  Result<void> createFile(mode_t mode);
  void createUnnamed(mode_t mode);
  Result<void> takeOver(int existing);
  bool takeOwner(const struct stat& status);
  Result<void> takeOwnName();
  Result<void> takeName();

  std::string path_;  ///< as given
  CopyCalls* calls_;
  std::string name_;     ///< of the target, in the folder
  std::string ownName_;  ///< until it is published; empty while the file has no name
  bool replaces_ = false;
  int folder_ = -1;
  int file_ = -1;
};

}  // namespace movie

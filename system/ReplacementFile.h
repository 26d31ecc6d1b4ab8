#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace sys {

/// A new file that takes its name only when it is complete. The target appears, or is replaced, whole or not at all.
/// Used by one thread.
///
/// On ext4, XFS, Btrfs, F2FS and tmpfs it has no name until then, so that nothing stays behind of a process that is
/// killed, but for a complete file when that happens while it takes another's place. Elsewhere it is written beside the
/// target under a name of its own, ".lumacheck-<16 digits>.partial".
///
/// A file of that name gives the new one its attributes: see Heir::Replacement.
class ReplacementFile {
 public:
  /// A target that is a symbolic link means the file that it leads to, also one that does not exist yet. Refused: a
  /// folder (EISDIR), anything else that is no regular file (ENXIO), a file that may not be written, a path with a zero
  /// byte (EILSEQ).
  static Result<ReplacementFile> create(const std::string& path, FileCalls& calls = systemCalls());

  /// What was not published goes.
  ~ReplacementFile();
  ReplacementFile(ReplacementFile&& other) noexcept;
  ReplacementFile& operator=(ReplacementFile&&) = delete;
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;

  /// Open for reading and writing.
  FileRef ref() const { return {file_.get(), path_}; }
  FileCalls& calls() const { return *calls_; }
  const std::string& path() const { return path_; }
  /// A path by which this process can read what was written, before it is published and after.
  std::string pathWhileOpen() const;

  /// Makes it that long, all zeros, and takes no space for it.
  Result<void> resize(std::uint64_t size);
  /// Takes space for that many bytes at a place, where the file system can do that.
  Result<void> reserve(std::uint64_t offset, std::uint64_t size);
  Result<void> write(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    return writeAt(ref(), offset, bytes, *calls_);
  }

  /// Everything to the disk, then the name, then the folder to the disk. An error after the name stands has
  /// Step::SyncName. A file that has come to the name since create() found none there is not replaced: EEXIST.
  Result<void> publish();

 private:
  ReplacementFile(std::string path, FileCalls& calls) : path_(std::move(path)), calls_(&calls) {}
  tl::unexpected<Error> failed(int code, Step what) const { return failure(code, what, path_); }
  Result<void> settleTarget();
  Result<void> openFolder(const std::string& folder);
  Result<void> createFile(mode_t mode);
  Result<void> takeOver(const Descriptor& existing);
  Result<void> takeName();

  std::string path_;  ///< as given
  FileCalls* calls_;
  std::string name_;     ///< of the target, in the folder
  std::string ownName_;  ///< until it is published; empty while the file has no name
  bool replaces_ = false;
  Descriptor folder_, file_;
};

/// Writes a file that holds just these bytes: see ReplacementFile.
Result<void> writeWhole(const std::string& path, std::string_view bytes, FileCalls& calls = systemCalls());

}  // namespace sys

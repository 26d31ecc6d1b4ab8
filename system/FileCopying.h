#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

#include "system/FileBytes.h"

namespace sys {

/// A run of bytes of one file and where it goes in another.
struct CopiedRun {
  std::uint64_t from = 0, size = 0, to = 0;
};

/// The parts of a run that take space: holes of a sparse file are left out, where its file system tells them.
std::vector<CopiedRun> withoutHoles(int file, const CopiedRun& run);

/// Told before each piece, and so between any two, how many bytes were copied; false ends the copy with ECANCELED.
using CopyProgress = std::function<bool(std::uint64_t done)>;

/// Copies runs of bytes into one file: inside the kernel in pieces of 64 MiB, where blocks may be shared, or by reading
/// and writing where the kernel does not copy between these files, or fails with EIO: reading and writing tell which of
/// the two it is. Any other failure is an error at once. Used by one thread.
class FileCopying {
 public:
  /// When the bytes go to the disk: later, as the system likes, or at once, so that a sync at the end finds it done.
  enum class Writeback { Later, AtOnce };

  explicit FileCopying(FileRef to, CopyProgress progress = {}, Writeback writeback = Writeback::Later,
                       FileCalls& calls = systemCalls())
      : to_(to), progress_(std::move(progress)), writeback_(writeback), calls_(calls) {}

  /// How many bytes it was: fewer than the run has when the file ends before.
  Result<std::uint64_t> copy(FileRef from, CopiedRun run);
  /// Reads and writes from now on.
  void goOnByHand() { inKernel_ = false; }

 private:
  Result<std::uint64_t> copyPiece(FileRef from, const CopiedRun& run);
  Result<std::uint64_t> copyInKernel(FileRef from, const CopiedRun& run);
  Result<std::uint64_t> copyByHand(FileRef from, const CopiedRun& run);

  FileRef to_;
  CopyProgress progress_;
  Writeback writeback_;
  FileCalls& calls_;
  bool inKernel_ = true;
  std::uint64_t done_ = 0;
  std::unique_ptr<std::uint8_t[]> buffer_;
};

/// Copies the bytes of a file, from its beginning to its end, into a file that is empty: holes stay holes. A file that
/// grows or shrinks meanwhile is copied as far as it reaches.
Result<void> copyContents(FileRef from, FileRef to, const std::stop_token& stop = {}, FileCalls& calls = systemCalls());

}  // namespace sys

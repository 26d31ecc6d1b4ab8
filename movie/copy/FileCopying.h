#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "movie/atoms/ReadableFile.h"
#include "movie/copy/ReplacementFile.h"

namespace movie {

/// Told after each piece how many bytes there are and how many there will be; false cancels.
using CopyProgress = std::function<bool(std::uint64_t done, std::uint64_t all)>;

/// A run of bytes and where it goes.
struct CopiedRange {
  std::size_t source = 0;  ///< which file
  std::uint64_t from = 0;
  std::uint64_t size = 0;
  std::uint64_t to = 0;
};

/// The part of the ranges that takes space: holes of a sparse file are left out, where its file system tells them.
/// `sources` are indexed by the ranges' source.
std::vector<CopiedRange> withoutHoles(const std::vector<const ReadableFile*>& sources,
                                      const std::vector<CopiedRange>& ranges);

/// Copies the ranges inside the kernel in pieces of 64 MiB, or by reading and writing where it does not. Errors: a
/// source that ends early, failed reads and writes, cancelled.
Result<void> copyRanges(const std::vector<const ReadableFile*>& sources, const std::vector<CopiedRange>& ranges,
                        ReplacementFile& target, const CopyProgress& progress);

}  // namespace movie

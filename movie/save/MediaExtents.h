#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"

namespace movie {

/// The bytes of a file that hold media data, wherever they lie: in mdat, in a `free`, behind every atom.
class MediaExtents {
 public:
  /// An empty extent counts as one byte. One that would reach past the largest offset ends there.
  void add(std::uint64_t offset, std::uint64_t size);
  /// To be called after the last add() and before anything is asked.
  void settle();

  /// Whether any byte of [begin, end) is media data.
  bool overlaps(std::uint64_t begin, std::uint64_t end) const;
  std::uint64_t end() const;  ///< behind the last byte; 0 when there are none

 private:
  struct Extent {
    std::uint64_t begin = 0, end = 0;
  };
  std::vector<Extent> extents_;  ///< once settled: ascending, apart from each other
};

/// Adds every chunk of the tracks' sample descriptions whose data is in the movie's own file, and every absolute file
/// offset in the saio and iloc atoms, of one whole uncompressed movie atom. Errors: tables that cannot be understood;
/// the path in them is `file`.
Result<void> addMediaOfMovie(ByteView movieAtom, const std::string& file, MediaExtents& media);

/// The same for a meta atom that stands beside the movie atom; `meta` is the whole atom.
Result<void> addMediaOfMeta(ByteView meta, const std::string& file, MediaExtents& media);

}  // namespace movie

#pragma once

#include <memory>
#include <vector>

#include "movie/atoms/MovieFile.h"
#include "movie/atoms/ReadableFile.h"
#include "movie/copy/MovieMap.h"

namespace movie {

/// Bytes that stand in a file.
struct PlacedBytes {
  std::uint64_t offset = 0;
  Bytes bytes;
};

/// A run of bytes and where it goes.
struct CopiedRange {
  std::size_t source = 0;  ///< which file
  std::uint64_t from = 0;
  std::uint64_t size = 0;
  std::uint64_t to = 0;
};

/// What stands where in a flattened copy. A move-only value.
struct FlattenedLayout {
  std::uint64_t size = 0;
  std::vector<PlacedBytes> written;  ///< atom headers, the movie atom and the free space behind it
  std::vector<CopiedRange> copied;   ///< source 0 is the movie's own file, the others are `media`, counted from 1
  std::vector<ReadableFile> media;   ///< the other files that samples come from
};

/// The free space behind a movie atom that comes before the media data, header included: room for a later change.
inline constexpr std::uint64_t spaceBehindMovie = 4096;

/// Lays out a self-contained copy of a movie with `movieAtom`, a whole uncompressed moov whose tracks are the movie's
/// own, in place of its own. Every top-level atom is kept whole and in its order, but for padding that no chunk lies in
/// and further movie atoms; a mdat that reached to the end of the file gets its true size. Chunks in other files follow
/// in a mdat of their own, in the order of their times. The movie atom comes before the media data, with
/// spaceBehindMovie behind it, when it does so in the movie's file, else at the end. A stco becomes a co64 where an
/// offset needs it.
///
/// Refused, each with its reason: what mapMovie() refuses, fragments, item locations in a top-level meta, a chunk that
/// does not lie wholly inside one top-level atom, missing media files, and a file that was changed since it was opened.
Result<FlattenedLayout> layOutFlattened(const MovieFile& movie, ByteView movieAtom);

}  // namespace movie

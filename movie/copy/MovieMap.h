#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "movie/atoms/ChunkTables.h"
#include "movie/atoms/Splice.h"

namespace movie {

/// What a copy that moves media data has to know of a movie atom, and where in it the places to change stand. The views
/// are into the movie atom's bytes, which must outlive this.
struct MovieMap {
  struct Track {
    TrackChunks chunks;
    std::optional<Atom> offsets;     ///< stco or co64
    std::optional<Atom> references;  ///< dref
  };

  std::vector<Track> tracks;
  std::vector<Atom> containers;  ///< every atom around one of the places to change, the movie atom first
};

/// Maps `movie`, one whole uncompressed movie atom. Refused, each with its reason: what is not well formed; fragmented
/// or compressed movies; and whatever names places in the file otherwise than by the tables of chunk offsets (saio,
/// iloc), or by more than one such table in a track. `file` names the movie in errors; the offsets there are from the
/// start of the movie atom.
Result<MovieMap> mapMovie(ByteView movie, const std::string& file);

/// A splice that makes every reference of a dref to another file one to the movie's own; none when there is no such.
/// `references` was read from `movie`.
std::optional<Splice> selfContained(ByteView movie, const Atom& references);

/// A splice that puts the table of chunk offsets, wide or not, in the place of `table`, which was read from `movie`.
Splice chunkOffsetTable(ByteView movie, const Atom& table, const std::vector<std::uint64_t>& offsets, bool wide);

}  // namespace movie

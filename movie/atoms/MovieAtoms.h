#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/SampleTableAtoms.h"
#include "movie/atoms/TrackInfo.h"

namespace movie {

/// No movie is taken to have more tracks.
inline constexpr std::size_t maximumTrackCount = 4096;

/// Where a run of bytes comes from, for messages.
struct BytesOrigin {
  std::string file;
  std::uint64_t offset = 0;  ///< of the bytes' start in the file
  bool inflated = false;     ///< offsets inside the bytes are no places in the file: all are told as `offset`

  tl::unexpected<MovieError> failure(const std::string& atomPath, std::uint64_t at, Clause why) const;
};

/// The children of an atom that was read from `bytes`, or which of them is malformed. `path` is the atom's own.
Result<AtomList> wellFormedChildren(ByteView bytes, const Atom& atom, const std::string& path,
                                    const BytesOrigin& origin);

/// What a fragment's samples have unless it says otherwise (trex). Source: ISO/IEC 14496-12, 8.8.3.
struct FragmentDefaults {
  std::uint32_t trackId = 0;
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
  std::uint32_t description = 1;  ///< counted from 1
};

/// One entry of a dref atom. Source: QTFF "Data reference atoms"; ISO/IEC 14496-12, 8.7.2.
struct DataReference {
  FourCC type = 0;  ///< 'alis', 'url ', 'rsrc' ...
  ByteView data;    ///< behind version and flags; a view into the movie atom's bytes
};

/// The children of a dref atom that was read from `bytes`.
AtomList dataReferencesIn(ByteView bytes, const Atom& list);
/// What an entry of a dref says of another file; none for one that names the movie's own.
std::optional<DataReference> otherFileOf(ByteView bytes, const Atom& reference);

struct TrackAtoms {
  TrackInfo info;           ///< sampleCount without fragments; durations as stored, 0 where unknown
  SampleTableAtoms tables;  ///< views into the movie atom's bytes
  /// Per sample description: the other file that its data lies in. Empty without references.
  std::vector<std::optional<DataReference>> elsewhere;
};

/// The movie atom, parsed. Tables are left where they lie.
struct MovieAtoms {
  std::int32_t timeScale = 0;  ///< above 0
  std::uint64_t duration = 0;  ///< 0 where unknown
  std::vector<TrackAtoms> tracks;
  bool fragmented = false;  ///< there is a mvex
  std::vector<FragmentDefaults> fragmentDefaults;
};

/// Parses a movie atom; `movie` was read from `bytes`, which must outlive the result. A malformed size anywhere on the
/// way to the sample tables is an error; a missing atom only costs its track what it holds.
Result<MovieAtoms> parseMovieAtom(ByteView bytes, const Atom& movie, const BytesOrigin& origin);

}  // namespace movie

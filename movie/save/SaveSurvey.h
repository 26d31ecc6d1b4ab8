#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/MovieFile.h"
#include "movie/save/MediaExtents.h"
#include "movie/save/WritableFile.h"

namespace movie {

/// A movie file as a save finds it: its top-level atoms, and what a save that was interrupted may have left behind
/// them.
struct SaveSurvey {
  std::vector<Atom> atoms;  ///< in order, without leftovers; a last mdat of size 0 reaches to `end`
  std::size_t movie = 0;    ///< which of them is the movie atom
  std::uint64_t end = 0;    ///< where the file ends once it is cut to its atoms
  std::uint64_t fileSize = 0;
  /// A second movie atom at the end, equal to the first but for colours: a save stopped before it counted, or after the
  /// movie was back in its place. Stands last in `atoms`.
  bool secondMovie = false;
  bool openMediaData = false;  ///< the last atom is a mdat of size 0
  MediaExtents media;          ///< settled

  const Atom& movieAtom() const { return atoms[movie]; }
};

/// Looks without changing anything. Errors, each with its reason, are the refusals: the file is not as `loaded` found
/// it; it is fragmented or compressed; it has another movie atom, an atom of size 0, or atoms that do not end where the
/// file does; its media data lie in the movie atom, in a leftover or past the end.
Result<SaveSurvey> surveyForSave(const WritableFile& file, const MovieFile& loaded);

}  // namespace movie

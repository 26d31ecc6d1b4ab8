#pragma once

#include <cstdint>
#include <vector>

#include "movie/atoms/MovieEdit.h"
#include "movie/save/SaveSurvey.h"

namespace movie {

/// What the disk writes whole or not at all.
inline constexpr std::uint64_t sectorSize = 512;

/// Where an edited movie atom goes.
enum class SavePlace {
  Unchanged,  ///< the edits change nothing
  Sector,     ///< same size, all that changes inside one sector: one write
  Slot,       ///< where the movie atom stood, or in the `free` space beside it
  Tail        ///< at the end of the file
};

struct SavePlacement {
  SavePlace place = SavePlace::Unchanged;
  Bytes movie;  ///< the new movie atom
  /// Of a slot: from a movie atom or `free` to the end of one, nothing but these between. Bytes that the new movie
  /// leaves become a `free`.
  std::uint64_t slotBegin = 0, slotEnd = 0;
};

/// The first place that fits. Errors, the last of the refusals: media data in the `free` space beside the movie atom,
/// or at the end of a file where the movie atom would go there; a last mdat of size 0 that is too large, or whose size
/// field crosses sectors; edits that cannot be made.
Result<SavePlacement> placeMovie(const SaveSurvey& survey, const MovieFile& loaded,
                                 const std::vector<SampleDescriptionEdit>& edits);

}  // namespace movie

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/TrackInfo.h"

namespace movie {

/// A stretch of a movie's time line as a sound track fills it. Counted in frames of the sound, from the beginning of
/// the movie and of the media.
struct SoundPiece {
  std::int64_t end = 0;                    ///< the first frame of the movie behind it; the last piece has no end
  std::optional<std::int64_t> mediaFrame;  ///< what is heard at the frame asked for, and on from there; none: silence
};

/// Leads from the movie's time line to the media's as the track's edit list does. An empty edit is silent, and so are
/// one that is not played at its own rate and the time behind the last one. Without an edit list the media is heard
/// from its beginning. Instants between two frames count as the nearer one; exact otherwise, for all values. Immutable.
class SoundTimeline {
 public:
  /// `rate` is the sound's, frames a second.
  SoundTimeline(const TrackInfo& track, std::int32_t movieTimeScale, int rate);

  /// The piece at a frame of the movie; before the beginning it is silence up to there.
  SoundPiece at(std::int64_t movieFrame) const;

  static constexpr std::int64_t endless = INT64_MAX;

 private:
  struct Segment {
    std::int64_t start = 0, end = endless;
    std::optional<std::int64_t> mediaFrame;  ///< at its start
  };
  std::vector<Segment> segments_;  ///< in order, without gaps, from 0 on
};

}  // namespace movie

#pragma once

#include <cstddef>
#include <vector>

#include "scan/align/FrameRow.h"
#include "scan/align/TimeLine.h"
#include "scan/follow/Matches.h"

namespace scan {

/// How frames of the source became frames of the destination.
enum class Pattern {
  FrameForFrame,  ///< each one, as long as it was
  Pulldown,       ///< film to fields of video: some are a mixture of two
  Blended,        ///< another frame rate, of mixtures
  Dropped,        ///< a lower frame rate: some are left out, regularly
  Duplicated,     ///< a higher frame rate: some are shown twice, regularly
  Retimed,        ///< each one, shorter or longer than it was
};

/// A stretch of the destination that goes through the source at one speed, or holds one picture of it: at speed 0.
struct MapPiece {
  FrameRange dest;
  TimeLine line;
  Pattern pattern = Pattern::FrameForFrame;
  double agreement = 0;  ///< share of its frames that lie within one frame of the line
};

/// Frames of the source that the destination jumps over.
struct Gap {
  FrameRange source;
  std::size_t before = 0;  ///< the frame of the destination that follows
};

/// How the destination lies upon the source in time.
struct TimeMap {
  std::vector<MapPiece> pieces;       ///< in the order of the destination
  std::vector<Gap> dropped;           ///< between pieces
  std::vector<FrameRange> unmatched;  ///< of the destination: no frame of the source
};

/// A slope that dropped frames make is no rate: where the destination jumps for good, another piece begins.
TimeMap timeMapOf(const Matches& matches, const FrameRow& source, const FrameRow& dest,
                  const std::vector<TimeLine>& lines);

}  // namespace scan

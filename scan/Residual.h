#pragma once

#include <cstddef>
#include <vector>

#include "diagnosis/Diagnosis.h"
#include "diagnosis/Finding.h"
#include "diagnosis/Placement.h"
#include "scan/Scan.h"
#include "scan/align/FrameRow.h"
#include "scan/follow/Matches.h"

namespace scan {

/// Frames that lie upon the source as frames of the destination do.
struct SameFrames {
  FrameRange dest;                        ///< which frames of the destination
  std::size_t first = 0;                  ///< the frame that stands for the first of them; the others follow
  const Matches& matches;                 ///< of the destination: which frames of the source they show
  const diagnosis::Placement& placement;  ///< as the destination's frames were laid upon the source's
  double tolerance = diagnosis::defaultTolerance;
};

/// What differs between them and the source.
struct Residual {
  double difference = 0;                 ///< in codes of 8 bits, as Finding's
  std::vector<diagnosis::Cause> causes;  ///< never empty
  std::size_t frames = 0;                ///< that were compared: of those that show one frame of the source
};

/// Reads both, one frame after another, on the calling thread: a few hundred at most. Error: a frame cannot be read.
movie::Result<Residual> residualOf(FrameRow& source, FrameRow& row, const ScanTags& tags, const SameFrames& frames);

}  // namespace scan

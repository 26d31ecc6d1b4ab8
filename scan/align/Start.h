#pragma once

#include <vector>

#include "diagnosis/Placement.h"
#include "scan/align/FrameRow.h"
#include "scan/align/SourceIndex.h"
#include "scan/align/TimeLine.h"

namespace scan {

/// Where to begin, as it is found before the movies are gone through.
struct Beginning {
  enum class Result {
    Found,
    Still,     ///< the pictures are the same, but do not move: the offset in time cannot be told
    NotFound,  ///< they do not show the same, or too little
  };
  Result result = Result::NotFound;
  std::vector<TimeLine> lines;  ///< the first is the one to begin with; others were found at other places
  diagnosis::Placement placement;
  /// What the source's luma is raised to so that pictures look alike, roughly; 1 unless it is far off.
  double exponent = 1;
  bool isProbed = false;  ///< the lines had to be looked for
};

struct StartOptions {
  FrameRange range;   ///< of the destination, that is to be scanned; not empty
  bool align = true;  ///< otherwise both begin together, and nothing is looked for
};

/// First what lengths and rates suggest is held against the opening. Where that does not show, bursts of the
/// destination are looked for in an index of the source, as they lie, and in all ways in which pictures are placed;
/// three of them have to agree on a line. At last the part of the source is refined. Both rows have frames; they are
/// read here and there.
Beginning beginningOf(FrameRow& source, FrameRow& dest, const StartOptions& options, const Stop& stop);

}  // namespace scan

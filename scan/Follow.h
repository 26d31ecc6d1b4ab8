#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "scan/Evidence.h"
#include "scan/Matches.h"
#include "scan/SourceWindow.h"
#include "scan/Track.h"
#include "scan/align/SampledRow.h"
#include "scan/align/Start.h"

namespace scan {

/// Where a side could not be read on.
struct ReadFailure {
  enum class Side { Source, Dest } side = Side::Dest;
  std::size_t frame = 0;
  movie::MovieError error;
};

/// All frames of the row that was followed, as far as they were gone through: frames are counted in it.
struct Followed {
  Matches matches;
  std::vector<TimeLine> lines;  ///< that FrameMatch::line counts
  Evidence evidence;
  std::optional<ReadFailure> failure;
  bool stopped = false;
};

/// Called after every frame that is decided, and while a place that was lost is looked for. True ends the work.
using OnFollowed = std::function<bool(const Followed&)>;

enum class Following {
  WhereverItIs,  ///< a place that is lost is looked for
  OneLine
};

/// Goes through a row of the destination frame by frame, and through the source beside it. Where the one is lost in the
/// other for a while, the place is looked for: on the other lines, nearby, under another tone, in the index of the
/// source. Each side is read by a thread of its own; this thread compares. Memory: some hundred thumbnails and what is
/// kept of frames.
Followed followed(const FrameRow& source, const SampledRow& dest, const Beginning& beginning, Following following,
                  const OnFollowed& onFollowed);

/// The pictures of two thumbnails, the one as it lies upon the other.
diagnosis::AlignedPair alignedThumbnails(const Thumbnail& source, const Thumbnail& dest,
                                         const diagnosis::Placement& placement);

}  // namespace scan

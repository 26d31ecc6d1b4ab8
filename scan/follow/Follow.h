#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "scan/align/SampledRow.h"
#include "scan/align/Start.h"
#include "scan/follow/Evidence.h"
#include "scan/follow/Matches.h"
#include "scan/follow/SourceWindow.h"
#include "scan/follow/Standing.h"
#include "scan/follow/Track.h"

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

struct FollowHooks {
  /// Called after every frame that is decided, and while a place that was lost is looked for. True ends the work.
  std::function<bool(const Followed&)> onFollowed;
  /// Called now and then where all frames so far are final, and at the end.
  std::function<void(const Followed&, const Standing&)> onSettled;
};

/// Where to go on: at the beginning, or behind frames that are known.
struct Departure {
  diagnosis::Placement placement;
  Followed before;  ///< at least one line; what failed already stays as it is
  Bearing bearing;
  std::optional<Track::State> state;  ///< of the last frame before
};
Departure departureOf(const Beginning& beginning);

enum class Following {
  WhereverItIs,  ///< a place that is lost is looked for
  OneLine
};

/// Goes through a row of the destination frame by frame, and through the source beside it. Where the one is lost in the
/// other for a while, the place is looked for: on the other lines, nearby, under another tone, in the index of the
/// source. Each side is read by a thread of its own; this thread compares. Memory: some hundred thumbnails and what is
/// kept of frames.
Followed followed(const FrameRow& source, const SampledRow& dest, Departure departure, Following following,
                  const FollowHooks& hooks);

}  // namespace scan

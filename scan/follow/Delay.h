#pragma once

#include <cstddef>
#include <cstdint>

#include "scan/align/SampledRow.h"
#include "scan/align/TimeLine.h"
#include "scan/follow/Track.h"

namespace scan {

/// Frames on both sides of the expected one that may be shown instead; fewer where each has to be read for that.
constexpr std::int64_t usualReach = 16, shortReach = 4;
/// Of the source some more are kept than belong to frames that are not decided.
constexpr std::size_t keptBesides = 64;

/// How far decisions are put off, and how much of the source has to be kept for that: where the destination has fewer
/// frames, it is more of the source for each.
struct Delay {
  std::size_t settledAfter = Track::usuallySettled, keptFrames = 0;
};

Delay delayFor(const FrameRow& source, const SampledRow& dest, const TimeLine& line);

}  // namespace scan

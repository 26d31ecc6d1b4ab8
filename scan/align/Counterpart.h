#pragma once

#include <cstddef>

#include "scan/align/FrameRow.h"
#include "scan/align/SourceIndex.h"

namespace scan {

/// The frame of the source that shows what a frame of the destination shows.
struct Counterpart {
  enum class Result {
    Found,
    Still,     ///< the pictures around are the same, but do not move: it may be any
    NotFound,  ///< none nearby does
  };
  Result result = Result::NotFound;
  std::size_t frame = 0;  ///< of the source, counted from 0; only where it was found
};

/// How far from the destination's own time a counterpart is looked for, in seconds of the source.
constexpr double counterpartReach = 10;

/// Looks for it in the source within counterpartReach, by what is to be seen some seconds around the frame. Both rows
/// have frames.
Counterpart counterpartOf(FrameRow& source, FrameRow& dest, std::size_t frame, const Stop& stop);

}  // namespace scan

#pragma once

#include <cstddef>
#include <vector>

#include "scan/align/FrameRow.h"
#include "scan/follow/Matches.h"

namespace cli {

/// The frames of a narrow stretch of time.
struct PlotColumn {
  double time = 0;    ///< in the middle of the middle one of them, in seconds
  double middle = 0;  ///< the median of their logarithms of exponents
  double low = 0;     ///< where eight in ten of them lie, and half of the samples of each
  double high = 0;
};

/// Columns without a frame between them that could not be measured.
using PlotRun = std::vector<PlotColumn>;

/// Frames that were measured, in `columns` stretches of equal length; those without such a frame are left out. Runs are
/// never empty.
std::vector<PlotRun> plotRuns(const scan::Matches& matches, const scan::FrameRow& dest, std::size_t columns);

}  // namespace cli

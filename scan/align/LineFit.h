#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "scan/align/Burst.h"
#include "scan/align/TimeLine.h"

namespace scan {

/// A line through places that were found, and which of them lie on it.
struct LineThrough {
  TimeLine line;
  std::vector<std::size_t> agreeing;  ///< indices of the fits, ascending
  double score = 0;                   ///< how many, and how usual its rate is
  double span = 0;                    ///< of the destination, from the first to the last of them, in seconds
};

/// The line that most of the fits agree on, within half a frame of where each fits. `rates` as usualRates() gives
/// them: the first is 1, and is preferred, the second is frame for frame where it differs. A rate that follows from
/// two of the fits has to hold for a third. None without fits.
std::optional<LineThrough> bestLine(const std::vector<BurstFit>& fits, const std::vector<double>& rates);

}  // namespace scan

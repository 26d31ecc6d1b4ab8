#pragma once

#include <optional>
#include <vector>

#include "diagnosis/Finding.h"
#include "scan/align/FrameRow.h"
#include "scan/follow/Matches.h"

namespace scan {

/// The mean over a quarter of a second.
struct ExponentBin {
  FrameRange dest;
  double logExponent = 0;
  double deviation = 0;  ///< how far it may be off
};

/// Of frames that were measured, and are not in a fade.
std::vector<ExponentBin> binsOf(const Matches& matches, const FrameRow& dest);

/// Where a series of measured values changes its mean: the indices at which a new part begins, the first one 0. The
/// cheapest partition: squared errors in deviations, and a penalty a part; parts of at least `fewest` values. Optimal,
/// pruned (Killick, Fearnhead and Eckley 2012).
std::vector<std::size_t> partitionOf(const std::vector<ExponentBin>& bins, double penalty, std::size_t fewest);

/// A stretch of one exponent.
struct ExponentSegment {
  FrameRange dest;
  double logExponent = 0;        ///< the median of its frames'
  diagnosis::Interval interval;  ///< of the exponent itself, about 95 %
};

/// The median of the frames of a stretch that were measured; none where none was.
std::optional<ExponentSegment> exponentIn(const Matches& matches, const FrameRange& range);

/// Stretches of at least a second whose exponents differ by at least 3 %. Together they reach from the first frame
/// that was measured to the last. None where nothing was.
std::vector<ExponentSegment> segmentsOf(const Matches& matches, const FrameRow& dest);

}  // namespace scan

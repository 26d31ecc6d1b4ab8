#pragma once

#include <vector>

#include "scan/align/Region.h"

namespace scan {

/// A placement, and how far apart the pictures are that it lays upon each other: a mean of absolute differences between
/// roots of luma, less their mean and over their deviation.
struct RegionFit {
  diagnosis::Placement placement;
  double misfit = 0;
};

/// The part of the source that fits the destination's part best, near the one given: Gauss-Newton on its four sides, at
/// 40 x 22, 80 x 45 and 160 x 90 samples, as far as the planes have them, large differences counting less. The
/// destination's part stays. Pairs that show the same; of planes without texture nothing comes.
RegionFit refined(const std::vector<PlanePair>& pairs, const diagnosis::Placement& start);

/// How well a placement fits, as it is.
double misfitOf(const std::vector<PlanePair>& pairs, const diagnosis::Placement& placement);

}  // namespace scan

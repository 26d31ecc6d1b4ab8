#pragma once

#include <vector>

#include "scan/Scan.h"

namespace scan {

/// What one stretch of frames that show the same tells of what was done to it.
struct StretchFinding {
  std::vector<diagnosis::Cause> causes;
  std::optional<diagnosis::Recipe> recipe;
  std::vector<diagnosis::Stratum> colors;  ///< that the recipe was read from; none where there is none
  std::vector<diagnosis::CurvePoint> curve;
  double difference = 0;  ///< in codes of 8 bits
};

StretchFinding stretchFinding(const Followed& followed, const FrameRange& range, const ScanTags& tags,
                              double tolerance);

/// The stretches that differ in their exponents, cut where frames begin or cease to be identical, each with its causes;
/// neighbours of which the same is to be told are one.
std::vector<Segment> toldSegments(const Followed& followed, const FrameRow& dest, const ScanTags& tags,
                                  double tolerance);

/// Everything that follows from the frames.
void conclude(ScanResult& result, Followed followed, const FrameRow& source, const FrameRow& dest, const ScanTags& tags,
              double tolerance);

}  // namespace scan

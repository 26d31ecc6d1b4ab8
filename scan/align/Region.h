#pragma once

#include <vector>

#include "diagnosis/Placement.h"
#include "scan/align/Signature.h"

namespace scan {

/// Two frames that show the same, of each side.
struct PlanePair {
  LumaPlane source, dest;
};

/// The picture without bars, from frames of one side: rows and columns more than half of which are lit in some of the
/// frames, in whole samples, the edge's own left out where there is a bar. All of it where nothing is lit, and where
/// little would be left.
diagnosis::Region pictureBox(const std::vector<LumaPlane>& frames);

/// What is known before any part of the one is looked for in the other.
struct Boxes {
  diagnosis::Region source, dest;           ///< pictureBox() of each
  double sourceAspect = 1, destAspect = 1;  ///< width over height, of all of it
};

/// How exports are made, the likeliest first: as it is; bars added or taken away; masked; cropped to the destination's
/// shape; zoomed from the middle.
std::vector<diagnosis::Placement> likelyPlacements(const Boxes& boxes);

/// Crops and zooms from any place, into the destination's picture.
std::vector<diagnosis::Placement> otherPlacements(const Boxes& boxes);

/// The same placement with the samples that pictureBox() left out at the edges of planes of that size, as far as the
/// source reaches: what is told of it.
diagnosis::Placement widened(const diagnosis::Placement& placement, int width, int height);

}  // namespace scan

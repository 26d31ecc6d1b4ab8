#pragma once

#include "diagnosis/Placement.h"

namespace diagnosis {

/// The picture without bars: edge rows and columns that are black throughout. All of it where little is left.
Region withoutBars(const Signal& signal);

/// Where the source lies upon the destination, and how well: what a ToneFit explains.
struct PlacementFit {
  Placement placement;
  double explained = 0;
};

/// From this on two pictures show the same; where one was looked for in the other, chance has to be kept out.
constexpr double samePictureExplained = 0.9, samePartExplained = 0.93;

/// Which usual crop of the source, upright or mirrored, fits all of the destination best, by luma alone: a zoom, or a
/// strip of its width or of its height. Roughly: a start to be refined. Of pictures of 80 x 60 samples.
Placement bestCrop(const Signal& source, const Signal& dest);

/// As they lie, all of the one upon all of the other.
PlacementFit plainPlacement(const Signal& source, const Signal& dest);

/// The plain placement, unless bars, a crop, a mirror or a turn by right angles fit clearly better.
PlacementFit findPlacement(const Signal& source, const Signal& dest);

}  // namespace diagnosis

#pragma once

#include "diagnosis/Signal.h"
#include "diagnosis/numbers/Resampling.h"

namespace diagnosis {

/// A part of a picture, from 0 to 1 both ways.
struct Region {
  double left = 0, top = 0, right = 1, bottom = 1;
  double width() const { return right - left; }
  double height() const { return bottom - top; }
  friend bool operator==(const Region&, const Region&) = default;
};

/// How the source has to be turned, and which parts of both then show the same: a letterboxed destination has all of
/// the source in a part of itself, a cropped one a part of the source in all of itself.
struct Placement {
  /// Of the source: first its rows become columns, then left and right, or top and bottom, change sides.
  bool transposed = false, mirroredX = false, mirroredY = false;
  Region source{}, dest{};
  bool isPlain() const { return *this == Placement(); }
  friend bool operator==(const Placement&, const Placement&) = default;
};

/// Where the samples of the part of the source that a placement names are taken, for so many.
struct PlacedTaps {
  bool turned = false;  ///< from the source with its rows as columns
  AxisTaps across{}, down{};
};

PlacedTaps tapsOf(const Signal& source, const Placement& placement, int width, int height);

/// The part of the source that the placement names, turned, in so many samples.
Signal sourceUpon(const Signal& source, const Placement& placement, int width, int height);

/// Luma alone of a part of a picture, in whole samples.
Signal lumaOfPart(const Signal& signal, const Region& part);

/// Two pictures, sample upon sample.
struct AlignedPair {
  Signal source, dest;
  bool resampled = false;  ///< edges of the source may lie some part of a sample off
};

/// The part of the destination that the placement names, and the source as it lies upon it. Planes that are empty stay
/// so.
AlignedPair aligned(Signal source, Signal dest, const Placement& placement);

}  // namespace diagnosis

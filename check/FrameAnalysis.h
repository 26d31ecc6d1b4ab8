#pragma once

#include "check/FrameBitmap.h"

namespace check {

struct GammaEstimate {
  double average = 0;     ///< mean of all kept per-pixel exponents; NaN when none was kept
  double commonDiff = 0;  ///< the most frequent exponent, rounded to two decimals; 0 when none was kept
};

/// isBlackFrame: whether at least 85 % of the pixels have a luma of 32 or less. An empty bitmap is not black.
bool isBlackFrame(const FrameBitmap& bitmap);

/// gammaShiftForSourceBitmap:destBitmap: the exponent r, d = s^r, that maps the source's video-range luma s onto the
/// destination's d. Above 1 the destination is darker. Of values equally frequent the one met first wins, column by
/// column. A pixel whose reading throws QVPlatformException is logged and skipped; any other exception passes on.
GammaEstimate gammaShiftForSourceBitmap(const FrameBitmap& source, const FrameBitmap& dest);

}  // namespace check

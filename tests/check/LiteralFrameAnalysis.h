#pragma once

#include "check/FrameAnalysis.h"

/// The frame analysis in its plainest form: every definition written out pixel by pixel through the bitmap's accessor,
/// with two logarithms a pixel and a hash multiset. What the fast form is measured against, in results and in time.
/// Build with -ffp-contract=off.
namespace literal {

/// The definition: three products of doubles, one rounding to single precision, one product in single precision.
float luma(unsigned int red, unsigned int green, unsigned int blue);

bool isBlackFrame(const check::FrameBitmap& bitmap);
check::GammaEstimate gammaShiftForSourceBitmap(const check::FrameBitmap& source, const check::FrameBitmap& dest);

}  // namespace literal

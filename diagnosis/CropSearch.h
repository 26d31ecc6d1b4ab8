#pragma once

#include "diagnosis/Placement.h"

namespace diagnosis {

/// Which usual crop of the source, upright or mirrored, fits all of the destination best, by luma alone: a zoom, or a
/// strip of its width or of its height. Roughly: a start to be refined. Of pictures of 80 x 60 samples.
Placement bestCrop(const Signal& source, const Signal& dest);

}  // namespace diagnosis

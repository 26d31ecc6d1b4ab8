#pragma once

#include "diagnosis/Signal.h"

namespace bench {

/// R'G'B' of a picture with the look of a photograph, at a place from 0 to 1 both ways; with a little noise, as an
/// encoder leaves it, that is another one for another seed.
diagnosis::Vector3 portrait(double x, double y, unsigned noise);
/// The same, a moment later.
diagnosis::Vector3 laterPortrait(double x, double y, unsigned noise);

}  // namespace bench

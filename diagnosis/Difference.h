#pragma once

#include <vector>

#include "diagnosis/Strata.h"

namespace diagnosis {

/// Between source and destination, a root mean square in codes of 8 bits: of luma by its level, and of half of the
/// chroma signals by their hue; or a cast over all colours, where that is more. What goes up in one colour and down
/// in the next, as an encoder's losses do, does not count.
double differenceOf(const std::vector<Stratum>& strata);

}  // namespace diagnosis

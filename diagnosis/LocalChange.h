#pragma once

#include "diagnosis/Blocks.h"

namespace diagnosis {

/// How far the destination is from the source place by place: a root mean square over places, in codes of 8 bits, of
/// the mean change of luma and of half of the chroma signals. Of calm blocks, of which it does not matter if they lie
/// half a sample beside the other side's. What lies over the destination, such as a subtitle, does not count.
double changeByPlace(const Blocks& blocks);

}  // namespace diagnosis

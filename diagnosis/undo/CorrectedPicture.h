#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "diagnosis/Tags.h"
#include "diagnosis/undo/UndoColors.h"
#include "movie/decode/Picture.h"

namespace diagnosis {

/// Y'CbCr of 10 bits in video range: three planes of one size.
struct CorrectedPicture {
  std::array<std::vector<std::uint16_t>, 3> planes;
};

/// A picture of the destination, decoded as its tags say, with a recipe undone: in codes of the Y'CbCr matrix `matrix`
/// of ITU-T H.273. `space`: what the recipe is of. On as many threads as there are cores.
CorrectedPicture corrected(const movie::Picture& dest, const SideTags& tags, const UndoColors& undo,
                           const ComparedIn& space, std::uint16_t matrix);

}  // namespace diagnosis

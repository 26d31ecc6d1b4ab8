#pragma once

#include <cstdint>
#include <optional>

#include "movie/decode/Picture.h"
#include "movie/quicktime/ImageDescription.h"

namespace movie {

/// Luma weights of an ITU-T H.273 matrix coefficient index: Y = kr R + (1 - kr - kb) G + kb B.
struct LumaWeights {
  double kr = 0, kb = 0;
};

/// The weights of a known non-constant-luminance matrix (1, 4, 5, 6, 7, 9), else none.
std::optional<LumaWeights> lumaWeights(std::uint16_t matrix);

/// The matrix in force: that of the NCLC record, else of the bitstream, else 709 at 720 lines and above and 601 below.
LumaWeights matrixInForce(const std::optional<NclcParameters>& nclc, const Picture& picture);

}  // namespace movie

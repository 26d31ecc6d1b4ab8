#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/Picture.h"

namespace movie {

/// Luma weights of an ITU-T H.273 matrix coefficient index: Y = kr R + (1 - kr - kb) G + kb B.
struct LumaWeights {
  double kr = 0, kb = 0;
  friend bool operator==(const LumaWeights&, const LumaWeights&) = default;
};

/// The weights of a known non-constant-luminance matrix (1, 4, 5, 6, 7, 9), else none.
std::optional<LumaWeights> lumaWeights(std::uint16_t matrix);

/// What the two chroma signals (-0.5 to 0.5) add to luma (0 to 1) in each of R, G and B:
/// R = Y + cb[0] Cb + cr[0] Cr, and so on.
struct ChromaWeights {
  std::array<double, 3> cb{}, cr{};
};

ChromaWeights chromaWeights(const LumaWeights& luma);

/// Those of a known matrix: one with luma weights, or 8, YCgCo, whose Cg and Co stand in the places of Cb and Cr. Index
/// 0, the identity, is not one: such a picture is PictureModel::Rgb.
std::optional<ChromaWeights> chromaWeights(std::uint16_t matrix);

/// The matrix in force, as H.273 numbers it: a known one of the NCLC record, else of the bitstream, else 709 for
/// pictures coded in 720 lines and above and 601 below.
std::uint16_t matrixIndexInForce(const std::optional<NclcParameters>& nclc, std::uint16_t codedMatrix, int codedHeight);
std::uint16_t matrixIndexInForce(const std::optional<NclcParameters>& nclc, const Picture& picture);
ChromaWeights matrixInForce(const std::optional<NclcParameters>& nclc, const Picture& picture);

}  // namespace movie

#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/Picture.h"

namespace movie::test {

/// The codes of one pixel: Y, Cb, Cr or R, G, B or grey alone.
using Codes = std::array<unsigned, 3>;

/// A picture one line high with these pixels.
inline Picture pictureOf(PictureModel model, PictureRange range, int depth, const std::vector<Codes>& pixels) {
  Picture picture;
  picture.width = static_cast<int>(pixels.size());
  picture.height = 1;
  picture.depth = depth;
  picture.model = model;
  picture.range = range;
  picture.codedHeight = 1080;
  const std::size_t planes = model == PictureModel::Grey ? 1 : 3;
  for (std::size_t plane = 0; plane < planes; ++plane) {
    for (const Codes& codes : pixels)
      picture.planes[plane].push_back(static_cast<std::uint16_t>(codes[plane] << (16 - depth)));
  }
  return picture;
}

inline NclcParameters nclc(std::uint16_t primaries, std::uint16_t transferFunction, std::uint16_t matrix) {
  return {
      .colorParamType = fourCC("nclc"), .primaries = primaries, .transferFunction = transferFunction, .matrix = matrix};
}

}  // namespace movie::test

#pragma once

#include <cstdint>
#include <vector>

#include "movie/decode/MovieDecoder.h"
#include "movie/decode/Picture.h"
#include "tests/movie/decode/RawLayout.h"

namespace movie::test {

/// A frame as ffmpeg lays it down.
struct RawFrame {
  const RawLayout& layout;
  const std::vector<std::uint8_t>& bytes;
  int width = 0, height = 0;
};

/// How far a picture is from the exact area means of the frame that it was scaled from, in 8-bit codes at worst.
double farthestFromAreaMeans(const Picture& picture, const RawFrame& frame, const PictureCrop& crop);

}  // namespace movie::test

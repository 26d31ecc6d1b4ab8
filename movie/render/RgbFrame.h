#pragma once

#include <cstdint>
#include <vector>

namespace movie {

/// A rendered frame: rows from the top, 3 bytes a pixel in the order R, G, B, no padding.
struct RgbFrame {
  int width = 0, height = 0;
  std::vector<std::uint8_t> samples;
};

}  // namespace movie

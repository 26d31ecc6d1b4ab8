#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace scan {

/// How far frames are lately from those that they show, by what the encoder left. A run of frames that are several
/// times farther shows something else, be it as like as the next minute of a shot whose camera stands still.
struct UsualDistance {
  float mean = 0;
  std::uint8_t frames = 0;  ///< that it is of, at most `most`

  static constexpr std::uint8_t fewest = 48, most = 96;

  void add(float distance) {
    frames = std::min<std::uint8_t>(most, static_cast<std::uint8_t>(frames + 1));
    mean += (distance - mean) / static_cast<float>(frames);
  }

  /// Farther than that is not usual; nothing is as long as few frames are known.
  float limit() const {
    constexpr float times = 3, least = 0.1F;
    return frames < fewest ? std::numeric_limits<float>::infinity() : least + times * mean;
  }
};

}  // namespace scan

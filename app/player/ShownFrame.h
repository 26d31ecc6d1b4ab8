#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieTime.h"
#include "movie/render/RgbFrame.h"

namespace player {

/// A picture as a view shows it.
struct ShownFrame {
  movie::RgbFrame image;  ///< in sRGB, under the colours of the movie's image description; empty when it failed
  movie::MovieTime time;  ///< when it comes on screen
  std::uint64_t sample = 0;
  std::optional<movie::MovieError> error;  ///< why there is no image
};

}  // namespace player

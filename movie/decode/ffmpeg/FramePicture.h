#pragma once

#include <optional>
#include <string>

#include "movie/atoms/MovieError.h"
#include "movie/decode/MovieDecoder.h"

struct AVFrame;

namespace movie {

/// What the frame itself does not tell.
struct FrameOrigin {
  bool imageCodec = false;  ///< of still images: grey without chroma is Grey there, YCbCr without colour elsewhere
  std::optional<bool> fullRange;  ///< the container's word on the range of a YCbCr stream
};

enum class Scaling {
  Exact,  ///< rounded once
  Quick   ///< scaled samples may be off by one in 65536
};

/// The requested part of a decoded frame, scaled, in the frame's own colours. Samples narrower than 8 bits, or of
/// uneven widths (5-6-5), are spread to 8 bits; CIE XYZ becomes RGB of sRGB's primaries and gamma 2.2, in 12 bits.
/// Error: why not.
tl::expected<Picture, Clause> pictureOfFrame(const AVFrame& frame, const FrameOrigin& origin,
                                             const PictureRequest& request, Scaling scaling = Scaling::Exact);

}  // namespace movie

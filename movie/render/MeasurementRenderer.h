#pragma once

#include <optional>

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/Picture.h"
#include "movie/render/RgbFrame.h"

namespace movie {

/// A picture as the gamma check measures it: video-range RGB, black 16, white 235, excursions kept, clipped to 0..255
/// only, one rounding to nearest after the matrix, no dither. Full-range YCbCr and RGB are mapped into 16..235. No
/// transfer function is applied: both sides of a check carry the same colour set.
///
/// The range is the picture's own; an unspecified one is video for YCbCr and full for RGB and grey.
RgbFrame renderMeasurementFrame(const Picture& picture, const std::optional<NclcParameters>& nclc);

}  // namespace movie

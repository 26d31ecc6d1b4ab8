#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/Picture.h"
#include "movie/render/RgbFrame.h"

namespace movie {

/// The colour metadata that a frame is rendered under: what an image description carries.
struct ColorSet {
  std::optional<std::int32_t> gamma;  ///< 16.16
  std::optional<NclcParameters> nclc;
  std::optional<Bytes> iccProfile;
};

ColorSet colorSetOf(const ImageDescription& description);

/// How the samples' values turn into light. One rule decides: a profile that lcms2 opens wins, then an NCLC record with
/// a known transfer function, then gamma, then nothing (shown as they are).
struct TransferInForce {
  enum class Kind { Profile, Power, Linear, Srgb, AsIs } kind = Kind::AsIs;
  double power = 1.0;  ///< for Power
};
TransferInForce transferInForce(const ColorSet& colors);

/// A picture as an sRGB display shows it under a colour set: full-range RGB through the transfer in force, so that a
/// difference in tags is seen. With nothing in force the values are shown as they are.
RgbFrame renderDisplayFrame(const Picture& picture, const ColorSet& colors);

/// A picture as the gamma check measures it: video-range RGB, black 16, white 235, excursions kept, clipped to 0..255
/// only, one rounding to nearest after the matrix, no dither. Full-range YCbCr and RGB are mapped into 16..235. No
/// transfer function is applied: both sides of a check carry the same colour set.
///
/// The range is the picture's own; an unspecified one is video for YCbCr and full for RGB and grey.
RgbFrame renderMeasurementFrame(const Picture& picture, const std::optional<NclcParameters>& nclc);

}  // namespace movie

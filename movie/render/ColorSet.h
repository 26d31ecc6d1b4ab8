#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/ImageDescription.h"

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

}  // namespace movie

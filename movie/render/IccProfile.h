#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "movie/atoms/ByteOrder.h"

namespace movie {

/// The sRGB profile (IEC 61966-2-1), the same bytes on every run: the creation time and the profile ID are fixed. Empty
/// when it cannot be made.
const Bytes& sRGBProfile();

/// The profile's description in English, UTF-8; empty when the bytes are no profile or it has none.
std::string profileDescription(ByteView profile);

/// Whether the colour engine opens the bytes as a profile that an RGB picture can be rendered from.
bool isUsableRgbProfile(ByteView profile);

/// From the RGB of a profile to sRGB, relative colorimetric. Immutable: usable from several threads.
class ProfileTransform {
 public:
  /// Making one takes some milliseconds; those asked for last are kept. Null unless isUsableRgbProfile. Thread-safe.
  static std::shared_ptr<const ProfileTransform> forProfile(ByteView profile);

  ~ProfileTransform();
  ProfileTransform(const ProfileTransform&) = delete;
  ProfileTransform& operator=(const ProfileTransform&) = delete;

  /// RGB triples, full range, into as many sRGB triples.
  void apply(std::span<const std::uint16_t> rgb, std::span<std::uint8_t> srgb) const;

 private:
  ProfileTransform() = default;
  struct Handles;
  std::unique_ptr<Handles> handles_;
};

}  // namespace movie

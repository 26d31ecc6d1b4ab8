#pragma once

#include <string>

#include "movie/quicktime/ByteOrder.h"

namespace movie {

/// The sRGB profile (IEC 61966-2-1), the same bytes on every run: the creation time and the profile ID are fixed. Empty
/// when it cannot be made.
const Bytes& sRGBProfile();

/// The profile's description in English, UTF-8; empty when the bytes are no profile or it has none.
std::string profileDescription(ByteView profile);

/// Whether the colour engine opens the bytes as a profile that an RGB picture can be rendered from.
bool isUsableRgbProfile(ByteView profile);

}  // namespace movie

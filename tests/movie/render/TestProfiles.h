#pragma once

#include <string>

#include "movie/atoms/ByteOrder.h"

namespace movie::test {

/// An RGB display profile with the primaries and white of sRGB and a pure power as its curve.
Bytes rgbProfile(double power, const std::wstring& description = L"test");

/// A profile for grey pictures.
Bytes greyProfile();

}  // namespace movie::test

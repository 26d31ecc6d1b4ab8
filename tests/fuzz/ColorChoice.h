#pragma once

#include "movie/atoms/ImageDescription.h"

namespace fuzz {

/// One colour operation as two bytes of an input choose it.
struct ColorChoice {
  enum class Kind { SetGamma, SetNclc, SetProfile, RemoveGamma, RemoveColor, RemoveNothing };

  Kind kind = Kind::SetGamma;
  std::uint8_t value = 0;

  ColorChoice(std::uint8_t kindByte, std::uint8_t valueByte)
      : kind(static_cast<Kind>(kindByte % 6)), value(valueByte) {}

  std::int32_t gamma() const { return 0x10000 + value * 0x101; }
  movie::NclcParameters nclc() const {
    return {movie::fourCC("nclc"), value, 1, static_cast<std::uint16_t>(value / 2)};
  }
  movie::ColorAtomFlavour flavour() const { return static_cast<movie::ColorAtomFlavour>(value % 3); }
  movie::Bytes profile() const { return movie::Bytes(std::size_t{1} + value * 4U, value); }

  movie::OSErr apply(movie::ImageDescription& description) const {
    switch (kind) {
      case Kind::SetGamma:
        return description.setGamma(gamma());
      case Kind::SetNclc:
        return description.setNclc(nclc(), flavour());
      case Kind::SetProfile:
        return description.setIccProfile(profile());
      case Kind::RemoveGamma:
        return description.removeExtension(movie::fourCC("gama"));
      case Kind::RemoveColor:
        return description.removeExtension(movie::fourCC("colr"));
      default:
        return description.removeExtension(movie::fourCC("nclc"));
    }
  }
};

}  // namespace fuzz

#include "movie/render/ColorSet.h"

#include "movie/render/IccProfile.h"

namespace movie {
namespace {

/// Transfer characteristics of ITU-T H.273 that a rendering is settled for.
std::optional<TransferInForce> transferOf(std::uint16_t characteristics) {
  using Kind = TransferInForce::Kind;
  switch (characteristics) {
    case 1:
    case 6:
    case 14:
    case 15:
      return TransferInForce{Kind::Power, 1.961};
    case 4:
      return TransferInForce{Kind::Power, 2.2};
    case 5:
      return TransferInForce{Kind::Power, 2.8};
    case 8:
      return TransferInForce{Kind::Linear};
    case 13:
      return TransferInForce{Kind::Srgb};
    default:
      return std::nullopt;
  }
}

}  // namespace

ColorSet colorSetOf(const ImageDescription& description) {
  return {.gamma = description.gamma(), .nclc = description.nclc(), .iccProfile = description.iccProfile()};
}

TransferInForce transferInForce(const ColorSet& colors) {
  using Kind = TransferInForce::Kind;
  if (colors.iccProfile && isUsableRgbProfile(*colors.iccProfile)) return {Kind::Profile};
  if (colors.nclc) {
    if (const auto transfer = transferOf(colors.nclc->transferFunction)) return *transfer;
  }
  if (colors.gamma && *colors.gamma > 0) return {Kind::Power, *colors.gamma / 65536.0};
  return {};
}

}  // namespace movie

#include "movie/render/FrameRenderer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "movie/render/IccProfile.h"
#include "movie/render/PictureRgb.h"
#include "movie/render/RecentlyUsed.h"

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

/// What an sRGB display needs for each 16-bit value.
using ToneTable = std::vector<std::uint8_t>;

/// Source: IEC 61966-2-1.
double srgbEncoded(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
}

std::shared_ptr<const ToneTable> toneTable(double power) {
  static RecentlyUsed<double, ToneTable> tables;
  return tables.get(power, [&] {
    auto table = std::make_shared<ToneTable>(65536);
    for (std::size_t i = 0; i < table->size(); ++i) {
      const double light = std::pow(static_cast<double>(i) / 65535.0, power);
      (*table)[i] = static_cast<std::uint8_t>(std::lround(255.0 * srgbEncoded(light)));
    }
    return table;
  });
}

/// Values as they are, cut to 8 bits.
const ToneTable& plainTable() {
  static const ToneTable table = [] {
    ToneTable made(65536);
    for (std::size_t i = 0; i < made.size(); ++i) made[i] = static_cast<std::uint8_t>((i + 128) / 257);
    return made;
  }();
  return table;
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

RgbFrame renderDisplayFrame(const Picture& picture, const ColorSet& colors) {
  using Kind = TransferInForce::Kind;
  const ChromaWeights weights = matrixInForce(colors.nclc, picture);
  const TransferInForce transfer = transferInForce(colors);
  RgbFrame frame{.width = picture.width, .height = picture.height, .samples = {}};
  const auto profile = transfer.kind == Kind::Profile ? ProfileTransform::forProfile(*colors.iccProfile) : nullptr;
  if (profile) {
    const std::vector<std::uint16_t> rgb = fullRgbOf(picture, weights);
    frame.samples.resize(rgb.size());
    profile->apply(rgb, frame.samples);
    return frame;
  }
  const bool throughLight = transfer.kind == Kind::Power || transfer.kind == Kind::Linear;
  const auto table = throughLight ? toneTable(transfer.power) : nullptr;
  frame.samples = tabledRgbOf(picture, weights, table ? *table : plainTable());
  return frame;
}

RgbFrame renderMeasurementFrame(const Picture& picture, const std::optional<NclcParameters>& nclc) {
  constexpr RgbScale videoRange{.black = 16, .white = 235};
  return {.width = picture.width,
          .height = picture.height,
          .samples = rgbSamplesOf<std::uint8_t>(picture, matrixInForce(nclc, picture), videoRange)};
}

}  // namespace movie

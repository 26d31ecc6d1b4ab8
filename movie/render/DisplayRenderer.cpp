#include "movie/render/DisplayRenderer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "movie/render/IccProfile.h"
#include "movie/render/PictureRgb.h"
#include "movie/render/RecentlyUsed.h"

namespace movie {
namespace {

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

std::vector<std::uint8_t> shownUnderProfile(const std::vector<std::uint16_t>& rgb, const ProfileTransform& transform) {
  std::vector<std::uint8_t> shown(rgb.size());
  transform.apply(rgb, shown);
  return shown;
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

RgbFrame renderDisplayFrame(const Picture& picture, const ColorSet& colors) {
  using Kind = TransferInForce::Kind;
  const ChromaWeights weights = matrixInForce(colors.nclc, picture);
  const auto asTheyAre = [&] { return tabledRgbOf(picture, weights, plainTable()); };

  RgbFrame frame{.width = picture.width, .height = picture.height, .samples = {}};
  const TransferInForce transfer = transferInForce(colors);
  switch (transfer.kind) {
    case Kind::Profile: {
      const auto transform = ProfileTransform::forProfile(*colors.iccProfile);
      frame.samples = transform ? shownUnderProfile(fullRgbOf(picture, weights), *transform) : asTheyAre();
      break;
    }
    case Kind::Power:
    case Kind::Linear:
      frame.samples = tabledRgbOf(picture, weights, *toneTable(transfer.power));
      break;
    case Kind::Srgb:
    case Kind::AsIs:
      frame.samples = asTheyAre();
      break;
  }
  return frame;
}

}  // namespace movie

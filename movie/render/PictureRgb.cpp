#include "movie/render/PictureRgb.h"

#include <array>

namespace movie {
namespace {

using Row = std::vector<std::uint16_t>;

/// One of R, G, B of a row: what each plane adds to it, and a constant. Plain loops over rows, made for vectors.
struct Channel {
  std::array<float, 3> gain{};
  float constant = 0;

  void make(const std::array<const std::uint16_t*, 3>& in, std::size_t count, std::uint16_t* out) const {
    constexpr float highest = 65535;
    const auto stored = [highest](float value) {
      return static_cast<std::uint16_t>(static_cast<int>(std::min(std::max(value, 0.0F), highest)));
    };
    const auto [first, second, third] = gain;
    const float base = constant + 0.5F;
    if (second == 0 && third == 0) {
      for (std::size_t i = 0; i < count; ++i) out[i] = stored(base + first * static_cast<float>(in[0][i]));
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = stored(base + first * static_cast<float>(in[0][i]) + second * static_cast<float>(in[1][i]) +
                      third * static_cast<float>(in[2][i]));
    }
  }
};

/// The channels of a picture in full range of 16 bits; each takes its luma or itself from the plane `own`.
struct Channels {
  Channels(const Picture& picture, const ChromaWeights& weights) {
    constexpr double full = 65535;
    const SampleScale scale = sampleScaleOf(picture);
    const double gain = full / scale.span, chromaGain = full / scale.chromaSpan;
    for (std::size_t c = 0; c < 3; ++c) {
      double constant = -gain * scale.black;
      channel[c].gain[0] = static_cast<float>(gain);
      if (picture.model == PictureModel::Rgb) own[c] = c;
      if (picture.model == PictureModel::YCbCr) {
        channel[c].gain[1] = static_cast<float>(weights.cb[c] * chromaGain);
        channel[c].gain[2] = static_cast<float>(weights.cr[c] * chromaGain);
        constant -= (weights.cb[c] + weights.cr[c]) * chromaGain * SampleScale::chromaZero;
      }
      channel[c].constant = static_cast<float>(constant);
    }
  }

  std::array<Channel, 3> channel;
  std::array<std::size_t, 3> own{};
};

template <typename Sample, typename Shown>
std::vector<Sample> rgbInRows(const Picture& picture, const ChromaWeights& weights, Shown shown) {
  const Channels channels(picture, weights);
  const bool hasChroma = picture.model == PictureModel::YCbCr;
  const auto width = static_cast<std::size_t>(picture.width), height = static_cast<std::size_t>(picture.height);
  std::array<Row, 3> rgb{Row(width), Row(width), Row(width)};
  std::vector<Sample> result(3 * width * height);
  Sample* out = result.data();
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t c = 0; c < 3; ++c) {
      const std::uint16_t* const own = picture.planes[channels.own[c]].data() + y * width;
      const std::uint16_t* const cb = hasChroma ? picture.planes[1].data() + y * width : own;
      const std::uint16_t* const cr = hasChroma ? picture.planes[2].data() + y * width : own;
      channels.channel[c].make({own, cb, cr}, width, rgb[c].data());
    }
    for (std::size_t x = 0; x < width; ++x, out += 3) {
      for (std::size_t c = 0; c < 3; ++c) out[c] = shown(rgb[c][x]);
    }
  }
  return result;
}

}  // namespace

std::vector<std::uint8_t> tabledRgbOf(const Picture& picture, const ChromaWeights& weights,
                                      const std::vector<std::uint8_t>& table) {
  const std::uint8_t* const entries = table.data();
  return rgbInRows<std::uint8_t>(picture, weights, [entries](std::uint16_t value) { return entries[value]; });
}

std::vector<std::uint16_t> fullRgbOf(const Picture& picture, const ChromaWeights& weights) {
  return rgbInRows<std::uint16_t>(picture, weights, [](std::uint16_t value) { return value; });
}

SampleScale sampleScaleOf(const Picture& picture) {
  PictureRange range = picture.range;
  if (range == PictureRange::Unspecified)
    range = picture.model == PictureModel::YCbCr ? PictureRange::Video : PictureRange::Full;
  if (range == PictureRange::Video) return {.black = 16.0 * 256, .span = 219.0 * 256, .chromaSpan = 224.0 * 256};

  const int depth = std::clamp(picture.depth, 1, 16);
  const double white = ((1 << depth) - 1) << (16 - depth);
  return {.black = 0, .span = white, .chromaSpan = white};
}

}  // namespace movie

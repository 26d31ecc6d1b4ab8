#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "movie/decode/Picture.h"
#include "movie/render/YCbCrMatrix.h"

namespace movie {

/// Where black and white come to lie in an RGB result.
struct RgbScale {
  double black = 0, white = 255;
};

/// How a picture's 16-bit samples become numbers. Source: ITU-T H.273, 8.3, equations for both values of
/// VideoFullRangeFlag, multiplied by 2^(16 - depth).
struct SampleScale {
  double black = 0;       ///< the sample of luma, R, G, B 0
  double span = 1;        ///< from black to white
  double chromaSpan = 1;  ///< from the lowest to the highest of Cb and Cr, around chromaZero
  static constexpr double chromaZero = 32768;
};

/// The scale of a picture. An unspecified range is video for YCbCr and full for RGB and grey.
SampleScale sampleScaleOf(const Picture& picture);

/// A picture as RGB triples, rows from the top: black and white at the places given, values beyond them kept, rounded
/// to nearest once and clipped to what Sample holds.
template <typename Sample>
std::vector<Sample> rgbSamplesOf(const Picture& picture, const ChromaWeights& weights, const RgbScale& target) {
  const SampleScale source = sampleScaleOf(picture);
  const double gain = (target.white - target.black) / source.span;
  const double chromaGain = (target.white - target.black) / source.chromaSpan;
  constexpr double highest = std::numeric_limits<Sample>::max(), half = 0.5;
  const auto stored = [&](double value) { return static_cast<Sample>(std::clamp(half + value, 0.0, highest)); };
  const auto scaled = [&](std::uint16_t sample) { return target.black + gain * (sample - source.black); };

  const std::size_t pixels = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
  const auto& planes = picture.planes;
  std::vector<Sample> rgb(3 * pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    Sample* const out = &rgb[3 * i];
    switch (picture.model) {
      case PictureModel::Grey:
        out[0] = out[1] = out[2] = stored(scaled(planes[0][i]));
        break;
      case PictureModel::Rgb:
        for (std::size_t c = 0; c < 3; ++c) out[c] = stored(scaled(planes[c][i]));
        break;
      case PictureModel::YCbCr: {
        const double luma = scaled(planes[0][i]);
        const double cb = chromaGain * (planes[1][i] - SampleScale::chromaZero);
        const double cr = chromaGain * (planes[2][i] - SampleScale::chromaZero);
        for (std::size_t c = 0; c < 3; ++c) out[c] = stored(luma + weights.cb[c] * cb + weights.cr[c] * cr);
        break;
      }
    }
  }
  return rgb;
}

/// A picture as 8-bit RGB triples for a display: full-range RGB of 16 bits, values beyond it clipped, each looked up in
/// a table of 65536 results. In single precision: within one of 65536 of rgbSamplesOf<std::uint16_t>().
std::vector<std::uint8_t> tabledRgbOf(const Picture& picture, const ChromaWeights& weights,
                                      const std::vector<std::uint8_t>& table);
/// The same without the table.
std::vector<std::uint16_t> fullRgbOf(const Picture& picture, const ChromaWeights& weights);

}  // namespace movie

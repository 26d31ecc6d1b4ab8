#include "diagnosis/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

#include "diagnosis/Signal.h"
#include "diagnosis/numbers/Statistics.h"

namespace diagnosis {
namespace {

constexpr std::size_t bins = toneLevels;
constexpr float lowest = lowestToneLevel, highest = highestToneLevel;

/// Of a luma that a picture can have, which is not far from 0 and 1. In short integers: most fit into one vector.
std::uint8_t binOf(float luma) {
  constexpr float binsPerLuma = static_cast<float>(bins) / (highest - lowest);
  constexpr std::int16_t first = 0, last = bins - 1;
  const auto place = static_cast<std::int16_t>(static_cast<std::int32_t>((luma - lowest) * binsPerLuma));
  return static_cast<std::uint8_t>(std::min(std::max(place, first), last));
}

double codes(double luma) {
  return 16.0 + lumaCodes * luma;
}

}  // namespace

std::vector<std::uint8_t> levelsOf(const std::vector<float>& luma) {
  std::vector<std::uint8_t> result(luma.size());
  const float* const in = luma.data();
  std::uint8_t* const out = result.data();  // bytes could be anything's, the vectors' own too
  for (std::size_t i = 0, size = luma.size(); i < size; ++i) out[i] = binOf(in[i]);
  return result;
}

std::vector<CurvePoint> toneCurve(const std::vector<float>& source, const std::vector<float>& dest) {
  struct Sums {
    double count = 0, source = 0, dest = 0;
  };
  std::array<Sums, bins> parts;
  for (std::size_t i = 0; i < source.size(); ++i) {
    Sums& part = parts[binOf(source[i])];
    ++part.count;
    part.source += double{source[i]};
    part.dest += double{dest[i]};
  }
  const double least = std::max(8.0, static_cast<double>(source.size()) / 4000);
  std::vector<CurvePoint> curve;
  for (const Sums& part : parts) {
    if (part.count >= least) curve.push_back({codes(part.source / part.count), codes(part.dest / part.count)});
  }
  return curve;
}

std::vector<float> standardised(std::vector<float> luma) {
  double sum = 0, squares = 0;
  for (const float value : luma) sum += double{value}, squares += double{value} * double{value};
  const double mean = sum / std::max(1.0, static_cast<double>(luma.size())), scatter = squares - mean * sum;
  const double scale = scatter > 0 ? 1 / std::sqrt(scatter) : 0.0;
  for (float& value : luma) value = static_cast<float>(scale * (double{value} - mean));
  return luma;
}

std::array<double, 2> explainedRoughly(const std::vector<std::uint8_t>& levels, const std::vector<float>& one,
                                       const std::vector<float>& other) {
  std::array<std::int32_t, bins> counts{};
  std::array<std::array<float, bins>, 2> sums{};
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const std::size_t level = levels[i];
    ++counts[level];
    sums[0][level] += one[i];
    sums[1][level] += other[i];
  }
  std::array<float, 2> explained{};
  for (std::size_t bin = 0; bin < bins; ++bin) {
    if (counts[bin] == 0) continue;
    const float share = 1 / static_cast<float>(counts[bin]);
    for (const std::size_t which : {0U, 1U}) explained[which] += share * sums[which][bin] * sums[which][bin];
  }
  return {double{explained[0]}, double{explained[1]}};
}

}  // namespace diagnosis

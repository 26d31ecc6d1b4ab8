#include "diagnosis/Difference.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "diagnosis/numbers/Statistics.h"

namespace diagnosis {
namespace {

/// What the samples of several strata changed by on average.
struct MeanChange {
  double samples = 0;
  Vector3 sums{};
  void add(const Stratum& stratum) {
    samples += stratum.samples;
    for (std::size_t plane = 0; plane < 3; ++plane) {
      sums[plane] += stratum.samples * (stratum.dest[plane] - stratum.source[plane]);
    }
  }
  /// In codes of 8 bits.
  double of(std::size_t plane) const {
    return samples > 0 ? (plane == 0 ? lumaCodes : chromaCodes) * sums[plane] / samples : 0;
  }
};

constexpr std::size_t sectors = 8, greyHue = sectors;

/// Grey, or one of eight sectors.
std::size_t hueOf(const Vector3& color) {
  constexpr double grey = 0.03;
  if (std::hypot(color[1], color[2]) < grey) return greyHue;
  const double turn = std::atan2(color[2], color[1]) / (2 * std::acos(-1.0)) + 0.5;
  return static_cast<std::size_t>(turn * sectors) % sectors;
}

/// The colour that all samples took on beside one saturation, as a root mean square over R', G' and B' in codes of 8
/// bits. Of one hue alone, a cast and a change of saturation are the same: then it counts as the latter.
double castOf(const std::vector<Stratum>& strata) {
  constexpr double caution = 0.1;
  constexpr std::uint16_t bt709 = 1;
  Equations<3> rows{};  // of the cast in Pb and Pr, and of the saturation's change
  for (const Stratum& stratum : strata) {
    for (const std::size_t plane : {1U, 2U}) {
      const double chroma = stratum.source[plane], change = stratum.dest[plane] - chroma;
      std::array<double, 4>& cast = rows[plane - 1];
      cast[plane - 1] += (1 + caution) * stratum.samples;
      cast[2] += stratum.samples * chroma;
      cast[3] += stratum.samples * change;
      rows[2][plane - 1] += stratum.samples * chroma;
      rows[2][2] += stratum.samples * chroma * chroma;
      rows[2][3] += stratum.samples * chroma * change;
    }
  }
  for (std::size_t i = 0; i < 3; ++i) rows[i][i] += 1e-9;
  const std::array<double, 3> found = solved(rows);
  const Vector3 rgb = product(toRgbMatrix(bt709), Vector3{0, found[0], found[1]});
  return lumaCodes * std::sqrt((rgb[0] * rgb[0] + rgb[1] * rgb[1] + rgb[2] * rgb[2]) / 3);
}

}  // namespace

double differenceOf(const std::vector<Stratum>& strata) {
  constexpr std::size_t levels = 24;
  std::array<MeanChange, levels> byLevel;
  std::array<MeanChange, greyHue + 1> byHue;
  for (const Stratum& stratum : strata) {
    byLevel[static_cast<std::size_t>(std::clamp(stratum.source[0], 0.0, 0.999) * levels)].add(stratum);
    byHue[hueOf(stratum.source)].add(stratum);
  }
  double squares = 0, samples = 0;
  for (const MeanChange& level : byLevel) {
    squares += level.samples * level.of(0) * level.of(0);
    samples += level.samples;
  }
  for (const MeanChange& hue : byHue) {
    squares += hue.samples * (hue.of(1) * hue.of(1) + hue.of(2) * hue.of(2)) / 4;
  }
  return samples > 0 ? std::max(std::sqrt(squares / samples), castOf(strata)) : 0;
}

}  // namespace diagnosis

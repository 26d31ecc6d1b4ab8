#include "diagnosis/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "diagnosis/Signal.h"

namespace diagnosis {
namespace {

constexpr std::size_t bins = 64;
constexpr float lowest = -0.1F, highest = 1.15F;

std::size_t binOf(float luma) {
  const float place = (luma - lowest) / (highest - lowest) * static_cast<float>(bins);
  return static_cast<std::size_t>(std::clamp(place, 0.0F, static_cast<float>(bins - 1)));
}

/// Sums over samples of one bin, or of all.
struct Sums {
  double count = 0, source = 0, dest = 0, sourceSquares = 0, destSquares = 0;
  void add(double s, double d) {
    ++count;
    source += s;
    dest += d;
    sourceSquares += s * s;
    destSquares += d * d;
  }
  double destScatter() const { return count > 0 ? std::max(0.0, destSquares - dest * dest / count) : 0.0; }
  double sourceScatter() const { return count > 0 ? std::max(0.0, sourceSquares - source * source / count) : 0.0; }
};

double codes(double luma) {
  return 16.0 + lumaCodes * luma;
}

}  // namespace

ToneFit fitTone(const std::vector<float>& source, const std::vector<float>& dest) {
  std::array<Sums, bins> parts;
  Sums all;
  for (std::size_t i = 0; i < source.size(); ++i) {
    const double s = double{source[i]}, d = double{dest[i]};
    parts[binOf(source[i])].add(s, d);
    all.add(s, d);
  }
  ToneFit fit;
  if (all.count < 1) return fit;
  double unexplained = 0;
  const double least = std::max(8.0, all.count / 4000);
  for (const Sums& part : parts) {
    unexplained += part.destScatter();
    if (part.count >= least) fit.curve.push_back({codes(part.source / part.count), codes(part.dest / part.count)});
  }
  fit.sourceDeviation = lumaCodes * std::sqrt(all.sourceScatter() / all.count);
  fit.destDeviation = lumaCodes * std::sqrt(all.destScatter() / all.count);
  if (all.destScatter() > 0) fit.explained = 1.0 - unexplained / all.destScatter();
  return fit;
}

}  // namespace diagnosis

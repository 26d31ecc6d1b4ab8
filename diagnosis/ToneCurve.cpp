#include "diagnosis/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

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

/// Parts of a picture, each in or out as a whole.
constexpr int partsAcross = 16, partsDown = 12;
using PartsOut = std::array<bool, std::size_t{partsAcross} * partsDown>;

std::size_t partOf(const Signal& signal, int x, int y) {
  return static_cast<std::size_t>(y * partsDown / signal.height) * partsAcross +
         static_cast<std::size_t>(x * partsAcross / signal.width);
}

template <typename Take>
void forEachSample(const Signal& signal, const PartsOut& out, Take take) {
  std::size_t at = 0;
  for (int y = 0; y < signal.height; ++y) {
    for (int x = 0; x < signal.width; ++x, ++at) {
      const std::size_t part = partOf(signal, x, y);
      if (!out[part]) take(at, part);
    }
  }
}

/// What the means of the curve leave unexplained, in all and in each part.
struct Unexplained {
  double all = 0, scatter = 0;
  std::array<double, std::tuple_size_v<PartsOut>> parts{};
};

Unexplained unexplained(const Signal& source, const Signal& dest, const PartsOut& out) {
  std::array<Sums, bins> sums;
  Sums all;
  forEachSample(source, out, [&](std::size_t at, std::size_t) {
    const double s = double{source.luma()[at]}, d = double{dest.luma()[at]};
    sums[binOf(source.luma()[at])].add(s, d);
    all.add(s, d);
  });
  Unexplained result;
  result.scatter = all.destScatter();
  forEachSample(source, out, [&](std::size_t at, std::size_t part) {
    const Sums& bin = sums[binOf(source.luma()[at])];
    const double error = double{dest.luma()[at]} - bin.dest / bin.count;
    result.parts[part] += error * error;
    result.all += error * error;
  });
  return result;
}

PartsOut worstTenth(const Unexplained& found) {
  std::array<std::size_t, std::tuple_size_v<PartsOut>> order{};
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t one, std::size_t other) { return found.parts[one] > found.parts[other]; });
  PartsOut out{};
  for (std::size_t i = 0; i < order.size() / 10; ++i) out[order[i]] = true;
  return out;
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
  const double least = std::max(8.0, all.count / 4000);
  for (const Sums& part : parts) {
    if (part.count >= least) fit.curve.push_back({codes(part.source / part.count), codes(part.dest / part.count)});
  }
  fit.sourceDeviation = lumaCodes * std::sqrt(all.sourceScatter() / all.count);
  fit.destDeviation = lumaCodes * std::sqrt(all.destScatter() / all.count);
  return fit;
}

double explainedShare(const Signal& source, const Signal& dest) {
  const PartsOut out = worstTenth(unexplained(source, dest, {}));
  const Unexplained left = unexplained(source, dest, out);
  return left.scatter > 0 ? std::max(0.0, 1.0 - left.all / left.scatter) : 0.0;
}

}  // namespace diagnosis

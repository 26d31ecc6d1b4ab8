#include "diagnosis/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "diagnosis/Signal.h"
#include "diagnosis/Statistics.h"

namespace diagnosis {
namespace {

constexpr std::size_t bins = 64;
constexpr float lowest = -0.1F, highest = 1.15F;

std::size_t binOf(float luma) {
  constexpr float binsPerLuma = static_cast<float>(bins) / (highest - lowest), last = static_cast<float>(bins - 1);
  return static_cast<std::size_t>(std::min(std::max((luma - lowest) * binsPerLuma, 0.0F), last));
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

/// Samples that lie side by side in one part.
struct Run {
  std::size_t part = 0, begin = 0, end = 0;
};

/// In the order of the samples.
template <typename Take>
void forEachRun(const Signal& signal, Take take) {
  const std::vector<std::size_t> columns = blockEnds(signal.width, partsAcross);
  std::size_t line = 0;
  for (int y = 0; y < signal.height; ++y, line += static_cast<std::size_t>(signal.width)) {
    const std::size_t row = static_cast<std::size_t>(y * partsDown / signal.height) * partsAcross;
    std::size_t begin = line;
    for (std::size_t column = 0; column < columns.size(); ++column) {
      take(Run{row + column, begin, line + columns[column]});
      begin = line + columns[column];
    }
  }
}

/// What the means of the curve leave unexplained: of all parts but those that are out, and in each part.
struct Unexplained {
  double all = 0, scatter = 0;
  std::array<double, std::tuple_size_v<PartsOut>> parts{}, samples{};
  /// A root mean square, in codes of 8 bits.
  double inPart(std::size_t part) const { return lumaCodes * std::sqrt(parts[part] / std::max(1.0, samples[part])); }
};

/// Destinations of one bin.
struct BinSum {
  double count = 0, dest = 0;
};

/// The means of the bins; an empty one's goes on from the nearest as a straight line would.
std::array<double, bins> curveThrough(const std::array<BinSum, bins>& sums) {
  constexpr double width = double{highest - lowest} / double{bins};
  std::array<double, bins> curve{};
  for (std::size_t bin = 0; bin < bins; ++bin) {
    for (std::size_t away = 0; away < bins; ++away) {
      const bool below = away <= bin && sums[bin - away].count > 0;
      const bool above = bin + away < bins && sums[bin + away].count > 0;
      if (!below && !above) continue;
      const BinSum& nearest = below ? sums[bin - away] : sums[bin + away];
      const double distance = width * static_cast<double>(away);
      curve[bin] = nearest.dest / nearest.count + (below ? distance : -distance);
      break;
    }
  }
  return curve;
}

/// A destination beside the bins of its source.
struct BinnedPair {
  const Signal& dest;
  std::vector<std::uint8_t> binOfSample;

  BinnedPair(const Signal& itsDest, std::vector<std::uint8_t> itsBins)
      : dest(itsDest), binOfSample(std::move(itsBins)) {}
  BinnedPair(const Signal& source, const Signal& itsDest) : dest(itsDest), binOfSample(source.size()) {
    for (std::size_t i = 0; i < binOfSample.size(); ++i) {
      binOfSample[i] = static_cast<std::uint8_t>(binOf(source.luma()[i]));
    }
  }
};

/// The curve is that of the parts that are not out.
Unexplained unexplained(const BinnedPair& pair, const PartsOut& out) {
  const std::vector<float>& dest = pair.dest.luma();
  std::array<BinSum, bins> sums;
  BinSum all;
  double squares = 0;
  forEachRun(pair.dest, [&](const Run& run) {
    for (std::size_t at = run.begin; at < run.end && !out[run.part]; ++at) {
      const double d = double{dest[at]};
      BinSum& sum = sums[pair.binOfSample[at]];
      ++sum.count;
      sum.dest += d;
      squares += d * d;
    }
  });
  for (const BinSum& sum : sums) {
    all.count += sum.count;
    all.dest += sum.dest;
  }
  const std::array<double, bins> curve = curveThrough(sums);
  Unexplained result;
  result.scatter = all.count > 0 ? std::max(0.0, squares - all.dest * all.dest / all.count) : 0.0;
  forEachRun(pair.dest, [&](const Run& run) {
    double errors = 0;
    for (std::size_t at = run.begin; at < run.end; ++at) {
      const double error = double{dest[at]} - curve[pair.binOfSample[at]];
      errors += error * error;
    }
    result.parts[run.part] += errors;
    result.samples[run.part] += static_cast<double>(run.end - run.begin);
  });
  for (std::size_t part = 0; part < out.size(); ++part) {
    if (!out[part]) result.all += result.parts[part];
  }
  return result;
}

PartsOut worstSeventh(const Unexplained& found) {
  std::array<std::size_t, std::tuple_size_v<PartsOut>> order{};
  std::iota(order.begin(), order.end(), std::size_t{0});
  constexpr std::size_t count = order.size() / 7;
  std::nth_element(order.begin(), order.begin() + count, order.end(),
                   [&](std::size_t one, std::size_t other) { return found.parts[one] > found.parts[other]; });
  PartsOut out{};
  for (std::size_t i = 0; i < count; ++i) out[order[i]] = true;
  return out;
}

/// Of samples of one level, or of all levels about their means: what both chroma signals and the destination's luma
/// have in common.
struct ChromaSums {
  double count = 0, blue = 0, red = 0, dest = 0;
  double blues = 0, reds = 0, blueRed = 0, blueDest = 0, redDest = 0;
  void add(double b, double r, double d) {
    ++count;
    blue += b, red += r, dest += d;
    blues += b * b, reds += r * r, blueRed += b * r, blueDest += b * d, redDest += r * d;
  }
  void addScatterOf(const ChromaSums& level) {
    const double n = std::max(1.0, level.count);
    count += level.count;
    blues += level.blues - level.blue * level.blue / n;
    reds += level.reds - level.red * level.red / n;
    blueRed += level.blueRed - level.blue * level.red / n;
    blueDest += level.blueDest - level.blue * level.dest / n;
    redDest += level.redDest - level.red * level.dest / n;
  }
};

/// The destination's luma without what another matrix mixed of the source's chroma into it: as much of either signal as
/// fits best at each level of luma, by least squares.
std::vector<float> withoutChroma(const Signal& source, const BinnedPair& pair) {
  const std::vector<float>&blue = source.planes[1], &red = source.planes[2], &dest = pair.dest.luma();
  std::array<ChromaSums, bins> levels;
  for (std::size_t i = 0; i < dest.size(); ++i) {
    levels[pair.binOfSample[i]].add(double{blue[i]}, double{red[i]}, double{dest[i]});
  }
  ChromaSums all;
  for (const ChromaSums& level : levels) all.addScatterOf(level);
  const double little = 1e-5 * all.count;  // chroma that hardly varies takes hardly anything
  const double blues = all.blues + little, reds = all.reds + little;
  const double determinant = std::max(little * little, blues * reds - all.blueRed * all.blueRed);
  const auto ofBlue = static_cast<float>((all.blueDest * reds - all.redDest * all.blueRed) / determinant);
  const auto ofRed = static_cast<float>((all.redDest * blues - all.blueDest * all.blueRed) / determinant);
  std::vector<float> luma(dest.size());
  for (std::size_t i = 0; i < luma.size(); ++i) luma[i] = dest[i] - ofBlue * blue[i] - ofRed * red[i];
  return luma;
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

double explainedRoughly(const std::vector<float>& source, const std::vector<float>& dest) {
  struct Part {
    float count = 0, dest = 0;
  };
  std::array<Part, bins> parts{};
  float sum = 0, squares = 0;
  for (std::size_t i = 0; i < source.size(); ++i) {
    Part& part = parts[binOf(source[i])];
    ++part.count;
    part.dest += dest[i];
    sum += dest[i];
    squares += dest[i] * dest[i];
  }
  const float mean = sum * sum / std::max(1.0F, static_cast<float>(source.size()));
  float explained = -mean;
  for (const Part& part : parts) {
    if (part.count > 0) explained += part.dest * part.dest / part.count;
  }
  return squares > mean ? static_cast<double>(explained / (squares - mean)) : 0.0;
}

double explainedShare(const Signal& source, const Signal& dest) {
  // A quarter of a code: what varies by less is of one colour, and rounded.
  constexpr double leastScatter = 1.3e-6;
  // Chroma can hardly add to so much.
  constexpr double enough = 0.995;
  const BinnedPair pair(source, dest);
  const Unexplained left = unexplained(pair, worstSeventh(unexplained(pair, {})));
  if (left.scatter <= leastScatter * static_cast<double>(dest.size())) return 0.0;
  const double byLuma = std::max(0.0, 1.0 - left.all / left.scatter);
  if (byLuma >= enough || source.planes[1].empty()) return byLuma;

  const Signal unmixed{dest.width, dest.height, {withoutChroma(source, pair), {}, {}}};
  const BinnedPair unmixedPair{unmixed, pair.binOfSample};
  const PartsOut out = worstSeventh(unexplained(unmixedPair, {}));
  const double scatter = unexplained(pair, out).scatter;
  return scatter > 0 ? std::max(byLuma, 1.0 - unexplained(unmixedPair, out).all / scatter) : byLuma;
}

std::vector<bool> coveredSamples(const Signal& source, const Signal& dest) {
  constexpr double farOff = 8, farOffTimes = 4;
  const BinnedPair pair(source, dest);
  const PartsOut worst = worstSeventh(unexplained(pair, {}));
  const Unexplained left = unexplained(pair, worst);
  std::vector<double> errors;
  for (std::size_t part = 0; part < worst.size(); ++part) {
    if (!worst[part]) errors.push_back(left.inPart(part));
  }
  const double limit = std::max(farOff, farOffTimes * medianOf(errors));
  std::vector<bool> covered;
  forEachRun(source, [&](const Run& run) {
    covered.insert(covered.end(), run.end - run.begin, worst[run.part] && left.inPart(run.part) > limit);
  });
  return covered;
}

}  // namespace diagnosis

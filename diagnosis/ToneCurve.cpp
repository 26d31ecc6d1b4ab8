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

std::uint8_t binOf(float luma) {
  constexpr float binsPerLuma = static_cast<float>(bins) / (highest - lowest), last = static_cast<float>(bins - 1);
  const float place = (luma - lowest) * binsPerLuma;
  const float above = place > 0 ? place : 0.0F;
  return static_cast<std::uint8_t>(static_cast<int>(above < last ? above : last));
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

/// Destinations of each bin, and the squares of all.
struct BinSums {
  std::array<std::uint32_t, bins> count{};
  std::array<double, bins> dest{};
  double squares = 0;

  /// What they vary by, and what is left of that about the means of the bins.
  double scatter() const {
    double samples = 0, sum = 0;
    for (std::size_t bin = 0; bin < bins; ++bin) samples += count[bin], sum += dest[bin];
    return samples > 0 ? std::max(0.0, squares - sum * sum / samples) : 0.0;
  }
  double aboutMeans() const {
    double left = squares;
    for (std::size_t bin = 0; bin < bins; ++bin) {
      if (count[bin] > 0) left -= dest[bin] * dest[bin] / count[bin];
    }
    return std::max(0.0, left);
  }
};

/// The means of the bins; an empty one's goes on from the nearest as a straight line would.
std::array<double, bins> curveThrough(const BinSums& sums) {
  constexpr double width = double{highest - lowest} / double{bins};
  std::array<double, bins> curve{};
  for (std::size_t bin = 0; bin < bins; ++bin) {
    for (std::size_t away = 0; away < bins; ++away) {
      const bool below = away <= bin && sums.count[bin - away] > 0;
      const bool above = bin + away < bins && sums.count[bin + away] > 0;
      if (!below && !above) continue;
      const std::size_t nearest = below ? bin - away : bin + away;
      const double distance = width * static_cast<double>(away);
      curve[bin] = sums.dest[nearest] / sums.count[nearest] + (below ? distance : -distance);
      break;
    }
  }
  return curve;
}

/// A destination's luma beside the bins of its source.
struct BinnedPair {
  const Signal& dest;
  const std::vector<std::uint8_t>& binOfSample;
};

BinSums sumsOf(const BinnedPair& pair) {
  const std::vector<float>& dest = pair.dest.luma();
  BinSums sums;
  double squares = 0;
  for (std::size_t at = 0; at < dest.size(); ++at) {
    const double d = double{dest[at]};
    const std::size_t bin = pair.binOfSample[at];
    ++sums.count[bin];
    sums.dest[bin] += d;
    squares += d * d;
  }
  sums.squares = squares;
  return sums;
}

/// The sums of the parts that are not out: a few are taken away sooner than most are summed up anew.
BinSums without(const PartsOut& out, BinSums sums, const BinnedPair& pair) {
  forEachRun(pair.dest, [&](const Run& run) {
    for (std::size_t at = run.begin; at < run.end && out[run.part]; ++at) {
      const double d = double{pair.dest.luma()[at]};
      const std::size_t bin = pair.binOfSample[at];
      --sums.count[bin];
      sums.dest[bin] -= d;
      sums.squares -= d * d;
    }
  });
  return sums;
}

/// What the curve through the means leaves unexplained in each part.
struct PartErrors {
  std::array<double, std::tuple_size_v<PartsOut>> squares{}, samples{};
  /// A root mean square, in codes of 8 bits.
  double of(std::size_t part) const { return lumaCodes * std::sqrt(squares[part] / std::max(1.0, samples[part])); }
};

PartErrors errorsOf(const BinnedPair& pair, const BinSums& sums) {
  const std::vector<float>& dest = pair.dest.luma();
  const std::array<double, bins> curve = curveThrough(sums);
  PartErrors result;
  forEachRun(pair.dest, [&](const Run& run) {
    double errors = 0;
    for (std::size_t at = run.begin; at < run.end; ++at) {
      const double error = double{dest[at]} - curve[pair.binOfSample[at]];
      errors += error * error;
    }
    result.squares[run.part] += errors;
    result.samples[run.part] += static_cast<double>(run.end - run.begin);
  });
  return result;
}

PartsOut worstSeventh(const PartErrors& errors) {
  std::array<std::size_t, std::tuple_size_v<PartsOut>> order{};
  std::iota(order.begin(), order.end(), std::size_t{0});
  constexpr std::size_t count = order.size() / 7;
  std::nth_element(order.begin(), order.begin() + count, order.end(),
                   [&](std::size_t one, std::size_t other) { return errors.squares[one] > errors.squares[other]; });
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

std::vector<std::uint8_t> levelsOf(const std::vector<float>& luma) {
  std::vector<std::uint8_t> result(luma.size());
  const float* const in = luma.data();
  std::uint8_t* const out = result.data();  // bytes could be anything's, the vectors' own too
  for (std::size_t i = 0, size = luma.size(); i < size; ++i) out[i] = binOf(in[i]);
  return result;
}

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

std::vector<float> standardised(std::vector<float> luma) {
  double sum = 0, squares = 0;
  for (const float value : luma) sum += double{value}, squares += double{value} * double{value};
  const double mean = sum / std::max(1.0, static_cast<double>(luma.size())), scatter = squares - mean * sum;
  const double scale = scatter > 0 ? 1 / std::sqrt(scatter) : 0.0;
  for (float& value : luma) value = static_cast<float>(scale * (double{value} - mean));
  return luma;
}

double explainedRoughly(const std::vector<std::uint8_t>& levels, const std::vector<float>& dest) {
  std::array<std::uint32_t, bins> counts{};
  std::array<float, bins> sums{};
  for (std::size_t i = 0; i < levels.size(); ++i) {
    ++counts[levels[i]];
    sums[levels[i]] += dest[i];
  }
  float explained = 0;
  for (std::size_t bin = 0; bin < bins; ++bin) {
    if (counts[bin] > 0) explained += sums[bin] * sums[bin] / static_cast<float>(static_cast<int>(counts[bin]));
  }
  return double{explained};
}

double explainedShare(const Signal& source, const Signal& dest) {
  // A quarter of a code: what varies by less is of one colour, and rounded.
  constexpr double leastScatter = 1.3e-6;
  // Chroma can hardly add to so much.
  constexpr double enough = 0.995;
  const std::vector<std::uint8_t> binOfSample = levelsOf(source.luma());
  const BinnedPair pair{dest, binOfSample};
  const BinSums all = sumsOf(pair), left = without(worstSeventh(errorsOf(pair, all)), all, pair);
  const double scatter = left.scatter();
  if (scatter <= leastScatter * static_cast<double>(dest.size())) return 0.0;
  const double byLuma = std::max(0.0, 1.0 - left.aboutMeans() / scatter);
  if (byLuma >= enough || source.planes[1].empty()) return byLuma;

  const Signal unmixed{dest.width, dest.height, {withoutChroma(source, pair), {}, {}}};
  const BinnedPair unmixedPair{unmixed, binOfSample};
  const BinSums allUnmixed = sumsOf(unmixedPair);
  const PartsOut out = worstSeventh(errorsOf(unmixedPair, allUnmixed));
  const double mixedScatter = without(out, all, pair).scatter();
  const double unexplained = without(out, allUnmixed, unmixedPair).aboutMeans();
  return mixedScatter > 0 ? std::max(byLuma, 1.0 - unexplained / mixedScatter) : byLuma;
}

std::vector<bool> coveredSamples(const Signal& source, const Signal& dest) {
  constexpr double farOff = 8, farOffTimes = 4;
  const std::vector<std::uint8_t> binOfSample = levelsOf(source.luma());
  const BinnedPair pair{dest, binOfSample};
  const BinSums all = sumsOf(pair);
  const PartsOut worst = worstSeventh(errorsOf(pair, all));
  const PartErrors left = errorsOf(pair, without(worst, all, pair));
  std::vector<double> errors;
  for (std::size_t part = 0; part < worst.size(); ++part) {
    if (!worst[part]) errors.push_back(left.of(part));
  }
  const double limit = std::max(farOff, farOffTimes * medianOf(errors));
  std::vector<bool> covered;
  forEachRun(source, [&](const Run& run) {
    covered.insert(covered.end(), run.end - run.begin, worst[run.part] && left.of(run.part) > limit);
  });
  return covered;
}

}  // namespace diagnosis

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

constexpr std::size_t bins = 64;
constexpr float lowest = -0.1F, highest = 1.15F;

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

/// Parts of a picture, each in or out as a whole.
constexpr int partsAcross = 16, partsDown = 12;
using PartsOut = std::array<bool, std::size_t{partsAcross} * partsDown>;

/// Calls `take` with where each line of the wanted parts begins and ends among the samples.
template <typename Wanted, typename Take>
void forEachLineOf(Wanted wanted, int width, int height, Take take) {
  const std::vector<std::size_t> columns = blockEnds(width, partsAcross), rows = blockEnds(height, partsDown);
  const auto all = static_cast<std::size_t>(width);
  std::size_t part = 0;
  for (std::size_t row = 0, top = 0; row < rows.size(); top = rows[row++]) {
    for (std::size_t column = 0, left = 0; column < columns.size(); left = columns[column++], ++part) {
      if (!wanted(part)) continue;
      for (std::size_t y = top; y < rows[row]; ++y) take(y * all + left, y * all + columns[column]);
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
  const ToneTarget& dest;
  const std::vector<std::uint8_t>& binOfSample;
};

BinSums sumsOf(const BinnedPair& pair) {
  const std::vector<double>& dest = pair.dest.luma;
  BinSums sums;
  for (std::size_t at = 0; at < dest.size(); ++at) {
    const std::size_t bin = pair.binOfSample[at];
    ++sums.count[bin];
    sums.dest[bin] += dest[at];
  }
  sums.squares = pair.dest.squares;
  return sums;
}

/// The sums of the parts that are not out: a few are taken away sooner than most are summed up anew.
BinSums without(const PartsOut& out, BinSums sums, const BinnedPair& pair) {
  const auto isOut = [&](std::size_t part) { return out[part]; };
  forEachLineOf(isOut, pair.dest.width, pair.dest.height, [&](std::size_t begin, std::size_t end) {
    for (std::size_t at = begin; at < end; ++at) {
      const double d = pair.dest.luma[at];
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
  const std::vector<std::size_t> columns = blockEnds(pair.dest.width, partsAcross),
                                 rows = blockEnds(pair.dest.height, partsDown);
  const std::array<double, bins> curve = curveThrough(sums);
  const double* dest = pair.dest.luma.data();
  const std::uint8_t* bin = pair.binOfSample.data();
  std::vector<double> line(static_cast<std::size_t>(pair.dest.width));  // errors of a row of parts, added up
  PartErrors result;
  std::size_t part = 0;
  for (std::size_t row = 0, top = 0; row < rows.size(); top = rows[row++]) {
    std::fill(line.begin(), line.end(), 0.0);
    for (std::size_t y = top; y < rows[row]; ++y) {
      for (double& errors : line) {
        const double error = *dest++ - curve[*bin++];
        errors += error * error;
      }
    }
    for (std::size_t column = 0, x = 0; column < columns.size(); ++column, ++part) {
      result.samples[part] = static_cast<double>((rows[row] - top) * (columns[column] - x));
      for (; x < columns[column]; ++x) result.squares[part] += line[x];
    }
  }
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

/// What both chroma signals and the destination's luma have in common: of all samples, and of those of one level.
struct ChromaProducts {
  double blues = 0, reds = 0, blueRed = 0, blueDest = 0, redDest = 0;
  void add(double factor, double b, double r, double d) {
    const double blue = factor * b, red = factor * r;
    blues += blue * b, reds += red * r, blueRed += blue * r, blueDest += blue * d, redDest += red * d;
  }
};

struct ChromaSums {
  double blue = 0, red = 0;
};

/// About the means of the levels of luma.
ChromaProducts productsOf(const Signal& source, const BinnedPair& pair, const BinSums& sums) {
  const std::vector<float>&blue = source.planes[1], &red = source.planes[2];
  const std::vector<double>& dest = pair.dest.luma;
  std::array<ChromaSums, bins> levels;
  ChromaProducts products;
  for (std::size_t i = 0; i < dest.size(); ++i) {
    const double b = double{blue[i]}, r = double{red[i]};
    ChromaSums& level = levels[pair.binOfSample[i]];
    level.blue += b, level.red += r;
    products.add(1, b, r, dest[i]);
  }
  for (std::size_t bin = 0; bin < bins; ++bin) {
    if (sums.count[bin] > 0) products.add(-1.0 / sums.count[bin], levels[bin].blue, levels[bin].red, sums.dest[bin]);
  }
  return products;
}

/// The destination's luma without what another matrix mixed of the source's chroma into it: as much of either signal as
/// fits best at each level of luma, by least squares.
ToneTarget withoutChroma(const Signal& source, const BinnedPair& pair, const BinSums& sums) {
  const ChromaProducts products = productsOf(source, pair, sums);
  const double little = 1e-5 * static_cast<double>(source.size());  // chroma that hardly varies takes hardly anything
  const double blues = products.blues + little, reds = products.reds + little;
  const double determinant = std::max(little * little, blues * reds - products.blueRed * products.blueRed);
  const double ofBlue = (products.blueDest * reds - products.redDest * products.blueRed) / determinant;
  const double ofRed = (products.redDest * blues - products.blueDest * products.blueRed) / determinant;
  std::vector<double> luma = pair.dest.luma;
  for (std::size_t i = 0; i < luma.size(); ++i) {
    luma[i] -= ofBlue * double{source.planes[1][i]} + ofRed * double{source.planes[2][i]};
  }
  return ToneTarget(pair.dest.width, pair.dest.height, std::move(luma));
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

ToneTarget::ToneTarget(const Signal& dest)
    : ToneTarget(dest.width, dest.height, std::vector<double>(dest.luma().begin(), dest.luma().end())) {}

ToneTarget::ToneTarget(int itsWidth, int itsHeight, std::vector<double> itsLuma)
    : width(itsWidth), height(itsHeight), luma(std::move(itsLuma)) {
  for (const double value : luma) squares += value * value;
}

double explainedShare(const Signal& source, const ToneTarget& dest) {
  // A quarter of a code: what varies by less is of one colour, and rounded.
  constexpr double leastScatter = 1.3e-6;
  // Chroma can hardly add to so much.
  constexpr double enough = 0.995;
  const std::vector<std::uint8_t> binOfSample = levelsOf(source.luma());
  const BinnedPair pair{dest, binOfSample};
  const BinSums all = sumsOf(pair), left = without(worstSeventh(errorsOf(pair, all)), all, pair);
  const double scatter = left.scatter();
  if (scatter <= leastScatter * static_cast<double>(dest.luma.size())) return 0.0;
  const double byLuma = std::max(0.0, 1.0 - left.aboutMeans() / scatter);
  if (byLuma >= enough || source.planes[1].empty()) return byLuma;

  const ToneTarget unmixed = withoutChroma(source, pair, all);
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
  const ToneTarget target(dest);
  const BinnedPair pair{target, binOfSample};
  const BinSums all = sumsOf(pair);
  const PartsOut worst = worstSeventh(errorsOf(pair, all));
  const PartErrors left = errorsOf(pair, without(worst, all, pair));
  std::vector<double> errors;
  for (std::size_t part = 0; part < worst.size(); ++part) {
    if (!worst[part]) errors.push_back(left.of(part));
  }
  const double limit = std::max(farOff, farOffTimes * medianOf(errors));
  const auto isCovered = [&](std::size_t part) { return worst[part] && left.of(part) > limit; };
  std::vector<bool> covered(source.size());
  forEachLineOf(isCovered, source.width, source.height, [&](std::size_t begin, std::size_t end) {
    std::fill(covered.begin() + static_cast<std::ptrdiff_t>(begin), covered.begin() + static_cast<std::ptrdiff_t>(end),
              true);
  });
  return covered;
}

}  // namespace diagnosis

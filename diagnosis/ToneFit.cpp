#include "diagnosis/ToneFit.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "diagnosis/numbers/Lanes.h"
#include "diagnosis/numbers/Statistics.h"

namespace diagnosis {
namespace {

/// Chroma can hardly add to so much.
constexpr double explainedEnough = 0.995;

using Levels = std::vector<std::uint8_t>;
/// Parts that do not count.
using PartsOut = std::array<bool, partCount>;

/// Sums by level. Neighbours mostly are of one level: they are added up apart, so that none waits for the one before.
template <typename Sum, typename Add>
std::array<Sum, toneLevels> summedByLevel(const Levels& levels, Add add) {
  constexpr std::size_t apart = 4;
  std::array<std::array<Sum, toneLevels>, apart> some{};
  const std::uint8_t* const level = levels.data();
  const auto take = [&](std::size_t which, std::size_t at) { add(some[which][level[at]], at); };
  const std::size_t size = levels.size(), rest = size % apart;
  for (std::size_t at = 0; at < size - rest; at += apart) {
    take(0, at), take(1, at + 1), take(2, at + 2), take(3, at + 3);
  }
  for (std::size_t at = size - rest; at < size; ++at) take(0, at);
  for (std::size_t which = 1; which < apart; ++which) {
    for (std::size_t at = 0; at < toneLevels; ++at) some[0][at].join(some[which][at]);
  }
  return some[0];
}

AllLevelSums sumsOf(const std::vector<double>& dest, const Levels& levels) {
  const double* const in = dest.data();
  return summedByLevel<LevelSums>(levels, [in](LevelSums& level, std::size_t at) {
    level.count += 1;
    level.dest += in[at];
  });
}

/// The sums of the parts that are not out.
AllLevelSums without(const PartsOut& out, AllLevelSums sums, const ToneTarget& dest, const Levels& levels) {
  for (std::size_t part = 0; part < partCount; ++part) {
    if (!out[part]) continue;
    dest.grid.forEachLine(part, [&](std::size_t begin, std::size_t end) {
      for (std::size_t at = begin; at < end; ++at) {
        sums[levels[at]].count -= 1;
        sums[levels[at]].dest -= dest.luma[at];
      }
    });
  }
  return sums;
}

/// The means of the levels; an empty one's goes on from the nearest as a straight line would.
std::array<double, toneLevels> curveThrough(const AllLevelSums& sums) {
  std::array<double, toneLevels> curve{};
  for (std::size_t level = 0; level < toneLevels; ++level) {
    for (std::size_t away = 0; away < toneLevels; ++away) {
      const bool below = away <= level && sums[level - away].count > 0;
      const bool above = level + away < toneLevels && sums[level + away].count > 0;
      if (!below && !above) continue;
      const LevelSums& nearest = sums[below ? level - away : level + away];
      const double distance = toneLevelWidth * static_cast<double>(away);
      curve[level] = nearest.dest / nearest.count + (below ? distance : -distance);
      break;
    }
  }
  return curve;
}

/// What is left unexplained in each part: squares.
using PartErrors = std::array<double, partCount>;

/// Of what is left of each sample. The lines of a band are added up side by side.
template <typename Error>
PartErrors errorsOf(const PartGrid& grid, Error error) {
  const std::size_t length = grid.length();
  std::vector<double> line(length);
  double* const sums = line.data();
  PartErrors errors{};
  for (std::size_t band = 0; band < grid.bands(); ++band) {
    std::fill(line.begin(), line.end(), 0.0);
    for (std::size_t i = grid.firstLine(band); i < grid.endLine(band); ++i) {
      for (std::size_t x = 0; x < length; ++x) {
        const double left = error(i * length + x);
        sums[x] += left * left;
      }
    }
    for (std::size_t along = 0, x = 0; along < grid.ends().size(); ++along) {
      double squares = 0;
      for (; x < grid.ends()[along]; ++x) squares += sums[x];
      errors[grid.partAt(band, along)] = squares;
    }
  }
  return errors;
}

/// Of parts that are as bad the first ones.
PartsOut worstSeventh(const PartErrors& errors) {
  constexpr std::size_t count = partCount / 7;
  PartErrors sorted = errors;
  std::nth_element(sorted.begin(), sorted.begin() + (count - 1), sorted.end(), std::greater<>());
  const double limit = sorted[count - 1];
  PartsOut out{};
  std::size_t left = count;
  for (std::size_t part = 0; part < partCount; ++part) {
    out[part] = errors[part] > limit;
    left -= out[part] ? 1 : 0;
  }
  for (std::size_t part = 0; part < partCount && left > 0; ++part) {
    if (errors[part] == limit) out[part] = true, --left;
  }
  return out;
}

/// What a destination varies by, and what is left of it unexplained: squares.
struct Unexplained {
  double squares = 0, scatter = 0;
};

/// Without the worst parts. The errors are from the means of the levels of all parts, on whose two sides they are
/// alike: from the means of those that are kept they are less by what the others' amount to.
template <typename Error>
Unexplained unexplained(const ToneTarget& dest, const Levels& levels, const AllLevelSums& sums, Error error) {
  const PartErrors errors = errorsOf(dest.grid, error);
  const PartsOut out = worstSeventh(errors);
  Unexplained left;
  LumaSums kept = dest.all;
  std::array<LevelSums, toneLevels> others{};
  for (std::size_t part = 0; part < partCount; ++part) {
    if (!out[part]) {
      left.squares += errors[part];
      continue;
    }
    kept.remove(dest.parts[part]);
    dest.grid.forEachLine(part, [&](std::size_t begin, std::size_t end) {
      for (std::size_t at = begin; at < end; ++at) {
        LevelSums& level = others[levels[at]];
        level.count += 1;
        level.dest += error(at);
      }
    });
  }
  for (std::size_t level = 0; level < toneLevels; ++level) {
    const double count = sums[level].count - others[level].count;
    if (count > 0) left.squares -= others[level].dest * others[level].dest / count;
  }
  left.squares = std::max(0.0, left.squares);
  left.scatter = kept.count > 0 ? std::max(0.0, kept.squares - kept.sum * kept.sum / kept.count) : 0.0;
  return left;
}

/// What both chroma signals and the destination's luma have in common: of all samples, and of those of one level.
struct ChromaProducts {
  double blues = 0, reds = 0, blueRed = 0, blueDest = 0, redDest = 0;
  void add(double factor, double b, double r, double d) {
    const double blue = factor * b, red = factor * r;
    blues += blue * b, reds += red * r, blueRed += blue * r, blueDest += blue * d, redDest += red * d;
  }
};

/// Products are added up side by side, in single precision, for as long as that keeps what they amount to.
class ProductLanes {
 public:
  void add(const float* blue, const float* red, const float* dest) {
    for (std::size_t i = 0; i < laneCount; ++i) {
      const float b = blue[i], r = red[i], d = dest[i];
      blues_[i] += b * b, reds_[i] += r * r, blueRed_[i] += b * r, blueDest_[i] += b * d, redDest_[i] += r * d;
    }
  }
  void addTo(ChromaProducts& products) const {
    for (std::size_t i = 0; i < laneCount; ++i) {
      products.blues += double{blues_[i]}, products.reds += double{reds_[i]}, products.blueRed += double{blueRed_[i]};
      products.blueDest += double{blueDest_[i]}, products.redDest += double{redDest_[i]};
    }
  }

 private:
  Lanes blues_{}, reds_{}, blueRed_{}, blueDest_{}, redDest_{};
};

ChromaProducts productsOf(const std::vector<float>& blue, const std::vector<float>& red,
                          const std::vector<float>& dest) {
  constexpr std::size_t together = 16 * laneCount;
  ChromaProducts products;
  std::size_t at = 0;
  while (at + laneCount <= dest.size()) {
    ProductLanes lanes;
    for (const std::size_t end = std::min(at + together, dest.size()); at + laneCount <= end; at += laneCount) {
      lanes.add(&blue[at], &red[at], &dest[at]);
    }
    lanes.addTo(products);
  }
  for (; at < dest.size(); ++at) products.add(1, double{blue[at]}, double{red[at]}, double{dest[at]});
  return products;
}

struct ChromaSums {
  double blue = 0, red = 0;
  void join(const ChromaSums& other) { blue += other.blue, red += other.red; }
};
using AllChromaSums = std::array<ChromaSums, toneLevels>;

/// What another matrix mixed into luma of a source's chroma: as much of either signal as fits best at each level of
/// luma, by least squares.
struct ChromaShares {
  double ofBlue = 0, ofRed = 0;
};

ChromaShares sharesOf(ChromaProducts products, const AllChromaSums& chroma, const AllLevelSums& sums, double samples) {
  for (std::size_t level = 0; level < toneLevels; ++level) {  // about the means of the levels
    if (sums[level].count <= 0) continue;
    products.add(-1.0 / sums[level].count, chroma[level].blue, chroma[level].red, sums[level].dest);
  }
  const double little = 1e-5 * samples;  // chroma that hardly varies takes hardly anything
  const double blues = products.blues + little, reds = products.reds + little;
  const double determinant = std::max(little * little, blues * reds - products.blueRed * products.blueRed);
  return {(products.blueDest * reds - products.redDest * products.blueRed) / determinant,
          (products.redDest * blues - products.blueDest * products.blueRed) / determinant};
}

}  // namespace

PartGrid::PartGrid(int width, int height, Lines lines)
    : byRows_(lines == Lines::Rows),
      length_(static_cast<std::size_t>(width)),
      lineEnds_(blockEnds(height, byRows_ ? partsDown : partsAcross)),
      ends_(blockEnds(width, byRows_ ? partsAcross : partsDown)) {}

ToneTarget::ToneTarget(const Signal& dest, Lines lines)
    : grid(dest.width, dest.height, lines), samples(dest.luma()), luma(samples.begin(), samples.end()) {
  for (std::size_t part = 0; part < partCount; ++part) {
    grid.forEachLine(part, [&](std::size_t begin, std::size_t end) {
      for (std::size_t at = begin; at < end; ++at) parts[part].add(luma[at]);
    });
    all.add(parts[part]);
  }
}

ToneFit::ToneFit(const std::vector<float>& sourceLuma, const ToneTarget& dest)
    : dest_(dest), levels_(levelsOf(sourceLuma)), sums_(sumsOf(dest.luma, levels_)) {
  // A quarter of a code: what varies by less is of one colour, and rounded.
  constexpr double leastScatter = 1.3e-6;
  std::array<double, toneLevels> means{};
  for (std::size_t level = 0; level < toneLevels; ++level) {
    if (sums_[level].count > 0) means[level] = sums_[level].dest / sums_[level].count;
  }
  const double* const in = dest.luma.data();
  const std::uint8_t* const level = levels_.data();
  const Unexplained left = unexplained(dest, levels_, sums_, [&](std::size_t at) { return in[at] - means[level[at]]; });
  isFlat_ = left.scatter <= leastScatter * dest.all.count;
  if (!isFlat_) byLuma_ = std::max(0.0, 1.0 - left.squares / left.scatter);
}

bool ToneFit::asksForChroma() const {
  return !isFlat_ && byLuma_ < explainedEnough;
}

double ToneFit::withChroma(const std::vector<float>& blue, const std::vector<float>& red) const {
  if (!asksForChroma()) return byLuma_;
  const float *const blues = blue.data(), *const reds = red.data();
  const AllChromaSums chroma = summedByLevel<ChromaSums>(levels_, [=](ChromaSums& sums, std::size_t at) {
    sums.blue += double{blues[at]};
    sums.red += double{reds[at]};
  });
  const auto [ofBlue, ofRed] = sharesOf(productsOf(blue, red, dest_.samples), chroma, sums_, dest_.all.count);
  std::array<double, toneLevels> means{};
  for (std::size_t level = 0; level < toneLevels; ++level) {
    if (sums_[level].count <= 0) continue;
    means[level] = (sums_[level].dest - ofBlue * chroma[level].blue - ofRed * chroma[level].red) / sums_[level].count;
  }
  const double* const in = dest_.luma.data();
  const std::uint8_t* const level = levels_.data();
  const Unexplained left = unexplained(dest_, levels_, sums_, [=, &means, b = ofBlue, r = ofRed](std::size_t at) {
    return in[at] - (b * double{blues[at]} + r * double{reds[at]}) - means[level[at]];
  });
  return left.scatter > 0 ? std::max(byLuma_, 1.0 - left.squares / left.scatter) : byLuma_;
}

std::vector<bool> coveredSamples(const Signal& source, const Signal& dest) {
  constexpr double farOff = 8, farOffTimes = 4;
  const Levels levels = levelsOf(source.luma());
  const ToneTarget target(dest);
  const auto errorsAbout = [&](const AllLevelSums& sums) {
    const std::array<double, toneLevels> curve = curveThrough(sums);
    return errorsOf(target.grid, [&](std::size_t at) { return target.luma[at] - curve[levels[at]]; });
  };
  const AllLevelSums all = sumsOf(target.luma, levels);
  const PartsOut worst = worstSeventh(errorsAbout(all));
  const PartErrors left = errorsAbout(without(worst, all, target, levels));
  // A root mean square, in codes of 8 bits.
  const auto errorOf = [&](std::size_t part) {
    return lumaCodes * std::sqrt(left[part] / std::max(1.0, target.parts[part].count));
  };
  std::vector<double> errors;
  for (std::size_t part = 0; part < partCount; ++part) {
    if (!worst[part]) errors.push_back(errorOf(part));
  }
  const double limit = std::max(farOff, farOffTimes * medianOf(errors));
  std::vector<bool> covered(source.size());
  for (std::size_t part = 0; part < partCount; ++part) {
    if (!worst[part] || errorOf(part) <= limit) continue;
    target.grid.forEachLine(part, [&](std::size_t begin, std::size_t end) {
      std::fill(covered.begin() + static_cast<std::ptrdiff_t>(begin),
                covered.begin() + static_cast<std::ptrdiff_t>(end), true);
    });
  }
  return covered;
}

}  // namespace diagnosis

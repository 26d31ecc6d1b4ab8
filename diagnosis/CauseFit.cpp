#include "diagnosis/CauseFit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace diagnosis {
namespace {

/// What differs by more counts no further: it is something else.
constexpr double largestError = 12;
constexpr double lowestExponent = 0.2, highestExponent = 5;

double clipped(double error) {
  return std::min(std::abs(error), largestError);
}

double costOf(const Vector3& predicted, const Vector3& dest) {
  return clipped(lumaCodes * (predicted[0] - dest[0])) +
         (clipped(chromaCodes * (predicted[1] - dest[1])) + clipped(chromaCodes * (predicted[2] - dest[2]))) / 2;
}

/// The cost of a hypothesis as a function of its exponent.
class ExponentCost {
 public:
  ExponentCost(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space)
      : prediction_(hypothesis, space), strata_(strata) {
    before_.reserve(2 * strata.size());
    for (const Stratum& stratum : strata) {
      for (const double side : {-1.0, 1.0}) {
        Vector3 source = stratum.source;
        source[0] += side * stratum.spread;
        before_.push_back(prediction_.beforeTone(source));
      }
    }
  }

  double at(double exponent) const {
    double cost = 0, weights = 0;
    for (std::size_t i = 0; i < strata_.size(); ++i) {
      cost += strata_[i].weight * costOf(mean(i, exponent), strata_[i].dest);
      weights += strata_[i].weight;
    }
    return weights > 0 ? cost / weights : 0;
  }

 private:
  /// A mean goes where the mean of what lies on both sides of it goes: tones are curved.
  Vector3 mean(std::size_t stratum, double exponent) const {
    const Vector3 low = prediction_.afterTone(before_[2 * stratum], exponent);
    const Vector3 high = prediction_.afterTone(before_[2 * stratum + 1], exponent);
    return {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, (low[2] + high[2]) / 2};
  }

  Prediction prediction_;
  const std::vector<Stratum>& strata_;
  std::vector<Vector3> before_;
};

/// Logarithms of exponents, between which the cost falls and rises again.
struct Bracket {
  double low = 0, high = 0;
};

/// Where the cost is least, by golden sections.
double leastBetween(const ExponentCost& cost, Bracket within, double precision) {
  const double section = (std::sqrt(5.0) - 1) / 2;
  auto [low, high] = within;
  double left = high - section * (high - low), right = low + section * (high - low);
  double leftCost = cost.at(std::exp(left)), rightCost = cost.at(std::exp(right));
  while (high - low > precision) {
    if (leftCost < rightCost) {
      high = right, right = left, rightCost = leftCost;
      left = high - section * (high - low), leftCost = cost.at(std::exp(left));
    } else {
      low = left, left = right, leftCost = rightCost;
      right = low + section * (high - low), rightCost = cost.at(std::exp(right));
    }
  }
  return (low + high) / 2;
}

/// Around the best of a few exponents.
Bracket roughBracket(const ExponentCost& cost) {
  constexpr int steps = 12;
  const double step = std::log(highestExponent / lowestExponent) / steps;
  double best = 0, least = cost.at(1);
  for (int i = 0; i <= steps; ++i) {
    const double place = std::log(lowestExponent) + i * step;
    const double here = cost.at(std::exp(place));
    if (here < least) best = place, least = here;
  }
  return {best - step, best + step};
}

/// A weighted straight line through pairs of values.
struct Line {
  double slope = 1, shift = 0;
};

struct LineSums {
  double weights = 0, x = 0, y = 0, xx = 0, xy = 0;
  void add(double weight, double source, double dest) {
    weights += weight;
    x += weight * source;
    y += weight * dest;
    xx += weight * source * source;
    xy += weight * source * dest;
  }
  Line line() const {
    const double spread = xx * weights - x * x;
    if (spread <= 1e-9 * weights * weights) return {1, weights > 0 ? (y - x) / weights : 0};
    const double slope = (xy * weights - x * y) / spread;
    return {slope, (y - slope * x) / weights};
  }
  /// Through nothing: y = slope x.
  double factor() const { return xx > 1e-6 * weights ? xy / xx : 1.0; }
};

double chromaFactor(const std::vector<Stratum>& strata) {
  LineSums sums;
  for (const Stratum& stratum : strata) {
    for (const std::size_t plane : {1U, 2U}) sums.add(stratum.weight, stratum.source[plane], stratum.dest[plane]);
  }
  return sums.factor();
}

/// The mean cost of predictions.
template <typename Predict>
double meanCost(const std::vector<Stratum>& strata, Predict predict) {
  double cost = 0, weights = 0;
  for (const Stratum& stratum : strata) {
    cost += stratum.weight * costOf(predict(stratum.source), stratum.dest);
    weights += stratum.weight;
  }
  return weights > 0 ? cost / weights : 0;
}

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

/// Grey, or one of eight sectors.
std::size_t hueOf(const Vector3& color) {
  constexpr double grey = 0.03;
  if (std::hypot(color[1], color[2]) < grey) return 8;
  const double turn = std::atan2(color[2], color[1]) / (2 * std::acos(-1.0)) + 0.5;
  return static_cast<std::size_t>(turn * 8) % 8;
}

struct Cubic {
  std::array<double, 4> factors{};
  double at(double x) const { return factors[0] + x * (factors[1] + x * (factors[2] + x * factors[3])); }
};

/// Of least squares over luma, weighted: its normal equations, eliminated. A little is added to their diagonal, which
/// keeps them solvable where the colours are few.
Cubic cubicThrough(const std::vector<Stratum>& strata) {
  std::array<std::array<double, 5>, 4> rows{};
  for (const Stratum& stratum : strata) {
    const double x = stratum.source[0];
    const std::array<double, 4> powers{1, x, x * x, x * x * x};
    for (std::size_t row = 0; row < 4; ++row) {
      for (std::size_t column = 0; column < 4; ++column) {
        rows[row][column] += stratum.weight * powers[row] * powers[column];
      }
      rows[row][4] += stratum.weight * powers[row] * stratum.dest[0];
    }
  }
  for (std::size_t i = 0; i < 4; ++i) {
    rows[i][i] += 1e-9;
    for (std::size_t row = 0; row < 4; ++row) {
      if (row == i) continue;
      const double factor = rows[row][i] / rows[i][i];
      for (std::size_t column = i; column < 5; ++column) rows[row][column] -= factor * rows[i][column];
    }
  }
  Cubic cubic;
  for (std::size_t i = 0; i < 4; ++i) cubic.factors[i] = rows[i][4] / rows[i][i];
  return cubic;
}

/// Of the logarithm of an exponent: to be told, and to see which hypotheses are worth it.
constexpr double finePrecision = 2e-4, roughPrecision = 5e-3;

CauseFit fitTo(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space,
               double precision) {
  const ExponentCost cost(hypothesis, strata, space);
  const double exponent = hypothesis.hasExponent() ? std::exp(leastBetween(cost, roughBracket(cost), precision)) : 1.0;
  return {&hypothesis, exponent, cost.at(exponent)};
}

/// The same near an exponent that fits some of the colours; all of them may ask for another after all.
CauseFit refitted(const CauseFit& rough, const std::vector<Stratum>& strata, const ComparedIn& space) {
  if (!rough.hypothesis->hasExponent()) return fitTo(*rough.hypothesis, strata, space, finePrecision);
  constexpr double reach = 0.06;
  const double middle = std::log(rough.exponent);
  const ExponentCost cost(*rough.hypothesis, strata, space);
  const double found = leastBetween(cost, {middle - reach, middle + reach}, finePrecision);
  if (std::abs(found - middle) > 0.9 * reach) return fitTo(*rough.hypothesis, strata, space, finePrecision);
  return {rough.hypothesis, std::exp(found), cost.at(std::exp(found))};
}

}  // namespace

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space) {
  return fitTo(hypothesis, strata, space, finePrecision);
}

std::vector<CauseFit> likeliestCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                      const ComparedIn& space) {
  constexpr std::size_t fewColors = 40, kept = 8;
  std::vector<Stratum> some;
  const std::size_t every = strata.size() / fewColors + 1;
  for (std::size_t i = 0; i < strata.size(); i += every) some.push_back(strata[i]);
  std::vector<CauseFit> fits;
  fits.reserve(hypotheses.size());
  for (const Hypothesis& hypothesis : hypotheses) fits.push_back(fitTo(hypothesis, some, space, roughPrecision));
  rank(fits);
  fits.resize(std::min(fits.size(), kept));
  for (CauseFit& fit : fits) fit = refitted(fit, strata, space);
  rank(fits);
  return fits;
}

void rank(std::vector<CauseFit>& fits) {
  std::stable_sort(fits.begin(), fits.end(),
                   [](const CauseFit& one, const CauseFit& other) { return one.score() < other.score(); });
}

Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, const ComparedIn& space) {
  const Prediction prediction(*fit.hypothesis, space);
  constexpr double step = 1e-3;
  double slopes = 0, errors = 0;
  for (const Stratum& stratum : strata) {
    const Vector3 before = prediction.beforeTone(stratum.source);
    const double here = prediction.afterTone(before, fit.exponent)[0];
    const double slope = (prediction.afterTone(before, fit.exponent + step)[0] - here) / step;
    slopes += stratum.weight * slope * slope;
    errors += stratum.weight * stratum.weight * slope * slope * (stratum.dest[0] - here) * (stratum.dest[0] - here);
  }
  // Neighbouring colours err alike: twice what independent ones would give, and never finer than the fit itself.
  const double reach = slopes > 0 ? 2 * 2 * std::sqrt(errors) / slopes + 0.005 : fit.exponent;
  return {std::max(0.0, fit.exponent - reach), fit.exponent + reach};
}

GainFit fitGain(const std::vector<Stratum>& strata) {
  GainFit fit;
  fit.chroma = chromaFactor(strata);
  std::vector<double> trust(strata.size(), 1.0);
  for (int round = 0; round < 4; ++round) {
    LineSums sums;
    for (std::size_t i = 0; i < strata.size(); ++i) {
      sums.add(strata[i].weight * trust[i], strata[i].source[0], strata[i].dest[0]);
    }
    const Line line = sums.line();
    fit.gain = line.slope;
    fit.offset = line.shift;
    for (std::size_t i = 0; i < strata.size(); ++i) {
      const double error = lumaCodes * (fit.gain * strata[i].source[0] + fit.offset - strata[i].dest[0]);
      trust[i] = 1 / std::max(1.0, std::abs(error));
    }
  }
  fit.cost = meanCost(strata, [&](const Vector3& source) {
    return Vector3{fit.gain * source[0] + fit.offset, fit.chroma * source[1], fit.chroma * source[2]};
  });
  return fit;
}

double anyToneCost(const std::vector<Stratum>& strata) {
  const Cubic curve = cubicThrough(strata);
  const double chroma = chromaFactor(strata);
  const double cost = meanCost(strata, [&](const Vector3& source) {
    return Vector3{curve.at(source[0]), chroma * source[1], chroma * source[2]};
  });
  // What five free numbers take away of it.
  const double colors = static_cast<double>(strata.size());
  return colors > 6 ? cost * std::sqrt(colors / (colors - 5)) : largestError;
}

double differenceOf(const std::vector<Stratum>& strata) {
  constexpr std::size_t levels = 24, hues = 9;
  std::array<MeanChange, levels> byLevel;
  std::array<MeanChange, hues> byHue;
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
  return samples > 0 ? std::sqrt(squares / samples) : 0;
}

}  // namespace diagnosis

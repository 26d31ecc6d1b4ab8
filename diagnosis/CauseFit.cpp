#include "diagnosis/CauseFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "diagnosis/numbers/Statistics.h"

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

/// Colours side by side. A mean goes where the mean of what lies on both sides of it goes: tones are curved.
struct StrataLanes {
  ColorLanes low{}, high{}, dest{};
  Lanes weight{};  ///< 0 where there is no colour
};

struct LanedStrata {
  std::vector<StrataLanes> lanes;
  double weight = 0;
};

LanedStrata laned(const std::vector<Stratum>& strata) {
  LanedStrata result{std::vector<StrataLanes>((strata.size() + laneCount - 1) / laneCount), 0};
  for (std::size_t at = 0; at < strata.size(); ++at) {
    StrataLanes& lanes = result.lanes[at / laneCount];
    const std::size_t i = at % laneCount;
    const Stratum& stratum = strata[at];
    for (std::size_t plane = 0; plane < 3; ++plane) {
      const double spread = plane == 0 ? stratum.spread : 0;
      lanes.low[plane][i] = static_cast<float>(stratum.source[plane] - spread);
      lanes.high[plane][i] = static_cast<float>(stratum.source[plane] + spread);
      lanes.dest[plane][i] = static_cast<float>(stratum.dest[plane]);
    }
    lanes.weight[i] = static_cast<float>(stratum.weight);
    result.weight += stratum.weight;
  }
  return result;
}

/// costOf() each colour by its weight, summed up.
double costOf(const ColorLanes& low, const ColorLanes& high, const StrataLanes& lanes) {
  constexpr auto most = static_cast<float>(largestError);
  Lanes costs;
  for (std::size_t i = 0; i < laneCount; ++i) {
    const auto error = [&](std::size_t plane, double codes) {
      const float predicted = (low[plane][i] + high[plane][i]) / 2;
      return std::min(std::abs(static_cast<float>(codes) * (predicted - lanes.dest[plane][i])), most);
    };
    costs[i] = lanes.weight[i] * (error(0, lumaCodes) + (error(1, chromaCodes) + error(2, chromaCodes)) / 2);
  }
  for (std::size_t half = laneCount / 2; half > 0; half /= 2) {
    for (std::size_t i = 0; i < half; ++i) costs[i] += costs[i + half];
  }
  return double{costs.front()};
}

constexpr double unlimited = std::numeric_limits<double>::infinity();

/// The cost of a hypothesis as a function of its exponent.
class ExponentCost {
 public:
  ExponentCost(const Hypothesis& hypothesis, const LanedStrata& strata, const ComparedIn& space)
      : prediction_(hypothesis, space), strata_(strata) {
    before_.reserve(strata.lanes.size());
    for (const StrataLanes& lanes : strata.lanes) {
      before_.push_back({prediction_.beforeTone(lanes.low), prediction_.beforeTone(lanes.high)});
    }
  }

  /// Where it is more than `most`, some number above that.
  double at(double exponent, double most = unlimited) const {
    double cost = 0;
    for (std::size_t i = 0; i < before_.size() && cost <= most * strata_.weight; ++i) {
      cost += costOf(prediction_.afterTone(before_[i].low, exponent), prediction_.afterTone(before_[i].high, exponent),
                     strata_.lanes[i]);
    }
    return strata_.weight > 0 ? cost / strata_.weight : 0;
  }

 private:
  struct BothSides {
    Prediction::Before low, high;
  };
  Prediction prediction_;
  const LanedStrata& strata_;
  std::vector<BothSides> before_;
};

/// The cost of a hypothesis without an exponent. Where it is more than `most`, some number above that.
double costUpTo(double most, const Hypothesis& hypothesis, const LanedStrata& strata, const ComparedIn& space) {
  const Prediction prediction(hypothesis, space);
  const auto carried = [&](const ColorLanes& colors) { return prediction.afterTone(prediction.beforeTone(colors), 1); };
  double cost = 0;
  for (const StrataLanes& lanes : strata.lanes) {
    if (cost > most * strata.weight) break;
    cost += costOf(carried(lanes.low), carried(lanes.high), lanes);
  }
  return strata.weight > 0 ? cost / strata.weight : 0;
}

/// Logarithms of exponents, between which the cost falls and rises again.
struct Bracket {
  double low = 0, high = 0;
};

/// Where the cost is least, by golden sections. Of the greater of two costs only that it is greater matters.
double leastBetween(const ExponentCost& cost, Bracket within, double precision) {
  const double section = (std::sqrt(5.0) - 1) / 2;
  auto [low, high] = within;
  double left = high - section * (high - low), right = low + section * (high - low);
  double leftCost = cost.at(std::exp(left)), rightCost = cost.at(std::exp(right), leftCost);
  while (high - low > precision) {
    if (leftCost < rightCost) {
      high = right, right = left, rightCost = leftCost;
      left = high - section * (high - low), leftCost = cost.at(std::exp(left), rightCost);
    } else {
      low = left, left = right, leftCost = rightCost;
      right = low + section * (high - low), rightCost = cost.at(std::exp(right), leftCost);
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
    const double here = cost.at(std::exp(place), least);
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

struct Cubic {
  std::array<double, 4> factors{};
  double at(double x) const { return factors[0] + x * (factors[1] + x * (factors[2] + x * factors[3])); }
};

/// Of least squares over luma, weighted. A little on the diagonal keeps them solvable where the colours are few.
Cubic cubicThrough(const std::vector<Stratum>& strata) {
  Equations<4> rows{};
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
  for (std::size_t i = 0; i < 4; ++i) rows[i][i] += 1e-9;
  return {solved(rows)};
}

/// Of the logarithm of an exponent: to be told, and to see which hypotheses are worth it.
constexpr double finePrecision = 2e-4, roughPrecision = 5e-3;

CauseFit fitTo(const Hypothesis& hypothesis, const LanedStrata& strata, const ComparedIn& space, double precision) {
  const ExponentCost cost(hypothesis, strata, space);
  const double exponent = hypothesis.hasExponent() ? std::exp(leastBetween(cost, roughBracket(cost), precision)) : 1.0;
  return {&hypothesis, exponent, cost.at(exponent)};
}

/// The same near an exponent that fits some of the colours; all of them may ask for another after all.
CauseFit refitted(const CauseFit& rough, const LanedStrata& strata, const ComparedIn& space) {
  if (!rough.hypothesis->hasExponent()) return fitTo(*rough.hypothesis, strata, space, finePrecision);
  constexpr double reach = 0.06;
  const double middle = std::log(rough.exponent);
  const ExponentCost cost(*rough.hypothesis, strata, space);
  const double found = leastBetween(cost, {middle - reach, middle + reach}, finePrecision);
  if (std::abs(found - middle) > 0.9 * reach) return fitTo(*rough.hypothesis, strata, space, finePrecision);
  return {rough.hypothesis, std::exp(found), cost.at(std::exp(found))};
}

/// Some of the colours, so that any first ones of them are from dark to bright.
std::vector<Stratum> someOf(const std::vector<Stratum>& strata) {
  constexpr std::size_t fewColors = 40, rounds = 4;
  const std::size_t every = strata.size() / fewColors + 1;
  std::vector<Stratum> some;
  some.reserve(strata.size() / every + 1);
  for (std::size_t round = 0; round < rounds; ++round) {
    for (std::size_t i = round * every; i < strata.size(); i += rounds * every) some.push_back(strata[i]);
  }
  return some;
}

}  // namespace

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space) {
  return fitTo(hypothesis, laned(strata), space, finePrecision);
}

double costOf(const Hypothesis& hypothesis, double exponent, const std::vector<Stratum>& strata,
              const ComparedIn& space) {
  const LanedStrata all = laned(strata);
  return ExponentCost(hypothesis, all, space).at(exponent);
}

std::vector<Stratum> carriedBy(const Hypothesis& hypothesis, double exponent, std::vector<Stratum> strata,
                               const ComparedIn& space) {
  const Prediction prediction(hypothesis, space);
  for (std::size_t begin = 0; begin < strata.size(); begin += laneCount) {
    const std::size_t count = std::min(laneCount, strata.size() - begin);
    ColorLanes colors{};
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t plane = 0; plane < 3; ++plane) {
        colors[plane][i] = static_cast<float>(strata[begin + i].source[plane]);
      }
    }
    const ColorLanes carried = prediction.afterTone(prediction.beforeTone(colors), exponent);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t plane = 0; plane < 3; ++plane) strata[begin + i].source[plane] = double{carried[plane][i]};
    }
  }
  return strata;
}

std::vector<CauseFit> likeliestCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                      const ComparedIn& space) {
  constexpr std::size_t kept = 8;
  const LanedStrata some = laned(someOf(strata)), all = laned(strata);
  std::vector<CauseFit> fits;
  fits.reserve(kept + 1);
  for (const Hypothesis& hypothesis : hypotheses) {
    const double most = fits.size() < kept ? unlimited : CauseFit::costFor(fits.back().score(), hypothesis.complexity);
    const CauseFit fit = hypothesis.hasExponent() ? fitTo(hypothesis, some, space, roughPrecision)
                                                  : CauseFit{&hypothesis, 1, costUpTo(most, hypothesis, some, space)};
    if (fit.cost >= most) continue;
    fits.push_back(fit);
    rank(fits);
    if (fits.size() > kept) fits.pop_back();
  }
  for (CauseFit& fit : fits) fit = refitted(fit, all, space);
  rank(fits);
  return fits;
}

void rank(std::vector<CauseFit>& fits) {
  std::stable_sort(fits.begin(), fits.end(),
                   [](const CauseFit& one, const CauseFit& other) { return one.score() < other.score(); });
}

Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, const ComparedIn& space) {
  constexpr double step = 1e-3;
  const std::vector<Stratum> carried = carriedBy(*fit.hypothesis, fit.exponent, strata, space),
                             further = carriedBy(*fit.hypothesis, fit.exponent + step, strata, space);
  double slopes = 0, errors = 0;
  for (std::size_t i = 0; i < strata.size(); ++i) {
    const auto& [source, dest, weight, samples, spread] = carried[i];
    const double slope = (further[i].source[0] - source[0]) / step;
    slopes += weight * slope * slope;
    errors += weight * weight * slope * slope * (dest[0] - source[0]) * (dest[0] - source[0]);
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

std::vector<Stratum> carriedBy(const GainFit& fit, std::vector<Stratum> strata) {
  for (Stratum& stratum : strata) {
    const auto& [luma, blue, red] = stratum.source;
    stratum.source = {fit.gain * luma + fit.offset, fit.chroma * blue, fit.chroma * red};
  }
  return strata;
}

double shiftedCost(const std::vector<Stratum>& strata) {
  std::vector<double> shifts;
  shifts.reserve(strata.size());
  for (const Stratum& stratum : strata) shifts.push_back(stratum.dest[0] - stratum.source[0]);
  if (shifts.empty()) return 0;
  const double shift = medianOf(shifts);
  return meanCost(strata, [&](const Vector3& source) { return Vector3{source[0] + shift, source[1], source[2]}; });
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

}  // namespace diagnosis

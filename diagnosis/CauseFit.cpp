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
  ExponentCost(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, std::uint16_t common)
      : prediction_(hypothesis, common), strata_(strata) {
    before_.reserve(strata.size());
    for (const Stratum& stratum : strata) before_.push_back(prediction_.beforeTone(stratum.source));
  }

  double at(double exponent) const {
    double cost = 0, weights = 0;
    for (std::size_t i = 0; i < strata_.size(); ++i) {
      cost += strata_[i].weight * costOf(prediction_.afterTone(before_[i], exponent), strata_[i].dest);
      weights += strata_[i].weight;
    }
    return weights > 0 ? cost / weights : 0;
  }

 private:
  Prediction prediction_;
  const std::vector<Stratum>& strata_;
  std::vector<Vector3> before_;
};

/// The exponent of the least cost: the best of a few, then by golden sections between its neighbours.
double bestExponent(const ExponentCost& cost) {
  constexpr int steps = 12;
  const double step = std::log(highestExponent / lowestExponent) / steps;
  double best = 0, least = cost.at(1);
  for (int i = 0; i <= steps; ++i) {
    const double place = std::log(lowestExponent) + i * step;
    const double here = cost.at(std::exp(place));
    if (here < least) best = place, least = here;
  }
  const double section = (std::sqrt(5.0) - 1) / 2;
  double low = best - step, high = best + step;
  double left = high - section * (high - low), right = low + section * (high - low);
  double leftCost = cost.at(std::exp(left)), rightCost = cost.at(std::exp(right));
  while (high - low > 2e-4) {
    if (leftCost < rightCost) {
      high = right, right = left, rightCost = leftCost;
      left = high - section * (high - low), leftCost = cost.at(std::exp(left));
    } else {
      low = left, left = right, leftCost = rightCost;
      right = low + section * (high - low), rightCost = cost.at(std::exp(right));
    }
  }
  return std::exp((low + high) / 2);
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

}  // namespace

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, std::uint16_t common) {
  const ExponentCost cost(hypothesis, strata, common);
  const double exponent = hypothesis.hasExponent() ? bestExponent(cost) : 1.0;
  return {&hypothesis, exponent, cost.at(exponent)};
}

std::vector<CauseFit> fitCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                std::uint16_t common) {
  std::vector<CauseFit> fits;
  fits.reserve(hypotheses.size());
  for (const Hypothesis& hypothesis : hypotheses) fits.push_back(fitCause(hypothesis, strata, common));
  std::stable_sort(fits.begin(), fits.end(),
                   [](const CauseFit& one, const CauseFit& other) { return one.score() < other.score(); });
  return fits;
}

Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, std::uint16_t common) {
  const Prediction prediction(*fit.hypothesis, common);
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
  constexpr std::size_t parts = 16;
  std::array<LineSums, parts> sums;
  const auto part = [](double luma) { return static_cast<std::size_t>(std::clamp(luma, 0.0, 0.999) * parts); };
  for (const Stratum& stratum : strata) {
    sums[part(stratum.source[0])].add(stratum.weight, stratum.source[0], stratum.dest[0]);
  }
  const double chroma = chromaFactor(strata);
  return meanCost(strata, [&](const Vector3& source) {
    const Line line = sums[part(source[0])].line();
    return Vector3{line.slope * source[0] + line.shift, chroma * source[1], chroma * source[2]};
  });
}

double differenceOf(const std::vector<Stratum>& strata) {
  double byColor = 0, colors = 0, bySample = 0, samples = 0;
  for (const Stratum& stratum : strata) {
    double squares = 0;
    for (const std::size_t plane : {0U, 1U, 2U}) {
      const double error = (plane == 0 ? lumaCodes : chromaCodes / 2) * (stratum.dest[plane] - stratum.source[plane]);
      squares += error * error;
    }
    byColor += stratum.weight * squares;
    colors += stratum.weight;
    bySample += stratum.samples * squares;
    samples += stratum.samples;
  }
  return colors > 0 ? std::sqrt(std::max(byColor / colors, bySample / samples)) : 0;
}

}  // namespace diagnosis

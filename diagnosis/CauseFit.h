#pragma once

#include <cstdint>
#include <vector>

#include "diagnosis/CauseModel.h"
#include "diagnosis/Strata.h"

namespace diagnosis {

/// A hypothesis as it fits best.
struct CauseFit {
  const Hypothesis* hypothesis = nullptr;
  double exponent = 1;
  /// What it leaves unexplained: a weighted mean over colours, |Y'| + (|Cb| + |Cr|) / 2, each clipped, in codes of 8
  /// bits.
  double cost = 0;
  double score() const { return score(cost, hypothesis->complexity); }
  /// Costs made comparable: a more complex explanation has to fit better.
  static double score(double cost, double complexity) { return cost * (1 + 0.06 * complexity) + 0.10 * complexity; }
};

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, std::uint16_t common);

/// All of them, the best one first.
std::vector<CauseFit> fitCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                std::uint16_t common);

/// The exponent's interval, of a hypothesis that has one: about 95 %, from what it leaves unexplained.
Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, std::uint16_t common);

/// dest luma = gain * source luma + offset, and chroma multiplied by a factor of its own.
struct GainFit {
  double gain = 1, offset = 0, chroma = 1;
  double cost = 0;  ///< as CauseFit's
};
GainFit fitGain(const std::vector<Stratum>& strata);

/// What is left when luma goes by any curve, and chroma is multiplied by one factor: as CauseFit's cost.
double anyToneCost(const std::vector<Stratum>& strata);

/// Between source and destination: a root mean square of luma and half of each chroma signal, in codes of 8 bits; over
/// colours or over samples, whichever is more.
double differenceOf(const std::vector<Stratum>& strata);

}  // namespace diagnosis

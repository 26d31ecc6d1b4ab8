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
  /// The cost that gives a score.
  static double costFor(double score, double complexity) {
    return (score - 0.10 * complexity) / (1 + 0.06 * complexity);
  }
};

/// The best one first.
void rank(std::vector<CauseFit>& fits);

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space);

/// Those that fit best, the best one first: looked for among all of them by some of the colours, since most fit
/// nothing.
std::vector<CauseFit> likeliestCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                      const ComparedIn& space);

/// What a hypothesis leaves unexplained at that exponent.
double costOf(const Hypothesis& hypothesis, double exponent, const std::vector<Stratum>& strata,
              const ComparedIn& space);

/// The colours with their sources as a hypothesis makes them.
std::vector<Stratum> carriedBy(const Hypothesis& hypothesis, double exponent, std::vector<Stratum> strata,
                               const ComparedIn& space);

/// The exponent's interval, of a hypothesis that has one: about 95 %, from what it leaves unexplained.
Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, const ComparedIn& space);

/// dest luma = gain * source luma + offset, and chroma multiplied by a factor of its own.
struct GainFit {
  double gain = 1, offset = 0, chroma = 1;
  double cost = 0;  ///< as CauseFit's
};
GainFit fitGain(const std::vector<Stratum>& strata);
std::vector<Stratum> carriedBy(const GainFit& fit, std::vector<Stratum> strata);

/// What is left when luma is shifted by one number, as conversions shift it that cut off instead of rounding.
double shiftedCost(const std::vector<Stratum>& strata);

/// What is left when luma goes by a smooth curve, and chroma is multiplied by one factor: as CauseFit's cost.
double anyToneCost(const std::vector<Stratum>& strata);

}  // namespace diagnosis

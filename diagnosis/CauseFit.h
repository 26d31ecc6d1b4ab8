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

/// The best one first.
void rank(std::vector<CauseFit>& fits);

CauseFit fitCause(const Hypothesis& hypothesis, const std::vector<Stratum>& strata, const ComparedIn& space);

/// Those that fit best, the best one first: looked for among all of them by some of the colours, since most fit
/// nothing.
std::vector<CauseFit> likeliestCauses(const std::vector<Hypothesis>& hypotheses, const std::vector<Stratum>& strata,
                                      const ComparedIn& space);

/// The exponent's interval, of a hypothesis that has one: about 95 %, from what it leaves unexplained.
Interval exponentInterval(const CauseFit& fit, const std::vector<Stratum>& strata, const ComparedIn& space);

/// dest luma = gain * source luma + offset, and chroma multiplied by a factor of its own.
struct GainFit {
  double gain = 1, offset = 0, chroma = 1;
  double cost = 0;  ///< as CauseFit's
};
GainFit fitGain(const std::vector<Stratum>& strata);

/// What is left when luma goes by a smooth curve, and chroma is multiplied by one factor: as CauseFit's cost.
double anyToneCost(const std::vector<Stratum>& strata);

/// Between source and destination, a root mean square in codes of 8 bits: of luma by its level, and of half of the
/// chroma signals by their hue. What goes up in one colour and down in the next, as an encoder's losses do, does not
/// count.
double differenceOf(const std::vector<Stratum>& strata);

}  // namespace diagnosis

#include "diagnosis/Explanations.h"

namespace diagnosis {
namespace {

/// A single cause that leaves less than this needs no second one.
constexpr double explainedCost = 0.45;

void explainByMatrixAndGain(Explanations& all, const ColorEvidence& evidence) {
  for (const Hypothesis& hypothesis : singleCauses()) {
    if (!hypothesis.hasMatrix()) continue;
    const GainFit gain = fitGain(carriedBy(hypothesis, 1, evidence.strata, evidence.space));
    if (all.matrixBeforeGain != nullptr && gain.cost >= all.gainAfterMatrix.cost) continue;
    all.matrixBeforeGain = &hypothesis;
    all.gainAfterMatrix = gain;
  }
}

}  // namespace

void explain(Explanations& all, const ColorEvidence& evidence) {
  all.known = likeliestCauses(singleCauses(), evidence.strata, evidence.space);
  all.identityCost = fitCause(singleCauses().front(), evidence.strata, evidence.space).cost;
  all.relabelling = relabelled(evidence.source, evidence.dest, evidence.space);
  if (all.relabelling) {
    all.known.push_back(fitCause(*all.relabelling, evidence.strata, evidence.space));
    all.relabelledCost = all.known.back().cost;
    rank(all.known);
  }
  all.gain = fitGain(evidence.strata);
  all.toneCost = anyToneCost(evidence.strata);
  if (all.known.front().cost <= explainedCost) return;
  explainByMatrixAndGain(all, evidence);
  const std::vector<CauseFit> pairs = likeliestCauses(pairsOfCauses(), evidence.strata, evidence.space);
  all.known.insert(all.known.end(), pairs.begin(), pairs.end());
  rank(all.known);
}

}  // namespace diagnosis

#pragma once

#include <optional>
#include <vector>

#include "diagnosis/CauseFit.h"
#include "diagnosis/Causes.h"

namespace diagnosis {

/// All explanations of one comparison, each as it fits best.
struct Explanations {
  std::optional<Hypothesis> relabelling;
  std::vector<CauseFit> known;  ///< the best first
  double identityCost = 0;
  double relabelledCost = 0;
  GainFit gain;
  /// After another matrix, as equalisers leave it that lose the matrix's tag; looked for where one cause is not enough.
  const Hypothesis* matrixBeforeGain = nullptr;
  GainFit gainAfterMatrix;
  double toneCost = 0;

  Explanations() = default;
  Explanations(const Explanations&) = delete;  // `known` looks into it
  Explanations& operator=(const Explanations&) = delete;
};

/// Of at least one colour.
void explain(Explanations& all, const ColorEvidence& evidence);

}  // namespace diagnosis

#pragma once

#include <optional>
#include <vector>

#include "diagnosis/CauseFit.h"
#include "diagnosis/Finding.h"
#include "diagnosis/Strata.h"

namespace diagnosis {

/// What the causes are read from: two pictures that show the same.
struct ColorEvidence {
  const std::vector<Stratum>& strata;
  const SideTags& source;
  const SideTags& dest;
  ComparedIn space;       ///< of the strata
  double tolerance = 2;   ///< codes of 8 bits
  double difference = 0;  ///< differenceOf() the strata
  bool identicalSamples = false;
};

/// What was done to a picture, with all its numbers: a hypothesis, and then a line where there is one. Of colours as
/// ComparedIn says.
struct Recipe {
  Hypothesis hypothesis;
  double exponent = 1;  ///< where the hypothesis has one
  std::optional<GainFit> gain;
};

struct ToldCauses {
  std::vector<Cause> causes;     ///< at least one; those that hold together in the order in which they are told
  std::optional<Recipe> recipe;  ///< none where nothing was done, or nothing that is known
};
ToldCauses toldCauses(const ColorEvidence& evidence);

/// The causes alone.
std::vector<Cause> causesOf(const ColorEvidence& evidence);

/// How sure it is that pictures whose correspondence scores so low are not the same.
double differentConfidence(double score);

}  // namespace diagnosis

#pragma once

#include <vector>

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

/// At least one. Those that hold together come in the order in which they are told.
std::vector<Cause> causesOf(const ColorEvidence& evidence);

/// How sure it is that pictures whose correspondence scores so low are not the same.
double differentConfidence(double score);

}  // namespace diagnosis

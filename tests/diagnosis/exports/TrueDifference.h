#pragma once

#include "diagnosis/Diagnosis.h"

namespace diagnosis::test {

/// Between the first frames of a question: see Judgement::difference. `covered` is the share of parts, the worst ones,
/// that are left out.
double trueDifference(const Question& question, const Placement& placement, double covered);

}  // namespace diagnosis::test

#pragma once

#include "diagnosis/Finding.h"

namespace diagnosis {

/// What is to be done about a finding that is complete but for this.
Action actionFor(const Finding& finding);

/// Whether copying the source's gamma, NCLC record and profile onto the destination makes its tags right: the source
/// has what differs, and the matrix that it names is the one that the destination's samples are in.
bool syncHelps(const Finding& finding);

}  // namespace diagnosis

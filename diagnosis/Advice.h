#pragma once

#include "diagnosis/Finding.h"

namespace diagnosis {

/// What is to be done about a finding that is complete but for this.
Action actionFor(const Finding& finding);

}  // namespace diagnosis

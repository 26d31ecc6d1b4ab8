#pragma once

#include "scan/follow/Standing.h"
#include "scan/follow/Track.h"

namespace scan {

/// Follows frames that are found beside the line lately: others were dropped one by one, or a picture is held.
void followDrift(Bearing& at, const Candidates& candidates);

}  // namespace scan

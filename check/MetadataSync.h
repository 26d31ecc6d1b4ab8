#pragma once

#include "movie/Movie.h"

namespace check {

/// matchMetadata:dest: writes one fixed colour set (gamma 1.0, NCLC 1-1-1, the sRGB profile) into the first image
/// description of both movies' first video track, in memory. Does nothing when either movie has no video track. A
/// failed write is logged and does not stop the rest. Both movies must be there.
void matchMetadata(movie::Movie& source, movie::Movie& dest);

}  // namespace check

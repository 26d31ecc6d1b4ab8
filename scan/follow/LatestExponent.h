#pragma once

#include <cstddef>
#include <optional>

#include "scan/follow/Matches.h"

namespace scan {

/// The exponent of the frames of the last seconds before `end`, a place among the matches: their median. None where few
/// are measured, or where they do not agree: a fade, a picture in which little can be measured.
std::optional<double> latestExponent(const Matches& matches, std::size_t end);

}  // namespace scan

#pragma once

#include <cstddef>

#include "scan/Scan.h"

namespace scan {

/// What is told of movies that do not show the same pictures: the frames, and no number.
ScanResult refusal(const ScanTags& tags, std::size_t frames);

/// Whether nothing was found, or no more than a beginning, or a picture that does not move: a slate, or a leader, that
/// movies of other pictures may have in common. Less than half of what is neither black nor of one colour has a
/// counterpart then.
bool isRefused(const Matches& matches, const Beginning& beginning);

/// The places stay, the numbers go.
void refuse(ScanResult& result);

}  // namespace scan

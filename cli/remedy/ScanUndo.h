#pragma once

#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "scan/Scan.h"

namespace cli {

/// The segments of a scan in which something is to be undone, each with a recipe that is surely known; at least one.
/// Error: a sentence why there is none.
tl::expected<std::vector<const scan::Segment*>, std::string> segmentsToUndo(const scan::ScanResult& result);

/// Whether one way to undo it may be left without times: all of the movie was compared, and it is one segment.
bool isOneWholeSegment(const scan::ScanResult& result, const scan::FrameRow& dest);

}  // namespace cli

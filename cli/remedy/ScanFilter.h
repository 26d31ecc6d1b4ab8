#pragma once

#include <string>

#include "scan/Scan.h"

namespace cli {

/// The filter of ffmpeg that undoes what was found, for the destination; or, where there is none, a sentence why.
struct ScanFilter {
  std::string filter, why;  ///< one of them is empty
};

/// Where one way to undo it covers all of the movie, without times; else segment by segment.
ScanFilter scanFilter(const scan::ScanResult& result, const scan::ScanTags& tags, const scan::FrameRow& dest);

}  // namespace cli

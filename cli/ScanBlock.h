#pragma once

#include <string>

#include "cli/ReportText.h"
#include "scan/Scan.h"

namespace cli {

/// A scan for a terminal: the verdict, how the one lies upon the other, a table of what differs where, the worst frame,
/// what to do. Times are timecodes where the movie has a frame rate, else seconds. UTF-8.
std::string scanBlock(const scan::ScanResult& result, const scan::MoviePair& rows, const movie::Movie& source,
                      const movie::Movie& dest, TextStyling styling);

}  // namespace cli

#pragma once

#include <string>

#include "scan/Scan.h"

namespace cli {

/// A table of all frames that were compared (RFC 4180): frame, time, source frame, source time, distance, exponent,
/// spread, and whether it is identical, a mixture, without anything in it. Times in seconds; empty where there is none.
std::string scanCsv(const scan::ScanResult& result, const scan::MoviePair& rows);

}  // namespace cli

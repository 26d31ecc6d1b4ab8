#pragma once

#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "system/ReplacementFile.h"

namespace cli {

/// Why a scan did not come about: of a file, or of none.
struct ScanProblem {
  std::string message, path;
};

/// That a file cannot be written. `what` it is, at the beginning of a sentence.
ScanProblem unwritable(const std::string& path, const std::string& what, const sys::Error& error);

/// Where a file of a scan goes. Error: it has no place, or it is one of the movies that are scanned.
tl::expected<sys::ReplacementFile, ScanProblem> placeFor(const std::string& path, const std::string& what,
                                                         const std::vector<std::string>& movies);

/// Whether a path ends so, in any case. `end` in lower case.
bool hasEnding(const std::string& path, const std::string& end);

}  // namespace cli

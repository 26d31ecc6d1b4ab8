#pragma once

#include <string>

namespace cli {

/// Why a scan did not come about: of a file, or of none.
struct ScanProblem {
  std::string message, path;
};

}  // namespace cli

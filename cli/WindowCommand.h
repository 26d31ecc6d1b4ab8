#pragma once

#include <string>
#include <vector>

#include "cli/CommandResult.h"

namespace cli {

struct WindowOptions {
  std::vector<std::string> files;  ///< paths, raw bytes; at most two
};

/// `lumacheck [FILE [FILE]]`: becomes the program Lumacheck, which lies beside this one, with the files. Returns only
/// when that cannot be done, or when a file is not there.
CommandResult runWindowCommand(const WindowOptions& options);

}  // namespace cli

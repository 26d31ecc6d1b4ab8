#pragma once

#include <string>
#include <vector>

#include "cli/CheckCommand.h"
#include "cli/CommandResult.h"

namespace cli {

struct InfoOptions {
  std::vector<std::string> files;  ///< paths, raw bytes
  OutputForm form = OutputForm::Text;
};

/// `lumacheck info`: what the first image description of each file's first video track says. A file that cannot be read
/// does not stop the rest. Never loads the decoder module.
CommandResult runInfoCommand(const InfoOptions& options);

}  // namespace cli

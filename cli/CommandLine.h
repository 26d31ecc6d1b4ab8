#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <tl/expected.hpp>

#include "cli/Commands.h"

namespace cli {

struct CommandLine {
  std::variant<CheckOptions, ScanOptions, InfoOptions, SyncOptions, WindowOptions> command;
  std::optional<std::string> logFile;  ///< none: no log
};

/// The arguments without the program's name. Not a command to run: help and the version on stdout with status 0, or
/// what is wrong with the usage on stderr with status 2.
tl::expected<CommandLine, CommandResult> parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace cli

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include <unistd.h>

#include "cli/CommandLine.h"
#include "cli/LogSetup.h"
#include "cli/Process.h"
#include "system/StandardDescriptors.h"

namespace {

cli::CommandResult run(const cli::CommandLine& line) {
  if (const auto* options = std::get_if<cli::CheckOptions>(&line.command)) {
    return cli::runCheckCommand(*options, cli::stylingOfStandardOutput());
  }
  if (const auto* options = std::get_if<cli::WindowOptions>(&line.command)) return cli::runWindowCommand(*options);
  if (const auto* options = std::get_if<cli::SyncOptions>(&line.command)) return cli::runSyncCommand(*options);
  return cli::runInfoCommand(std::get<cli::InfoOptions>(line.command));
}

cli::CommandResult runArguments(const std::vector<std::string>& arguments) {
  const auto line = cli::parseCommandLine(arguments);
  if (!line) return line.error();
  const cli::LogSetup log(line->logFile);
  if (!log.problem().empty()) return {"", cli::complaint(log.problem()), cli::failure};
  return run(*line);
}

/// What a library throws that we do not know of, memory that runs out: a sentence too.
cli::CommandResult runGuarded(const std::vector<std::string>& arguments) {
  try {
    return runArguments(arguments);
  } catch (const std::exception& exception) {
    return {"", cli::complaint(std::string("The command failed: ") + exception.what() + "."), cli::failure};
  }
}

}  // namespace

int main(int argc, char** argv) {
  sys::keepStandardDescriptorsTaken();
  cli::installSignalHandling();
  cli::CommandResult result = runGuarded({argv + (argc > 0 ? 1 : 0), argv + argc});
  if (!cli::writeAll(STDOUT_FILENO, result.out)) {
    result.err += cli::complaint(std::string("Cannot write to standard output: ") + std::strerror(errno) + ".");
    result.status = cli::failure;
  }
  cli::writeAll(STDERR_FILENO, result.err);
  return result.status;
}

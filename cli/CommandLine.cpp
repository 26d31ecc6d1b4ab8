#include "cli/CommandLine.h"

#include <algorithm>

#include "cli/CommandInterface.h"

namespace cli {
namespace {

CommandLine commandLineOf(const CommandInterface& given) {
  if (given.check->parsed()) return {given.checkOptions, given.logFile};
  if (given.info->parsed()) return {given.infoOptions, given.logFile};
  if (given.sync->parsed()) return {given.syncOptions, given.logFile};
  return {given.windowOptions, std::nullopt};
}

/// Help of the subcommand that was given, else of all.
std::string usageOf(const CLI::App& app) {
  const std::vector<const CLI::App*> given = app.get_subcommands({});
  const auto parsed = std::find_if(given.begin(), given.end(), [](const CLI::App* each) { return each->parsed(); });
  return parsed == given.end() ? app.help() : (*parsed)->help(app.get_name());
}

}  // namespace

tl::expected<CommandLine, CommandResult> parseCommandLine(const std::vector<std::string>& arguments) {
  CommandInterface interface;
  try {
    interface.app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as CLI11 takes them
    return commandLineOf(interface);
  } catch (const CLI::CallForHelp&) {
    return tl::unexpected(CommandResult{usageOf(interface.app), "", noShift});
  } catch (const CLI::CallForVersion& version) {
    return tl::unexpected(CommandResult{std::string(version.what()) + "\n", "", noShift});
  } catch (const CLI::ParseError& error) {
    return tl::unexpected(CommandResult{"", complaint(error.what()) + usageOf(interface.app), failure});
  }
}

}  // namespace cli

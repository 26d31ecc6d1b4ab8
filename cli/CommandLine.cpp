#include "cli/CommandLine.h"

#include <algorithm>

#include "cli/CommandInterface.h"

namespace cli {
namespace {

std::optional<TimeArgument> timeOf(const CLI::Option& specific, const CLI::Option& common) {
  const CLI::Option& given = specific.count() > 0 ? specific : common;
  if (given.count() == 0) return std::nullopt;
  return *parseTimeArgument(unmarked(given.results().front()));
}

OutputForm formOf(const CLI::App& command) {
  return command.count("--json") > 0 ? OutputForm::Json : OutputForm::Text;
}

WindowOptions windowOptionsOf(const CommandInterface& given) {
  WindowOptions options;
  for (const CLI::Option* option : {given.windowSource, given.windowDest}) {
    for (const std::string& file : option->results()) options.files.push_back(unmarked(file));
  }
  return options;
}

CheckOptions checkOptionsOf(const CommandInterface& given) {
  return {
      unmarked(given.source->results().front()),
      unmarked(given.dest->results().front()),
      timeOf(*given.sourceAt, *given.at),
      timeOf(*given.destAt, *given.at),
      formOf(*given.check),
      given.check->count("--exit-zero") > 0 ? ExitPolicy::ZeroUnlessFailed : ExitPolicy::ByVerdict,
  };
}

InfoOptions infoOptionsOf(const CommandInterface& given) {
  InfoOptions options{{}, formOf(*given.info)};
  for (const std::string& file : given.files->results()) options.files.push_back(unmarked(file));
  return options;
}

SyncOptions syncOptionsOf(const CommandInterface& given) {
  const CLI::App& command = *given.sync;
  SyncOptions options{
      .source = unmarked(given.syncSource->results().front()),
      .dest = unmarked(given.syncDest->results().front()),
      .saveAs = std::nullopt,
      .mode = command.count("--dry-run") > 0 ? SyncMode::DryRun : SyncMode::Save,
      .form = formOf(command),
  };
  if (command.count("--save-as") > 0) options.saveAs = unmarked(command["--save-as"]->results().front());
  return options;
}

CommandLine commandLineOf(const CommandInterface& given) {
  const auto subcommands = given.app.get_subcommands();
  if (subcommands.empty()) return {windowOptionsOf(given), std::nullopt};
  const CLI::App& command = *subcommands.front();
  CommandLine line;
  if (command.count("--log") > 0) line.logFile = unmarked(command["--log"]->results().front());
  if (given.check->parsed()) line.command = checkOptionsOf(given);
  if (given.info->parsed()) line.command = infoOptionsOf(given);
  if (given.sync->parsed()) line.command = syncOptionsOf(given);
  return line;
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
  std::vector<std::string> backwards;  // as CLI11 takes them
  std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(backwards), marked);
  try {
    interface.app.parse(std::move(backwards));
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

#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include "cli/CommandInterface.h"

namespace cli {
namespace {

/// Every value is taken as it was given: CLI11's own conversions know empty values and lists.
CLI::callback_t taking(const std::string& name, const Take& take) {
  return [name, take](const CLI::results_t& given) {
    for (const std::string& each : given) {
      const std::string problem = take(each);
      if (!problem.empty()) throw CLI::ValidationError(name, problem);
    }
    return true;
  };
}

void addArgument(CLI::App& app, const ArgumentDescription& argument) {
  CLI::Option* const added = app.add_option(argument.name, taking(argument.name, argument.take), argument.description);
  added->type_name("")->required(argument.required);
  if (!argument.repeated) return;
  // As many as there are, by number: of "extra" arguments CLI11 takes those in square brackets for lists.
  constexpr int any = CLI::detail::expected_max_vector_size;
  added->expected(any, any)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addOption(CLI::App& app, const OptionDescription& option) {
  const std::string names = CLI::detail::join(option.names, ",");
  if (names == "--version") {
    app.set_version_flag(names, std::string("lumacheck " LUMACHECK_VERSION), option.description);
  } else if (!option.take) {
    app.set_help_flag(names, option.description);
  } else if (option.value == Value::None) {
    app.add_flag_callback(
           names, [take = option.take] { take({}); }, option.description)
        ->disable_flag_override();
  } else {
    app.add_option(names, taking(names, option.take), option.description)->type_name(option.valueName);
  }
}

/// In lines of a terminal's width, as CLI11 leaves a footer alone.
std::string exitStatuses(const std::vector<ExitDescription>& exits) {
  constexpr std::size_t width = 92;
  std::string rest = "Exit status:", lines;
  for (const ExitDescription& each : exits) {
    rest += (&each == exits.data() ? " " : "; ") + std::to_string(each.status) + ' ' + each.meaning;
  }
  rest += '.';
  while (rest.size() > width) {
    const std::size_t space = rest.rfind(' ', width);
    lines += rest.substr(0, space) + '\n';
    rest.erase(0, space + 1);
  }
  return lines + rest;
}

void describe(CLI::App& app, const CommandDescription& command) {
  for (const ArgumentDescription& argument : command.arguments) addArgument(app, argument);
  for (const OptionDescription& option : command.options) addOption(app, option);
  for (const OptionDescription& option : command.options) {
    for (const std::string& excluded : option.excludes) app.get_option(option.names.back())->excludes(excluded);
  }
  if (!command.exits.empty()) app.footer(exitStatuses(command.exits));
  for (const CommandDescription& each : command.subcommands) {
    describe(*app.add_subcommand(each.name, each.description), each);
  }
}

CommandLine commandLineOf(const CLI::App& app, const GivenOptions& given) {
  if (app.got_subcommand("check")) return {given.check, given.logFile};
  if (app.got_subcommand("scan")) return {given.scan, given.logFile};
  if (app.got_subcommand("info")) return {given.info, given.logFile};
  if (app.got_subcommand("sync")) return {given.sync, given.logFile};
  return {given.window, std::nullopt};
}

}  // namespace

tl::expected<CommandLine, CommandResult> parseCommandLine(const std::vector<std::string>& arguments) {
  GivenOptions given;
  const CommandDescription command = commandInterface(given);
  CLI::App app(command.description + '.', command.name);
  app.require_subcommand(0, 1);
  describe(app, command);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as CLI11 takes them
    return commandLineOf(app, given);
  } catch (const CLI::CallForHelp&) {
    return tl::unexpected(CommandResult{app.help(), "", noShift});
  } catch (const CLI::CallForVersion& shown) {
    return tl::unexpected(CommandResult{std::string(shown.what()) + "\n", "", noShift});
  } catch (const CLI::ParseError& error) {
    return tl::unexpected(CommandResult{"", complaint(error.what()) + app.help(), failure});
  }
}

}  // namespace cli

#include "cli/CommandLine.h"

#include <algorithm>
#include <memory>

#include <CLI/CLI.hpp>

namespace cli {
namespace {

/// CLI11 takes a value in square brackets for a list. An argument that begins with a bracket travels through it with
/// this mark in front, as does one that begins with the mark.
constexpr char bracketMark = '\x01';

std::string marked(const std::string& argument) {
  const bool needed = !argument.empty() && (argument.front() == '[' || argument.front() == bracketMark);
  return needed ? bracketMark + argument : argument;
}

std::string unmarked(const std::string& argument) {
  return !argument.empty() && argument.front() == bracketMark ? argument.substr(1) : argument;
}

std::string timeProblem(const std::string& argument) {
  const auto time = parseTimeArgument(unmarked(argument));
  return time ? std::string() : time.error();
}

/// The whole interface: options keep what was given as it was given.
struct Interface {
  CLI::App app{"Tells whether a movie suffers a gamma shift against its source.", "lumacheck"};
  CLI::App* check = nullptr;
  CLI::App* info = nullptr;
  CLI::App* sync = nullptr;
  CLI::Option *source = nullptr, *dest = nullptr, *files = nullptr;
  CLI::Option *windowSource = nullptr, *windowDest = nullptr;
  CLI::Option *syncSource = nullptr, *syncDest = nullptr;
  CLI::Option *at = nullptr, *sourceAt = nullptr, *destAt = nullptr;

  Interface() {
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", std::string("lumacheck " LUMACHECK_VERSION));
    windowSource = app.add_option("SOURCE")->description("Open the window on this source movie")->type_name("");
    windowDest = app.add_option("DEST")->description("and on this export of it")->type_name("");
    addCheck();
    addInfo();
    addSync();
  }

 private:
  static void addCommonOptions(CLI::App& command) {
    command.add_flag("--json")->description("Print JSON")->disable_flag_override();
    command.add_option("--log")->description("Append a log to this file")->type_name("FILE");
  }

  CLI::Option* addTime(const char* name, const char* description) {
    return check->add_option(name)->description(description)->type_name("T")->check(CLI::Validator(timeProblem, ""));
  }

  void addCheck() {
    check = app.add_subcommand("check", "Compare a movie with its source");
    source = check->add_option("SOURCE")->description("The source movie")->required()->type_name("");
    dest = check->add_option("DEST")->description("The movie to check against it")->required()->type_name("");
    at = addTime("--at", "Where to take both frames: seconds, or a timecode (default: the beginning)");
    sourceAt = addTime("--source-at", "Where to take the source frame");
    destAt = addTime("--dest-at", "Where to take the destination frame");
    at->excludes(sourceAt)->excludes(destAt);
    check->add_flag("--exit-zero")->description("Exit with 0 whatever the verdict")->disable_flag_override();
    addCommonOptions(*check);
    check->footer(
        "Exit status: 0 no shift, 1 a shift in pixels or metadata, 2 a usage error, a file or frame\n"
        "that cannot be read, or frames that do not match, 3 the source frame is too dark,\n"
        "130 interrupted.");
  }

  void addInfo() {
    info = app.add_subcommand("info", "Show the color metadata of movies");
    files = info->add_option("FILE")
                ->description("The movies")
                ->required()
                ->type_name("")
                ->expected(1, -1)
                ->allow_extra_args();
    addCommonOptions(*info);
    info->footer("Exit status: 0, or 2 when a file cannot be read.");
  }

  void addSync() {
    sync = app.add_subcommand("sync", "Copy the color metadata of a movie onto another and save that");
    syncSource = sync->add_option("SOURCE")->description("The source movie")->required()->type_name("");
    syncDest = sync->add_option("DEST")->description("The movie to change")->required()->type_name("");
    sync->add_option("--save-as")
        ->description("Leave DEST alone and write a self-contained copy here")
        ->type_name("OUT");
    sync->add_flag("--dry-run")->description("Only tell what would change")->disable_flag_override();
    addCommonOptions(*sync);
    sync->footer(
        "Exit status: 0 when it is done or there is nothing to do, 2 when it is refused, failed or incomplete.");
  }
};

std::optional<TimeArgument> timeOf(const CLI::Option& specific, const CLI::Option& common) {
  const CLI::Option& given = specific.count() > 0 ? specific : common;
  if (given.count() == 0) return std::nullopt;
  return *parseTimeArgument(unmarked(given.results().front()));
}

OutputForm formOf(const CLI::App& command) {
  return command.count("--json") > 0 ? OutputForm::Json : OutputForm::Text;
}

WindowOptions windowOptionsOf(const Interface& given) {
  WindowOptions options;
  for (const CLI::Option* option : {given.windowSource, given.windowDest}) {
    for (const std::string& file : option->results()) options.files.push_back(unmarked(file));
  }
  return options;
}

CheckOptions checkOptionsOf(const Interface& given) {
  return {
      unmarked(given.source->results().front()),
      unmarked(given.dest->results().front()),
      timeOf(*given.sourceAt, *given.at),
      timeOf(*given.destAt, *given.at),
      formOf(*given.check),
      given.check->count("--exit-zero") > 0 ? ExitPolicy::ZeroUnlessFailed : ExitPolicy::ByVerdict,
  };
}

InfoOptions infoOptionsOf(const Interface& given) {
  InfoOptions options{{}, formOf(*given.info)};
  for (const std::string& file : given.files->results()) options.files.push_back(unmarked(file));
  return options;
}

SyncOptions syncOptionsOf(const Interface& given) {
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

CommandLine commandLineOf(const Interface& given) {
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
  Interface interface;
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

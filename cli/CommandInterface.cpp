#include "cli/CommandInterface.h"

#include "cli/CommandResult.h"
#include "cli/TimeArgument.h"

namespace cli {
namespace {

constexpr char bracketMark = '\x01';

std::string timeProblem(const std::string& argument) {
  const auto time = parseTimeArgument(unmarked(argument));
  return time ? std::string() : time.error();
}

/// The words in lines of a terminal's width, as CLI11 leaves a footer alone.
std::string folded(const std::string& sentence) {
  constexpr std::size_t width = 92;
  std::string lines;
  std::size_t start = 0;
  while (sentence.size() - start > width) {
    const std::size_t space = sentence.rfind(' ', start + width);
    lines += sentence.substr(start, space - start) + '\n';
    start = space + 1;
  }
  return lines + sentence.substr(start);
}

}  // namespace

std::string marked(const std::string& argument) {
  const bool needed = !argument.empty() && (argument.front() == '[' || argument.front() == bracketMark);
  return needed ? bracketMark + argument : argument;
}

std::string unmarked(const std::string& argument) {
  return !argument.empty() && argument.front() == bracketMark ? argument.substr(1) : argument;
}

CommandInterface::CommandInterface() {
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", std::string("lumacheck " LUMACHECK_VERSION));
  windowSource = app.add_option("SOURCE")->description("Open the window on this source movie")->type_name("");
  windowDest = app.add_option("DEST")->description("and on this export of it")->type_name("");
  addCheck();
  addInfo();
  addSync();
}

std::vector<ExitMeaning> CommandInterface::exitMeanings(const CLI::App& command) const {
  if (&command == check) {
    return {{noShift, "no shift"},
            {shiftFound, "a shift in pixels or metadata"},
            {failure, "a usage error, a file or frame that cannot be read, or frames that do not match"},
            {sourceTooDark, "the source frame is too dark"},
            {interrupted, "interrupted"}};
  }
  if (&command == info)
    return {{noShift, "every file is read"},
            {failure, "a usage error, or a file that cannot be read"},
            {interrupted, "interrupted"}};
  if (&command == sync) {
    return {{noShift, "it is done, or there is nothing to do"},
            {failure, "a usage error, or it is refused, failed or incomplete"},
            {interrupted, "interrupted"}};
  }
  return {};
}

void CommandInterface::addCommonOptions(CLI::App& command) {
  command.add_flag("--json")->description("Print JSON")->disable_flag_override();
  command.add_option("--log")->description("Append a log to this file")->type_name(logValue);
}

CLI::Option* CommandInterface::addTime(const char* name, const char* description) {
  return check->add_option(name)
      ->description(description)
      ->type_name(timeValue)
      ->check(CLI::Validator(timeProblem, ""));
}

void CommandInterface::addCheck() {
  check = app.add_subcommand("check", "Compare a movie with its source");
  source = check->add_option("SOURCE")->description("The source movie")->required()->type_name("");
  dest = check->add_option("DEST")->description("The movie to check against it")->required()->type_name("");
  at = addTime("--at", "Where to take both frames: seconds, or a timecode (default: the beginning)");
  sourceAt = addTime("--source-at", "Where to take the source frame");
  destAt = addTime("--dest-at", "Where to take the destination frame");
  at->excludes(sourceAt)->excludes(destAt);
  check->add_flag("--exit-zero")->description("Exit with 0 whatever the verdict")->disable_flag_override();
  addCommonOptions(*check);
  addFooter(*check);
}

void CommandInterface::addInfo() {
  info = app.add_subcommand("info", "Show the color metadata of movies");
  files = info->add_option("FILE")
              ->description("The movies")
              ->required()
              ->type_name("")
              ->expected(1, -1)
              ->allow_extra_args();
  addCommonOptions(*info);
  addFooter(*info);
}

void CommandInterface::addSync() {
  sync = app.add_subcommand("sync", "Copy the color metadata of a movie onto another and save that");
  syncSource = sync->add_option("SOURCE")->description("The source movie")->required()->type_name("");
  syncDest = sync->add_option("DEST")->description("The movie to change")->required()->type_name("");
  sync->add_option("--save-as")
      ->description("Leave DEST alone and write a self-contained copy here")
      ->type_name(newMovieValue);
  sync->add_flag("--dry-run")->description("Only tell what would change")->disable_flag_override();
  addCommonOptions(*sync);
  addFooter(*sync);
}

void CommandInterface::addFooter(CLI::App& command) const {
  std::string sentence = "Exit status:";
  const char* separator = " ";
  for (const ExitMeaning& each : exitMeanings(command)) {
    sentence += separator + std::to_string(each.status) + ' ' + each.meaning;
    separator = "; ";
  }
  command.footer(folded(sentence + '.'));
}

}  // namespace cli

#include "cli/CommandInterface.h"

#include "cli/CommandResult.h"
#include "cli/TimeArgument.h"

namespace cli {
namespace {

/// An option or argument of one value. It is taken as it was given: CLI11's own
/// conversions know empty values and lists.
template <typename Take>
CLI::Option* addText(CLI::App& command, const char* name, const char* valueName, const char* description, Take take) {
  const auto takeFirst = [take](const CLI::results_t& given) {
    take(given.front());
    return true;
  };
  return command.add_option(name, takeFirst, description)->type_name(valueName);
}

/// An argument that must be given.
void addMovie(CLI::App& command, const char* name, const char* description, std::string& file) {
  addText(command, name, "", description, [&file](const std::string& given) { file = given; })->required();
}

template <typename Act>
void addFlag(CLI::App& command, const char* name, const char* description, Act act) {
  command.add_flag_callback(name, act, description)->disable_flag_override();
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

CommandInterface::CommandInterface() {
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", std::string("lumacheck " LUMACHECK_VERSION));
  const auto take = [this](const std::string& file) { windowOptions.files.push_back(file); };
  addText(app, "SOURCE", "", "Open the window on this source movie", take);
  addText(app, "DEST", "", "and on this export of it", take);
  addCheck();
  addInfo();
  addSync();
}

std::vector<ExitMeaning> CommandInterface::exitMeanings(const CLI::App& command) const {
  if (&command == check) {
    return {{noShift, "no shift"},
            {shiftFound, "a shift in pixels or metadata"},
            {failure,
             "a usage error, a file or frame that cannot be read, or "
             "frames that do not match"},
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

void CommandInterface::addCommonOptions(CLI::App& command, OutputForm& form) {
  addFlag(command, "--json", "Print JSON", [&form] { form = OutputForm::Json; });
  addText(command, "--log", logValue, "Append a log to this file", [this](const std::string& file) { logFile = file; });
  addFooter(command);
}

void CommandInterface::addTimes() {
  const auto add = [this](const char* name, const char* description, auto take) {
    return addText(*check, name, timeValue, description, [name, take](const std::string& given) {
      auto time = parseTimeArgument(given);
      if (!time) throw CLI::ValidationError(name, time.error());
      take(*time);
    });
  };
  CLI::Option* const at = add("--at",
                              "Where to take both frames: seconds, or a "
                              "timecode (default: the beginning)",
                              [this](const auto& time) { checkOptions.sourceTime = checkOptions.destTime = time; });
  at->excludes(add("--source-at", "Where to take the source frame",
                   [this](const auto& time) { checkOptions.sourceTime = time; }));
  at->excludes(add("--dest-at", "Where to take the destination frame",
                   [this](const auto& time) { checkOptions.destTime = time; }));
}

void CommandInterface::addCheck() {
  check = app.add_subcommand("check", "Compare a movie with its source");
  addMovie(*check, "SOURCE", "The source movie", checkOptions.source);
  addMovie(*check, "DEST", "The movie to check against it", checkOptions.dest);
  addTimes();
  addFlag(*check, "--exit-zero", "Exit with 0 whatever the verdict",
          [this] { checkOptions.exitPolicy = ExitPolicy::ZeroUnlessFailed; });
  addCommonOptions(*check, checkOptions.form);
}

void CommandInterface::addInfo() {
  info = app.add_subcommand("info", "Show the color metadata of movies");
  const auto take = [this](const CLI::results_t& files) {
    infoOptions.files = files;
    return true;
  };
  // As many as there are, by number: of "extra" arguments CLI11 takes those in
  // square brackets for lists.
  info->add_option("FILE", take, "The movies")
      ->required()
      ->type_name("")
      ->expected(CLI::detail::expected_max_vector_size, CLI::detail::expected_max_vector_size)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  addCommonOptions(*info, infoOptions.form);
}

void CommandInterface::addSync() {
  sync = app.add_subcommand("sync", "Copy the color metadata of a movie onto another and save that");
  addMovie(*sync, "SOURCE", "The source movie", syncOptions.source);
  addMovie(*sync, "DEST", "The movie to change", syncOptions.dest);
  addText(*sync, "--save-as", newMovieValue, "Leave DEST alone and write a self-contained copy here",
          [this](const std::string& file) { syncOptions.saveAs = file; });
  addFlag(*sync, "--dry-run", "Only tell what would change", [this] { syncOptions.mode = SyncMode::DryRun; });
  addCommonOptions(*sync, syncOptions.form);
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

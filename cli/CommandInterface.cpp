#include "cli/CommandInterface.h"

#include <charconv>
#include <sstream>

namespace cli {
namespace {

constexpr bool required = true, repeated = true;

const OptionDescription help{{"-h", "--help"}, Value::None, "", "Print this help message and exit"};
const OptionDescription version{{"--version"}, Value::None, "", "Display program version information and exit"};

template <typename Target>
Take into(Target& target) {
  return [&target](const std::string& given) {
    target = given;
    return std::string();
  };
}

Take addingTo(std::vector<std::string>& files) {
  return [&files](const std::string& given) {
    files.push_back(given);
    return std::string();
  };
}

template <typename Choice>
OptionDescription flag(const char* name, const char* description, Choice& target, Choice chosen) {
  const auto take = [&target, chosen](const std::string& /*given*/) {
    target = chosen;
    return std::string();
  };
  return {{name}, Value::None, "", description, {}, take};
}

using Times = std::vector<std::optional<TimeArgument>*>;

OptionDescription at(const char* name, const char* description, std::vector<std::string> excludes, Times targets) {
  const auto take = [targets = std::move(targets)](const std::string& given) {
    const auto time = parseTimeArgument(given);
    if (!time) return time.error();
    for (std::optional<TimeArgument>* each : targets) *each = *time;
    return std::string();
  };
  return {{name}, Value::Time, "T", description, std::move(excludes), take};
}

OptionDescription json(OutputForm& form) {
  return flag("--json", "Print JSON", form, OutputForm::Json);
}

OptionDescription file(const char* name, const char* description, std::optional<std::string>& target) {
  return {{name}, Value::File, "FILE", description, {}, into(target)};
}

OptionDescription log(GivenOptions& given) {
  return file("--log", "Append a log to this file", given.logFile);
}

template <typename Number>
Take numberInto(Number& target, Number least, Number most) {
  return [&target, least, most](const std::string& given) {
    Number number{};
    const char* const end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, number);
    if (error != std::errc() || stop != end || !(number >= least && number <= most)) {
      std::ostringstream sentence;
      sentence << "a number from " << least << " to " << most << " is expected";
      return sentence.str();
    }
    target = number;
    return std::string();
  };
}

OptionDescription align(Alignment& alignment) {
  OptionDescription option = flag("--align",
                                  "Where the frames are not the same, look for the destination's picture in the "
                                  "source, up to 10 s away, and check there",
                                  alignment, Alignment::Found);
  option.excludes = {"--frames", "--source-at"};
  return option;
}

OptionDescription frames(int& count) {
  return {{"--frames"},
          Value::Number,
          "N",
          "Let the finding be about this many frames, spread over the length that both have (default: 1, at --at)",
          {"--align"},
          numberInto(count, 1, 1000)};
}

OptionDescription sample(std::size_t& every) {
  return {{"--sample"}, Value::Number,
          "N",          "Compare every Nth frame of DEST only (default: every one)",
          {},           numberInto<std::size_t>(every, 1, 1000)};
}

OptionDescription tolerance(double& codes) {
  return {{"--tolerance"},
          Value::Number,
          "CODES",
          "How far the same picture may differ, in codes of 8 bits (default: 2)",
          {},
          numberInto(codes, 0.0, 50.0)};
}

template <typename Options>
std::vector<ArgumentDescription> bothMovies(Options& options, const char* dest) {
  return {{"SOURCE", "The source movie", required, !repeated, into(options.source)},
          {"DEST", dest, required, !repeated, into(options.dest)}};
}

std::vector<ExitDescription> verdictExits(const std::string& unreadable, const std::string& dark,
                                          const std::string& others) {
  return {{noShift, "the same, and no tag that counts differs"},
          {shiftFound, "a difference, in pixels or in tags"},
          {failure, "a usage error, or " + unreadable},
          {sourceTooDark, dark + " is too dark"},
          {noVerdict, "no verdict: " + others + ", or nothing that can be told surely"},
          {interrupted, "interrupted"}};
}

CommandDescription checkInterface(GivenOptions& given) {
  CheckOptions& check = given.check;
  return {"check",
          "Compare a movie with its source",
          {help,
           at("--at", "Where to take both frames: seconds, or a timecode (default: the beginning)",
              {"--dest-at", "--source-at"}, {&check.sourceTime, &check.destTime}),
           at("--source-at", "Where to take the source frame", {"--align", "--at"}, {&check.sourceTime}),
           at("--dest-at", "Where to take the destination frame", {"--at"}, {&check.destTime}), align(check.alignment),
           frames(check.frames), tolerance(check.tolerance),
           flag("--exit-zero", "Exit with 0 whatever the verdict", check.exitPolicy, ExitPolicy::ZeroUnlessFailed),
           json(check.form), log(given)},
          bothMovies(check, "The movie to check against it"),
          verdictExits("a file or frame that cannot be read", "the source frame", "frames of different pictures")};
}

CommandDescription infoInterface(GivenOptions& given) {
  return {"info",
          "Show the color metadata of movies",
          {help, json(given.info.form), log(given)},
          {{"FILE", "The movies", required, repeated, addingTo(given.info.files)}},
          {{noShift, "every file is read"},
           {failure, "a usage error, or a file that cannot be read"},
           {interrupted, "interrupted"}}};
}

CommandDescription syncInterface(GivenOptions& given) {
  SyncOptions& sync = given.sync;
  return {"sync",
          "Copy the color metadata of a movie onto another and save that",
          {help,
           {{"--save-as"},
            Value::File,
            "OUT",
            "Leave DEST alone and write a self-contained copy here",
            {},
            into(sync.saveAs)},
           flag("--dry-run", "Only tell what would change", sync.mode, SyncMode::DryRun),
           json(sync.form),
           log(given)},
          bothMovies(sync, "The movie to change"),
          {{noShift, "it is done, or there is nothing to do"},
           {failure, "a usage error, or it is refused, failed or incomplete"},
           {interrupted, "interrupted"}}};
}

CommandDescription scanInterface(GivenOptions& given) {
  ScanOptions& scan = given.scan;
  return {
      "scan",
      "Go through a whole movie and its source, and tell where and how they differ",
      {help, at("--from", "Where in DEST to begin: seconds, or a timecode (default: its beginning)", {}, {&scan.from}),
       at("--to", "Where in DEST to end (default: its end)", {}, {&scan.to}), sample(scan.every),
       flag("--no-align", "Compare frames of equal times, wherever the pictures are", scan.alignment,
            Alignment::AsTimesAre),
       file("--csv", "Write a line for every frame to this file", scan.csv),
       file("--plot", "Draw the exponent over time, as SVG or PNG by the file's name", scan.plot),
       file("--resume", "Keep what is found in this file; where it is there, go on from it", scan.resume),
       flag("--filter", "Print the filter of ffmpeg that undoes what was found", scan.filter, true),
       file("--lut", "Write a lookup table, a .cube file, that undoes what was found", scan.lut),
       file("--proof", "Write ten seconds of DEST with that undone, as .mov, and tell what differs still", scan.proof),
       flag("--exit-zero", "Exit with 0 whatever the verdict", scan.exitPolicy, ExitPolicy::ZeroUnlessFailed),
       json(scan.form), log(given)},
      bothMovies(scan, "The movie to compare with it"),
      verdictExits("a file that cannot be read to its end", "the source", "other pictures")};
}

}  // namespace

CommandDescription commandInterface(GivenOptions& given) {
  std::vector<std::string>& files = given.window.files;
  return {"lumacheck",
          "Tells whether a movie suffers a gamma shift against its source",
          {help, version},
          {{"SOURCE", "Open the window on this source movie", !required, !repeated, addingTo(files)},
           {"DEST", "and on this export of it", !required, !repeated, addingTo(files)}},
          {},
          {checkInterface(given), scanInterface(given), infoInterface(given), syncInterface(given)}};
}

}  // namespace cli

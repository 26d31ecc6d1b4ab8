#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/Commands.h"

namespace cli {

/// Takes a value that was given, "" for a flag. What is wrong with it; empty: nothing.
using Take = std::function<std::string(const std::string& given)>;

/// What an option's value is, as a shell completes it.
enum class Value { None, File, Time, Number };

struct OptionDescription {
  std::vector<std::string> names;  ///< with their dashes, short ones first
  Value value = Value::None;
  std::string valueName;                   ///< empty where there is no value
  std::string description;                 ///< part of a sentence, with a capital and no full stop
  std::vector<std::string> excludes = {};  ///< options that may not be given beside it, by their long names, in order
  Take take = {};                          ///< none: it ends the command
};

/// An argument that is no option: a movie.
struct ArgumentDescription {
  std::string name;
  std::string description;
  bool required = false;
  bool repeated = false;
  Take take = {};
};

struct ExitDescription {
  int status = 0;
  std::string meaning;  ///< part of a sentence: no capital, no full stop
};

struct CommandDescription {
  std::string name;
  std::string description;  ///< without a full stop
  std::vector<OptionDescription> options;
  std::vector<ArgumentDescription> arguments;
  std::vector<ExitDescription> exits = {};  ///< in ascending order; none of the command itself
  std::vector<CommandDescription> subcommands = {};
};

/// What all that can be given is kept in.
struct GivenOptions {
  CheckOptions check;
  InfoOptions info;
  SyncOptions sync;
  ScanOptions scan;
  WindowOptions window;  ///< of the command itself
  std::optional<std::string> logFile;
};

/// The whole interface of the command: its parser, the help, the manual page and the shells' completions are all made
/// of it. What it takes fills `given`, which outlives it.
CommandDescription commandInterface(GivenOptions& given);

}  // namespace cli

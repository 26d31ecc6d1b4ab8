#pragma once

#include <string>
#include <vector>

#include "cli/CommandInterface.h"

namespace cli::pages {

/// What can stand for an argument, as a shell completes it.
enum class Value { None, Movie, File, Time };

struct OptionDescription {
  std::vector<std::string> names;  ///< with their dashes, short ones first
  Value value = Value::None;
  std::string valueName;              ///< empty where there is no value
  std::string description;            ///< part of a sentence, with a capital and no full stop
  std::vector<std::string> excludes;  ///< options that may not be given beside it, by their long names, in order
};

struct ArgumentDescription {
  std::string name;
  std::string description;
  bool required = false;
  bool repeated = false;
};

struct ExitDescription {
  int status = 0;
  std::string meaning;
};

/// A command or subcommand as its pages tell it. Every argument that is no option is a movie.
struct CommandDescription {
  std::string name;
  std::string description;  ///< without a full stop
  std::vector<OptionDescription> options;
  std::vector<ArgumentDescription> arguments;
  std::vector<ExitDescription> exits;
  std::vector<CommandDescription> subcommands;
};

CommandDescription describe(const CommandInterface& interface);

}  // namespace cli::pages

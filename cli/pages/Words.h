#pragma once

#include <array>
#include <string>
#include <vector>

#include "cli/CommandInterface.h"

namespace cli::pages {

/// What names of movies usually end in. A shell offers such files first; the command takes others as well.
inline constexpr std::array movieExtensions = {"mov", "qt", "m4v", "mp4"};

template <typename Texts>
std::string joined(const Texts& texts, const std::string& separator) {
  std::string result;
  for (const auto& text : texts) {
    if (!result.empty()) result += separator;
    result += text;
  }
  return result;
}

/// The text with `to` wherever it had `from`.
std::string replaced(std::string text, const std::string& from, const std::string& to);

/// The names of the subcommands, with blanks between them.
std::string subcommandNames(const CommandDescription& command);

/// Every name of the options that take one of these values, in the command and its subcommands, each once: in the order
/// of the values, then of the options.
std::vector<std::string> optionsTaking(const CommandDescription& command, const std::vector<Value>& values);

/// The names that make no sense any more beside this option: its own and those that it excludes.
std::vector<std::string> settledBy(const OptionDescription& option);

/// Whether the command prints something and ends where it is given: no part of a synopsis.
bool endsTheCommand(const OptionDescription& option);

/// How many arguments that are no options the command takes at most; -1 for any number.
int mostArguments(const CommandDescription& command);

}  // namespace cli::pages

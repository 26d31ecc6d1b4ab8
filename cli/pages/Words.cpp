#include "cli/pages/Words.h"

#include <algorithm>

namespace cli::pages {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::string shellQuoted(const std::string& text) {
  return '\'' + replaced(text, "'", "'\\''") + '\'';
}

std::vector<const CommandDescription*> allOf(const CommandDescription& command) {
  std::vector<const CommandDescription*> result{&command};
  for (const CommandDescription& each : command.subcommands) result.push_back(&each);
  return result;
}

std::vector<std::string> optionsTaking(const CommandDescription& command, Value value) {
  std::vector<std::string> result;
  for (const CommandDescription* each : allOf(command)) {
    for (const OptionDescription& option : each->options) {
      if (option.value != value) continue;
      for (const std::string& name : option.names) {
        if (std::find(result.begin(), result.end(), name) == result.end()) result.push_back(name);
      }
    }
  }
  return result;
}

std::vector<std::string> optionNames(const CommandDescription& command) {
  std::vector<std::string> result;
  for (const OptionDescription& option : command.options)
    result.insert(result.end(), option.names.begin(), option.names.end());
  return result;
}

std::vector<std::string> settledBy(const OptionDescription& option) {
  std::vector<std::string> result = option.names;
  result.insert(result.end(), option.excludes.begin(), option.excludes.end());
  return result;
}

int mostArguments(const CommandDescription& command) {
  const bool repeated = std::any_of(command.arguments.begin(), command.arguments.end(),
                                    [](const ArgumentDescription& each) { return each.repeated; });
  return repeated ? -1 : static_cast<int>(command.arguments.size());
}

}  // namespace cli::pages

#include "cli/pages/Words.h"

#include <algorithm>

namespace cli::pages {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::string subcommandNames(const CommandDescription& command) {
  std::vector<std::string> names;
  for (const CommandDescription& each : command.subcommands) names.push_back(each.name);
  return joined(names, " ");
}

std::vector<std::string> optionsTaking(const CommandDescription& command, const std::vector<Value>& values) {
  std::vector<OptionDescription> options = command.options;
  for (const CommandDescription& each : command.subcommands)
    options.insert(options.end(), each.options.begin(), each.options.end());
  std::vector<std::string> result;
  for (const Value value : values) {
    for (const OptionDescription& option : options) {
      for (const std::string& name : option.names) {
        const bool isNew = std::find(result.begin(), result.end(), name) == result.end();
        if (option.value == value && isNew) result.push_back(name);
      }
    }
  }
  return result;
}

std::vector<std::string> settledBy(const OptionDescription& option) {
  std::vector<std::string> result = option.names;
  result.insert(result.end(), option.excludes.begin(), option.excludes.end());
  return result;
}

bool endsTheCommand(const OptionDescription& option) {
  return option.names.back() == "--help" || option.names.back() == "--version";
}

int mostArguments(const CommandDescription& command) {
  const bool repeated = std::any_of(command.arguments.begin(), command.arguments.end(),
                                    [](const ArgumentDescription& each) { return each.repeated; });
  return repeated ? -1 : static_cast<int>(command.arguments.size());
}

}  // namespace cli::pages

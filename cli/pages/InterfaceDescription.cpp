#include "cli/pages/InterfaceDescription.h"

#include <algorithm>

namespace cli::pages {
namespace {

Value valueOf(const std::string& valueName) {
  if (valueName.empty()) return Value::None;
  return valueName == CommandInterface::timeValue ? Value::Time : Value::File;
}

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

OptionDescription describe(const CLI::Option& option) {
  // A flag's type is empty too, but it takes none.
  const std::string valueName = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
  OptionDescription result{namesOf(option), valueOf(valueName), valueName, option.get_description(), {}};
  for (const CLI::Option* excluded : option.get_excludes()) result.excludes.push_back(namesOf(*excluded).back());
  std::sort(result.excludes.begin(), result.excludes.end());
  return result;
}

CommandDescription describe(const CommandInterface& interface, const CLI::App& command) {
  CommandDescription result;
  result.name = command.get_name();
  result.description = command.get_description();
  if (!result.description.empty() && result.description.back() == '.') result.description.pop_back();
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional()) {
      result.arguments.push_back({option->get_name(true), option->get_description(), option->get_required(),
                                  option->get_items_expected_max() > 1});
    } else {
      result.options.push_back(describe(*option));
    }
  }
  for (const ExitMeaning& exit : interface.exitMeanings(command)) result.exits.push_back({exit.status, exit.meaning});
  for (const CLI::App* subcommand : command.get_subcommands({}))
    result.subcommands.push_back(describe(interface, *subcommand));
  return result;
}

}  // namespace

CommandDescription describe(const CommandInterface& interface) {
  return describe(interface, interface.app);
}

}  // namespace cli::pages

#include <algorithm>
#include <cctype>
#include <sstream>

#include "cli/pages/Pages.h"
#include "cli/pages/Words.h"

namespace cli::pages {
namespace {

/// As roff prints it: a dash that can be copied as one, no line taken for a request.
std::string printed(const std::string& text) {
  std::string result = replaced(replaced(text, "\\", "\\e"), "-", "\\-");
  return !result.empty() && (result.front() == '.' || result.front() == '\'') ? "\\&" + result : result;
}

std::string bold(const std::string& text) {
  return "\\fB" + printed(text) + "\\fR";
}

std::string italic(const std::string& text) {
  return "\\fI" + printed(text) + "\\fR";
}

std::string argument(const ArgumentDescription& each) {
  return italic(each.name) + (each.repeated ? " ...\\&" : "");
}

std::string optionForm(const OptionDescription& option) {
  return bold(option.names.back()) + (option.valueName.empty() ? "" : ' ' + italic(option.valueName));
}

/// "[SOURCE [DEST]]": what may be left out, each only after the one before it.
std::string argumentForms(const CommandDescription& command) {
  std::string text, brackets;
  for (const ArgumentDescription& each : command.arguments) {
    text += each.required ? " " : " [";
    if (!each.required) brackets += ']';
    text += argument(each);
  }
  return text + brackets;
}

std::string synopsisOf(const CommandDescription& command, const std::string& name) {
  std::string text = ".HP\n" + bold(name) + argumentForms(command);
  for (const OptionDescription& option : command.options) {
    if (!endsTheCommand(option)) text += "\n[" + optionForm(option) + "]";
  }
  return text + "\n";
}

std::string synopsis(const CommandDescription& command) {
  std::string text = ".nh\n" + synopsisOf(command, command.name);
  for (const CommandDescription& each : command.subcommands) text += synopsisOf(each, command.name + ' ' + each.name);
  const std::string ending = ".HP\n" + bold(command.name) + " [" + italic("COMMAND") + "] " + bold("--help");
  return text + ending + "\n.HP\n" + bold(command.name) + ' ' + bold("--version") + "\n.hy\n";
}

std::string optionEntry(const OptionDescription& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.names) names.push_back(bold(name));
  std::string text = ".TP\n" + joined(names, ", ");
  if (!option.valueName.empty()) text += ' ' + italic(option.valueName);
  text += '\n' + printed(option.description) + ".\n";
  if (option.excludes.empty()) return text;
  std::vector<std::string> excluded;
  for (const std::string& name : option.excludes) excluded.push_back(bold(name));
  return text + "Not together with " + joined(excluded, " or ") + ".\n";
}

std::string entriesOf(const CommandDescription& command) {
  std::string text;
  for (const ArgumentDescription& each : command.arguments)
    text += ".TP\n" + argument(each) + '\n' + printed(each.description) + ".\n";
  for (const OptionDescription& option : command.options) text += optionEntry(option);
  return text;
}

/// The options of the command itself, then each subcommand with its own.
std::string commands(const CommandDescription& command) {
  std::string text;
  for (const OptionDescription& option : command.options) text += optionEntry(option);
  for (const CommandDescription& each : command.subcommands) {
    text += ".SS " + bold(command.name + ' ' + each.name) + '\n' + printed(each.description) + ".\n";
    text += entriesOf(each);
  }
  return text;
}

std::string exits(const CommandDescription& command) {
  std::string text;
  for (const CommandDescription& each : command.subcommands) {
    if (each.exits.empty()) continue;
    text += ".SS " + bold(command.name + ' ' + each.name) + '\n';
    for (const ExitDescription& exit : each.exits)
      text += ".TP\n" + bold(std::to_string(exit.status)) + '\n' + printed(exit.meaning) + '\n';
  }
  return text;
}

std::string title(const CommandDescription& command, const Release& release) {
  std::string name = command.name;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
  return ".TH " + name + " 1 \"" + release.date + "\" \"Lumacheck " + release.version + "\" \"User Commands\"\n";
}

/// "Tells whether..." as the name section has it: small, no full stop.
std::string name(const CommandDescription& command) {
  std::string what = command.description;
  if (!what.empty()) what.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(what.front())));
  return printed(command.name) + " \\- " + printed(what) + '\n';
}

}  // namespace

std::string manualPage(const CommandDescription& command, const Release& release, const std::string& text) {
  std::istringstream lines(text);
  std::string page;
  for (std::string line; std::getline(lines, line);) {
    if (line == "@TITLE@")
      page += title(command, release);
    else if (line == "@NAME@")
      page += name(command);
    else if (line == "@SYNOPSIS@")
      page += synopsis(command);
    else if (line == "@COMMANDS@")
      page += commands(command);
    else if (line == "@EXIT STATUS@")
      page += exits(command);
    else
      page += line + '\n';
  }
  return page;
}

}  // namespace cli::pages

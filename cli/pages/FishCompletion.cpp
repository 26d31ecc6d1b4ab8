#include "cli/pages/Pages.h"
#include "cli/pages/Words.h"

namespace cli::pages {
namespace {

constexpr auto fishOpening =
    R"(# What the line names before the cursor: the subcommand or "none", how many movies, "files" after "--", and whether an
# option there waits for its value.
function __@NAME@_given
    set -l words (commandline -opc)
    set -e words[1]
    set -l command none
    set -l movies 0
    set -l kind options
    set -l taking no
    for word in $words
        if test $taking = yes
            set taking no
        else if test $kind = options; and test "$word" = --
            set kind files
        else if test $kind = options; and string match -q -- '-?*' "$word"
            contains -- "$word" @VALUED@; and set taking yes
        else if test $command$kind$movies = noneoptions0; and contains -- "$word" @SUBCOMMANDS@
            set command $word
        else
            set movies (math $movies + 1)
        end
    end
    printf '%s\n' $command $movies $kind $taking
end

# Whether an option of that subcommand can stand here: one that none of the others, by their long names, settles.
function __@NAME@_option -a command
    set -l given (__@NAME@_given)
    test "$given[1] $given[3]" = "$command options"; or return 1
    set -l words (commandline -opc)
    test $given[4] = yes; and set -e words[-1]  # it still needs to be known
    for option in $argv[2..-1]
        string match -qr -- "^$option(=.*)?\$" $words; and return 1
    end
    return 0
end

function __@NAME@_subcommand
    set -l given (__@NAME@_given)
    test "$given" = 'none 0 options no'
end

function __@NAME@_movie
    set -l given (__@NAME@_given)
    test $given[4] = no; or return 1
    switch $given[1]
)";

constexpr auto complete = R"(    end
    return 0
end

complete -c @NAME@ -f
complete -c @NAME@ -n __@NAME@_movie -F
)";

std::string fishQuoted(const std::string& text) {
  return '\'' + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + '\'';
}

std::string movieCase(const CommandDescription& command, const std::string& pattern) {
  const int most = mostArguments(command);
  if (most < 0) return "";
  return "        case " + pattern + "\n            test $given[2] -lt " + std::to_string(most) + "; or return 1\n";
}

std::string nameOption(const std::string& name) {
  return name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
}

std::string optionLine(const OptionDescription& option, const std::string& command) {
  std::string text = "complete -c @NAME@ -n '__@NAME@_option " + command + ' ' + joined(settledBy(option), " ") + '\'';
  for (const std::string& name : option.names) text += nameOption(name);
  if (option.value == Value::Time || option.value == Value::Number) text += " -x";
  if (option.value == Value::File) text += " -r -F";
  return text + " -d " + fishQuoted(option.description) + '\n';
}

}  // namespace

std::string fishCompletion(const CommandDescription& command) {
  std::string text = fishOpening;
  for (const CommandDescription& each : command.subcommands) text += movieCase(each, each.name);
  text += movieCase(command, "none") + complete;
  for (const CommandDescription& each : command.subcommands)
    text += "complete -c @NAME@ -n __@NAME@_subcommand -a " + each.name + " -d " + fishQuoted(each.description) + '\n';
  for (const OptionDescription& option : command.options) text += optionLine(option, "none");
  for (const CommandDescription& each : command.subcommands) {
    for (const OptionDescription& option : each.options) text += optionLine(option, each.name);
  }
  text = replaced(text, "@SUBCOMMANDS@", subcommandNames(command));
  text = replaced(text, "@VALUED@", joined(optionsTaking(command, {Value::Time, Value::Number, Value::File}), " "));
  return replaced(text, "@NAME@", command.name);
}

}  // namespace cli::pages

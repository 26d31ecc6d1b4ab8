#include "cli/pages/Pages.h"
#include "cli/pages/Words.h"

namespace cli::pages {
namespace {

constexpr auto opening = R"(# bash completion for @NAME@                                   -*- shell-script -*-

_@NAME@()
{
    local cur prev words cword split
    _init_completion -s || return

    # What stands before the cursor: the subcommand, how many files, and every option.
    local command= taking= only_files= given= files=0 word i
    for ((i = 1; i < cword; i++)); do
        word=${words[i]}
        if [[ $taking ]]; then
            taking=
        elif [[ ! $only_files && $word == -- ]]; then
            only_files=yes
        elif [[ ! $only_files && $word == -?* ]]; then
            given+=" ${word%%=*}"
            case $word in
                @VALUED@) taking=$word ;;
            esac
        elif [[ ! $only_files && ! $command && $files == 0 && " @SUBCOMMANDS@ " == *" $word "* ]]; then
            command=$word
        else
            ((++files))
        fi
    done

    $split && taking=$prev
    case $taking in
        @TIMED@) return ;;
        @FILED@) _filedir; return ;;
    esac

    local options most
    case $command in
)";

constexpr auto settledOptions = R"(    esac

    if [[ ! $only_files && $cur == -* ]]; then
        local settled
        for word in $given; do
            settled=$word
            case $command$word in
)";

constexpr auto closing = R"(            esac
            for i in $settled; do
                options=${options/ $i / }
            done
        done
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi

    if ((most < 0 || files < most)); then
        _filedir '@(@EXTENSIONS@)'
        ((${#COMPREPLY[@]})) || _filedir
    fi
    if [[ ! $command && ! $only_files && $files == 0 ]]; then
        COMPREPLY+=($(compgen -W '@SUBCOMMANDS@' -- "$cur"))
    fi
} &&
    complete -F _@NAME@ @NAME@
)";

/// "check) options=' --at --json '; most=2 ;;": the options between spaces, so that each can be found and taken out.
std::string optionsCase(const CommandDescription& command, const std::string& pattern) {
  std::string names;
  for (const OptionDescription& option : command.options) names += ' ' + joined(option.names, "  ") + ' ';
  return "        " + pattern + ") options='" + names + "' most=" + std::to_string(mostArguments(command)) + " ;;\n";
}

/// What an option that is given settles beyond its own name.
std::string settledCases(const CommandDescription& command, const std::string& prefix) {
  std::string text;
  for (const OptionDescription& option : command.options) {
    const std::vector<std::string> settled = settledBy(option);
    if (settled.size() == 1) continue;
    std::vector<std::string> patterns;
    for (const std::string& name : option.names) patterns.push_back(prefix + name);
    text += "                " + joined(patterns, " | ") + ") settled='" + joined(settled, " ") + "' ;;\n";
  }
  return text;
}

}  // namespace

std::string bashCompletion(const CommandDescription& command) {
  std::string text = opening;
  for (const CommandDescription& each : command.subcommands) text += optionsCase(each, each.name);
  text += optionsCase(command, "*") + settledOptions;
  for (const CommandDescription& each : command.subcommands) text += settledCases(each, each.name);
  text += settledCases(command, "") + closing;

  text = replaced(text, "@VALUED@", joined(optionsTaking(command, {Value::Time, Value::Number, Value::File}), " | "));
  text = replaced(text, "@TIMED@", joined(optionsTaking(command, {Value::Time, Value::Number}), " | "));
  text = replaced(text, "@FILED@", joined(optionsTaking(command, {Value::File}), " | "));
  text = replaced(text, "@SUBCOMMANDS@", subcommandNames(command));
  text = replaced(text, "@EXTENSIONS@", joined(movieExtensions, "|"));
  return replaced(text, "@NAME@", command.name);
}

}  // namespace cli::pages

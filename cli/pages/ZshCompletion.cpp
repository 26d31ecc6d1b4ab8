#include "cli/pages/Pages.h"
#include "cli/pages/Words.h"

namespace cli::pages {
namespace {

constexpr auto zshOpening = R"(#compdef @NAME@

_@NAME@_movies() {
  _files -g '*.(#i)(@EXTENSIONS@)(-.)'
}

_@NAME@_first() {
  local ret=1
  local -a commands=(
@SUBCOMMANDS@  )
  _describe -t commands command commands && ret=0
  _@NAME@_movies && ret=0
  return ret
}

_@NAME@() {
  local curcontext=$curcontext state line ret=1
  typeset -A opt_args

  _arguments -C -S \
)";

constexpr auto subcommandsOpening = R"(    '(-): :->first' \
    '(-)*:: :->rest' && ret=0

  case $state in
    first)
      _@NAME@_first && ret=0
      ;;
    rest)
      case $words[1] in
)";

constexpr auto zshClosing = R"(        *)
          (( CURRENT <= @MOST@ )) && _@NAME@_movies && ret=0
          ;;
      esac
      ;;
  esac
  return ret
}

_@NAME@ "$@"
)";

/// In single quotes, for shells of the Bourne family.
std::string shellQuoted(const std::string& text) {
  return '\'' + replaced(text, "'", "'\\''") + '\'';
}

std::string explanation(const std::string& text) {
  return '[' + replaced(replaced(replaced(text, "\\", "\\\\"), "[", "\\["), "]", "\\]") + ']';
}

/// "'(--at --source-at)--at=[Where...]:time: '", one for each name of the option.
std::string optionSpecs(const OptionDescription& option, const std::string& indent) {
  const std::string excluded = endsTheCommand(option) ? "- : *" : joined(settledBy(option), " ");
  std::string value = explanation(option.description);
  if (option.value == Value::Time) value = '=' + value + ":time: ";
  if (option.value == Value::Number) value = '=' + value + ":number: ";
  if (option.value == Value::File) value = '=' + value + ":file:_files";
  std::string text;
  for (const std::string& name : option.names) {
    std::string spec = '(' + excluded + ')';
    spec.append(name).append(value);
    text.append(indent).append(shellQuoted(spec)).append(" \\\n");
  }
  return text;
}

std::string argumentSpecs(const CommandDescription& command, const std::string& indent) {
  std::string text;
  for (const ArgumentDescription& each : command.arguments) {
    text += indent +
            shellQuoted((each.repeated ? "*" : "") + std::string(":") + replaced(each.description, ":", "\\:") + ":_" +
                        "@NAME@_movies") +
            " \\\n";
  }
  return text;
}

std::string subcommandCase(const CommandDescription& command) {
  const std::string indent = "            ";
  std::string text = "        " + command.name + ")\n          _arguments -S \\\n";
  for (const OptionDescription& option : command.options) text += optionSpecs(option, indent);
  text += argumentSpecs(command, indent);
  return text + indent + "&& ret=0\n          ;;\n";
}

}  // namespace

std::string zshCompletion(const CommandDescription& command) {
  std::string text = zshOpening, subcommands;
  for (const OptionDescription& option : command.options) text += optionSpecs(option, "    ");
  text += subcommandsOpening;
  for (const CommandDescription& each : command.subcommands) {
    text += subcommandCase(each);
    subcommands += "    " + shellQuoted(each.name + ":" + each.description) + '\n';
  }
  text += zshClosing;
  text = replaced(text, "@SUBCOMMANDS@", subcommands);
  text = replaced(text, "@MOST@", std::to_string(mostArguments(command)));
  text = replaced(text, "@EXTENSIONS@", joined(movieExtensions, "|"));
  return replaced(text, "@NAME@", command.name);
}

}  // namespace cli::pages

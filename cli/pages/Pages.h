#pragma once

#include <string>

#include "cli/CommandInterface.h"

namespace cli::pages {

/// What a manual page tells of its release.
struct Release {
  std::string version;
  std::string date;  ///< as in 2026-11-21
};

/// The manual page, in the man(7) macros. `text` is its prose, in which lines of their own stand for what the interface
/// tells: "@TITLE@", "@NAME@", "@SYNOPSIS@", "@COMMANDS@" and "@EXIT STATUS@".
std::string manualPage(const CommandDescription& command, const Release& release, const std::string& text);

/// What bash reads from share/bash-completion/completions. It uses the functions of bash-completion.
std::string bashCompletion(const CommandDescription& command);

/// What zsh reads from share/zsh/vendor-completions, for its completion system.
std::string zshCompletion(const CommandDescription& command);

/// What fish reads from share/fish/vendor_completions.d.
std::string fishCompletion(const CommandDescription& command);

}  // namespace cli::pages

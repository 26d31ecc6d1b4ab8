#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CheckCommand.h"
#include "cli/InfoCommand.h"
#include "cli/SyncCommand.h"
#include "cli/WindowCommand.h"

namespace cli {

/// What an exit status of a subcommand means.
struct ExitMeaning {
  int status;
  const char* meaning;  ///< part of a sentence: no capital, no full stop
};

/// The whole interface of the command as its parser holds it: the help, the manual page and the shells' completions are
/// all made of it. Parsing fills the options of the subcommand that is given.
struct CommandInterface {
  CLI::App app{"Tells whether a movie suffers a gamma shift against its source.", "lumacheck"};
  CLI::App* check = nullptr;
  CLI::App* info = nullptr;
  CLI::App* sync = nullptr;
  CheckOptions checkOptions;
  InfoOptions infoOptions;
  SyncOptions syncOptions;
  WindowOptions windowOptions;  ///< of the command itself
  std::optional<std::string> logFile;

  CommandInterface();
  CommandInterface(const CommandInterface&) = delete;
  CommandInterface& operator=(const CommandInterface&) = delete;
  CommandInterface(CommandInterface&&) = delete;
  CommandInterface& operator=(CommandInterface&&) = delete;
  ~CommandInterface() = default;

  /// The exit statuses of one of the subcommands, in ascending order; none of the command itself.
  std::vector<ExitMeaning> exitMeanings(const CLI::App& command) const;

  /// The names that the values of options go by in the help.
  static constexpr auto timeValue = "T";
  static constexpr auto logValue = "FILE";
  static constexpr auto newMovieValue = "OUT";

 private:
  void addCommonOptions(CLI::App& command, OutputForm& form);
  void addTimes();
  void addCheck();
  void addInfo();
  void addSync();
  void addFooter(CLI::App& command) const;
};

}  // namespace cli

#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace cli {

/// What an exit status of a subcommand means.
struct ExitMeaning {
  int status;
  const char* meaning;  ///< part of a sentence: no capital, no full stop
};

/// The whole interface of the command as its parser holds it: the help, the manual page and the shells' completions are
/// all made of it. Options keep what was given as it was given.
struct CommandInterface {
  CLI::App app{"Tells whether a movie suffers a gamma shift against its source.", "lumacheck"};
  CLI::App* check = nullptr;
  CLI::App* info = nullptr;
  CLI::App* sync = nullptr;
  CLI::Option *source = nullptr, *dest = nullptr, *files = nullptr;
  CLI::Option *windowSource = nullptr, *windowDest = nullptr;
  CLI::Option *syncSource = nullptr, *syncDest = nullptr;
  CLI::Option *at = nullptr, *sourceAt = nullptr, *destAt = nullptr;

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
  static void addCommonOptions(CLI::App& command);
  CLI::Option* addTime(const char* name, const char* description);
  void addCheck();
  void addInfo();
  void addSync();
  void addFooter(CLI::App& command) const;
};

/// CLI11 takes a value in square brackets for a list. An argument that begins with a bracket travels through it with a
/// mark in front, as does one that begins with the mark.
std::string marked(const std::string& argument);
std::string unmarked(const std::string& argument);

}  // namespace cli

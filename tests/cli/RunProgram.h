#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace cli::test {

struct ProgramRun {
  int status = 0;  ///< the exit status, or minus the signal that ended it
  std::string out, err;
};

enum class StandardOutput { Captured, Closed, WithoutReader };

struct ProgramOptions {
  std::map<std::string, std::string> environment;  ///< in place of the tests' own values
  StandardOutput output = StandardOutput::Captured;
  std::string outputFile;  ///< where stdout goes instead, when not empty
};

/// Runs the command that this build made, stdin empty, to its end.
ProgramRun runLumacheck(const std::vector<std::string>& arguments, const ProgramOptions& options = {});

/// The same with a terminal as its stdout.
ProgramRun runLumacheckOnTerminal(const std::vector<std::string>& arguments, const ProgramOptions& options = {});

/// The same with nobody reading its stdout, until it has written and waits to go on; then interrupted.
ProgramRun interruptLumacheckWhileWriting(const std::vector<std::string>& arguments);

/// The same, sent a signal as soon as `now` says so of its process, unless it has ended by then.
ProgramRun runLumacheckUntil(const std::function<bool(pid_t process)>& now, int signal,
                             const std::vector<std::string>& arguments);

}  // namespace cli::test

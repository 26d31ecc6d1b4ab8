#pragma once

#include <string>

namespace cli {

/// What the command exits with.
enum ExitStatus : int {
  noShift = 0,        ///< also: done
  shiftFound = 1,     ///< in pixels or in metadata
  failure = 2,        ///< usage, or a file or frame that cannot be read, or frames that do not match
  sourceTooDark = 3,  ///< no verdict on this frame
  interrupted = 130   ///< by SIGINT; another signal that was noted gives 128 and its number, as shells tell it
};

/// What a command has to say: data for stdout, sentences for stderr, and the exit status. Bytes as they are written.
struct CommandResult {
  std::string out, err;
  int status = noShift;
};

/// A sentence for stderr, ended as a line.
inline std::string complaint(const std::string& sentence) {
  return "lumacheck: " + sentence + "\n";
}

}  // namespace cli

#pragma once

namespace privileged {

/// What the privileged program ends with when no tool ran. A tool's own status is passed on, which is 0 or 1; pkexec
/// itself ends with 126 or 127, sudo with 1.
enum class ExitStatus : int {
  done = 0,
  usage = 64,           ///< not one of the command lines that are let through
  badPath = 65,         ///< a path that is not absolute, not UTF-8, or has an empty, "." or ".." component
  notThere = 66,        ///< a folder or file that the command line needs is missing
  systemError = 71,     ///< the tool could not be started
  cannotCreate = 73,    ///< the destination cannot be made, or what stands there cannot be replaced
  changed = 75,         ///< a folder became another one while it was looked at
  protectedPlace = 77,  ///< a system directory
};

}  // namespace privileged

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace privileged {

enum class Tool { remove, move, copy, createFolder };

/// A command line that may run with administrator rights.
struct ToolCommand {
  Tool tool = Tool::remove;
  std::vector<std::string> program;  ///< the tool's path and its options
  std::vector<std::string> paths;    ///< bytes, unchecked
};

/// The command line as one of "/bin/rm -Rdf P", "/bin/rm -R -f P", "/bin/mv -f A B", "/bin/cp -f -p -R A B" and
/// "/bin/mkdir -p P"; none for any other, one argument more or less included.
std::optional<ToolCommand> parseToolCommand(const std::vector<std::string>& arguments);

/// Whether a path has the only form that is let through: absolute, UTF-8, and made of components that are neither empty
/// nor "." nor "..". "/" has none and counts.
bool isPlainPath(const std::string& path);

/// What stands between the slashes of an absolute path; nothing for "/".
std::vector<std::string> componentsOf(const std::string& path);

}  // namespace privileged

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <unistd.h>

#include "cli/Commands.h"

namespace cli {

CommandResult runWindowCommand(const WindowOptions& options) {
  for (const std::string& file : options.files) {
    if (::access(file.c_str(), F_OK) == 0) continue;
    return {"", complaint("There is no command and no file called '" + file + "'."), failure};
  }
  std::error_code problem;
  const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", problem);
  std::string window = (own.parent_path() / "Lumacheck").string();
  std::vector<std::string> files = options.files;
  std::vector<char*> arguments{window.data()};
  for (std::string& file : files) arguments.push_back(file.data());
  arguments.push_back(nullptr);
  ::execv(window.c_str(), arguments.data());
  return {"", complaint("The window cannot be opened: " + window + ": " + std::strerror(errno) + "."), failure};
}

}  // namespace cli

#include "SharedFiles/privileged/ToolProcess.h"

#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/FileBytes.h"
#include "system/SpawnSettings.h"

namespace privileged {

int runTool(const std::vector<std::string>& program, std::initializer_list<ToolPath> paths) {
  constexpr int firstFolder = 3;  // after the standard streams
  constexpr auto failed = static_cast<int>(ExitStatus::systemError);
  sys::SpawnSettings settings;
  settings.open("/dev/null", O_RDONLY, STDIN_FILENO);
  std::vector<std::string> arguments = program;
  std::vector<sys::Descriptor> held;  // above the numbers that the folders are placed on
  int number = firstFolder;
  for (const ToolPath& path : paths) {
    held.emplace_back(::fcntl(path.folder.get(), F_DUPFD_CLOEXEC, firstFolder + static_cast<int>(paths.size())));
    if (!held.back().isOpen()) return failed;
    settings.place(held.back(), number);
    arguments.push_back("/proc/self/fd/" + std::to_string(number++) + "/" + path.name);
  }
  pid_t identifier = 0;
  const std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8"};
  if (settings.spawn(identifier, std::move(arguments), environment, number) != 0) return failed;
  int status = 0;
  if (sys::untilUninterrupted([&] { return ::waitpid(identifier, &status, 0); }) < 0) return failed;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace privileged

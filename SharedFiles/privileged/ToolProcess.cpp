#include "SharedFiles/privileged/ToolProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/SpawnSettings.h"

namespace privileged {

namespace {

constexpr int firstFolder = 3;  // after the standard streams

/// Whether the program was started.
bool spawned(sys::SpawnSettings& settings, pid_t& identifier, std::vector<std::string>& arguments, int firstClosed) {
  static const std::array<const char*, 3> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", nullptr};
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return settings.spawn(identifier, pointers.front(), pointers.data(), const_cast<char* const*>(environment.data()),
                        firstClosed) == 0;
}

int waitFor(pid_t identifier) {
  int status = 0;
  while (::waitpid(identifier, &status, 0) < 0) {
    if (errno != EINTR) return static_cast<int>(ExitStatus::systemError);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int runTool(const std::vector<std::string>& program, std::initializer_list<ToolPath> paths) {
  sys::SpawnSettings settings;
  settings.open("/dev/null", O_RDONLY, STDIN_FILENO);
  std::vector<std::string> arguments = program;
  std::vector<sys::Descriptor> held;  // above the numbers that the folders are placed on
  int number = firstFolder;
  for (const ToolPath& path : paths) {
    held.emplace_back(::fcntl(path.folder.get(), F_DUPFD_CLOEXEC, firstFolder + static_cast<int>(paths.size())));
    if (!held.back().isOpen()) return static_cast<int>(ExitStatus::systemError);
    settings.place(held.back(), number);
    arguments.push_back("/proc/self/fd/" + std::to_string(number++) + "/" + path.name);
  }
  pid_t identifier = 0;
  if (!spawned(settings, identifier, arguments, number)) return static_cast<int>(ExitStatus::systemError);
  return waitFor(identifier);
}

}  // namespace privileged

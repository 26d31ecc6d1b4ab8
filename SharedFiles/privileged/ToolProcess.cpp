#include "SharedFiles/privileged/ToolProcess.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

constexpr int firstFolder = 3;  // after the standard streams

class SpawnSettings {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    sigset_t none, all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  void place(const FileDescriptor& descriptor, int number) {
    ::posix_spawn_file_actions_adddup2(&actions_, descriptor.get(), number);
  }
  bool spawn(pid_t& identifier, std::vector<std::string>& arguments, int firstClosed) {
    static const std::array<const char*, 3> environment = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", nullptr};
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, firstClosed);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return ::posix_spawn(&identifier, pointers.front(), &actions_, &attributes_, pointers.data(),
                         const_cast<char* const*>(environment.data())) == 0;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

int waitFor(pid_t identifier) {
  int status = 0;
  while (::waitpid(identifier, &status, 0) < 0) {
    if (errno != EINTR) return static_cast<int>(ExitStatus::systemError);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int runTool(const std::vector<std::string>& program, std::initializer_list<ToolPath> paths) {
  SpawnSettings settings;
  std::vector<std::string> arguments = program;
  std::vector<FileDescriptor> held;  // above the numbers that the folders are placed on
  int number = firstFolder;
  for (const ToolPath& path : paths) {
    held.emplace_back(::fcntl(path.folder.get(), F_DUPFD_CLOEXEC, firstFolder + static_cast<int>(paths.size())));
    if (!held.back().isOpen()) return static_cast<int>(ExitStatus::systemError);
    settings.place(held.back(), number);
    arguments.push_back("/proc/self/fd/" + std::to_string(number++) + "/" + path.name);
  }
  pid_t identifier = 0;
  if (!settings.spawn(identifier, arguments, number)) return static_cast<int>(ExitStatus::systemError);
  return waitFor(identifier);
}

#pragma once

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include <spawn.h>
#include <unistd.h>

#include "system/Descriptor.h"

namespace sys {

/// What posix_spawn takes for a program that gets no descriptor but those placed, no signal blocked, and the default
/// handling of all.
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
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  /// The program's descriptor of that number, in the order of the calls. A descriptor that is not open places nothing.
  void place(const Descriptor& descriptor, int number) {
    if (descriptor.isOpen()) ::posix_spawn_file_actions_adddup2(&actions_, descriptor.get(), number);
  }
  void open(const char* path, int flags, int number) {
    ::posix_spawn_file_actions_addopen(&actions_, number, path, flags, 0);
  }
  /// Starts the program that the first argument is the path of, with the descriptors below `firstClosed`. Without an
  /// environment it gets this process's. 0, or an errno.
  int spawn(pid_t& identifier, std::vector<std::string> arguments, std::optional<std::vector<std::string>> environment,
            int firstClosed) {
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, firstClosed);
    return ::posix_spawn(&identifier, arguments.front().c_str(), &actions_, &attributes_, pointersTo(arguments).data(),
                         environment ? pointersTo(*environment).data() : environ);
  }

 private:
  static std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace sys

#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/privileged/ExitStatus.h"
#include "SharedFiles/privileged/PrivilegedRun.h"
#include "system/StandardDescriptors.h"

namespace {

/// Who asked: pkexec and sudo each name the user that they started the program for.
std::vector<uid_t> callingUsers() {
  std::vector<uid_t> users = {::getuid()};
  for (const char* variable : {"PKEXEC_UID", "SUDO_UID"}) {
    const char* text = std::getenv(variable);
    if (text == nullptr) continue;
    std::uint32_t user = 0;
    const char* end = text + std::strlen(text);
    if (const auto result = std::from_chars(text, end, user); result.ec == std::errc() && result.ptr == end)
      users.push_back(user);
  }
  return users;
}

/// The program lies two folders below the prefix whose `bin` holds the application.
BundleInfo applicationBundle() {
  const QString prefix = BundleInfo::mainBundle().executableFolder().section(u'/', 0, -3);
  return {{}, prefix + QStringLiteral("/bin/Lumacheck")};
}

/// Nothing of the caller's surroundings reaches the checks or a tool.
bool leaveCallersSurroundings() {
  if (!sys::keepStandardDescriptorsTaken() || ::close_range(STDERR_FILENO + 1, ~0U, 0) != 0) return false;
  std::signal(SIGPIPE, SIG_IGN);
  ::umask(022);
  return ::clearenv() == 0 && ::chdir("/") == 0;
}

}  // namespace

/// usage: lumacheck-privileged TOOL OPTIONS... PATH [PATH]
/// Writes the line "started" once the tool runs; ends as runPrivileged() tells.
int main(int count, char** arguments) {
  const std::vector<uid_t> users = callingUsers();
  if (!leaveCallersSurroundings()) return static_cast<int>(privileged::ExitStatus::systemError);
  const std::vector<std::string> commandLine(arguments + (count > 0 ? 1 : 0), arguments + count);
  const privileged::ProtectedPlaces places = privileged::systemPlaces(users, applicationBundle());
  return privileged::runPrivileged(commandLine, {.places = places, .started = [] {
                                                   std::puts("started");
                                                   std::fflush(stdout);
                                                 }});
}

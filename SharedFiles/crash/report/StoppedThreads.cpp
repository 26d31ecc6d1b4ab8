#include "SharedFiles/crash/report/StoppedThreads.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <string>
#include <thread>

#include <sys/ptrace.h>
#include <sys/wait.h>

#include "system/FilePlace.h"

namespace crash {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto patience = std::chrono::seconds(2);
constexpr auto pause = std::chrono::milliseconds(1);

bool seize(pid_t thread) {
  return ::ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) == 0 &&
         ::ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr) == 0;
}

bool contains(const std::vector<pid_t>& threads, pid_t thread) {
  return std::find(threads.begin(), threads.end(), thread) != threads.end();
}

/// Whether it stopped before the time was up. A thread that ended does not.
bool hasStopped(pid_t thread, Clock::time_point end) {
  for (;;) {
    int status = 0;
    const pid_t changed = ::waitpid(thread, &status, __WALL | WNOHANG);
    if (changed == thread) return WIFSTOPPED(status);
    if ((changed < 0 && errno != EINTR) || Clock::now() >= end) return false;
    std::this_thread::sleep_for(pause);
  }
}

/// The threads that the process has now, without the crashed one.
std::vector<pid_t> threadsOf(pid_t process, pid_t crashed) {
  std::vector<pid_t> threads;
  const auto names = sys::namesInFolderAt("/proc/" + std::to_string(process) + "/task");
  for (const std::string& name : names.value_or(std::vector<std::string>())) {
    pid_t thread = 0;
    std::from_chars(name.data(), name.data() + name.size(), thread);
    if (thread > 0 && thread != crashed) threads.push_back(thread);
  }
  return threads;
}

}  // namespace

StoppedThreads::StoppedThreads(pid_t process, pid_t crashed) {
  const Clock::time_point end = Clock::now() + patience;
  // A thread may start others before it is stopped: look again until there is none that is new.
  for (bool found = true; found && Clock::now() < end;) {
    found = false;
    for (const pid_t thread : threadsOf(process, crashed)) {
      if (contains(seized_, thread) || !seize(thread)) continue;
      seized_.push_back(thread);
      found = true;
    }
  }
  for (const pid_t thread : seized_) {
    if (hasStopped(thread, end)) stopped_.push_back(thread);
  }
  std::sort(stopped_.begin(), stopped_.end());
}

StoppedThreads::~StoppedThreads() {
  for (const pid_t thread : seized_) ::ptrace(PTRACE_DETACH, thread, nullptr, nullptr);
}

}  // namespace crash

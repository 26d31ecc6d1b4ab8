#include "SharedFiles/crash/handler/ReportProgram.h"

#include <array>
#include <cerrno>
#include <ctime>

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace crash {
namespace {

constexpr std::size_t stackSize = 65536;
constexpr int executionFailed = 127;
constexpr int firstOtherDescriptor = 3;

}  // namespace

bool ReportProgram::prepare(const CrashHandlerSettings& settings) {
  settings_ = settings;
  std::size_t count = 0;
  for (std::string* text :
       {&settings_.reportProgram, &settings_.reportFolder, &settings_.application, &settings_.version}) {
    arguments_[count++] = text->data();
  }
  static char locale[] = "LC_ALL=C";
  environment_[0] = locale;

  void* const stack = ::mmap(nullptr, stackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (stack == MAP_FAILED) return false;
  stackTop_ = static_cast<char*>(stack) + stackSize;
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return false;
  reading_ = ends[0];
  writing_ = ends[1];
  return true;
}

/// Runs in the memory of the crashed process, whose thread waits until the program has taken over.
int ReportProgram::run(void* self) {
  const auto& program = *static_cast<const ReportProgram*>(self);
  // A crash here must not come back into the handler.
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP, SIGALRM}) {
    std::signal(signal, SIG_DFL);
  }
  ::dup2(program.reading_, STDIN_FILENO);
  ::syscall(SYS_close_range, firstOtherDescriptor, ~0U, CLOSE_RANGE_CLOEXEC);
  ::execve(program.arguments_[0], program.arguments_, program.environment_);
  ::_exit(executionFailed);
}

bool ReportProgram::start(const CrashRequest& request) {
  // Nobody hears of its end but wait(): no SIGCHLD is sent.
  process_ = ::clone(&ReportProgram::run, stackTop_, CLONE_VM | CLONE_VFORK, this);
  if (process_ <= 0) return false;
  ::prctl(PR_SET_PTRACER, process_);
  return ::write(writing_, &request, sizeof request) == static_cast<ssize_t>(sizeof request);
}

void ReportProgram::release() {
  for (int* const end : {&reading_, &writing_}) {
    if (*end >= 0) ::close(*end);
    *end = -1;
  }
}

std::int64_t ReportProgram::milliseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool ReportProgram::wait(std::int64_t deadline) const {
  constexpr timespec pause{0, 5'000'000};
  int status = 0;
  for (;;) {
    const pid_t ended = ::waitpid(process_, &status, __WALL | WNOHANG);
    if (ended == process_) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (ended < 0 && errno != EINTR) return false;
    if (milliseconds() >= deadline) break;
    ::nanosleep(&pause, nullptr);
  }
  ::kill(process_, SIGKILL);
  ::waitpid(process_, &status, __WALL);
  return false;
}

}  // namespace crash

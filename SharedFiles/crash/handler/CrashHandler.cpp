#include "SharedFiles/crash/handler/CrashHandler.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <typeinfo>

#include <cxxabi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashRequest.h"
#include "SharedFiles/crash/handler/RawReport.h"
#include "SharedFiles/crash/handler/ReportProgram.h"
#include "SharedFiles/crash/handler/Sanitizers.h"
#include "SharedFiles/crash/handler/SignalSafeText.h"
#include "SharedFiles/crash/handler/ThreadCrashStack.h"

namespace crash {
namespace {

constexpr std::array fatalSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP};
constexpr std::int64_t programMilliseconds = 10'000;
constexpr unsigned lastResortSeconds = 13;
constexpr int mostNestedCrashes = 8;

/// How far the crashed thread has come. Each step is begun once, whatever happens in it.
enum class Step { starting, waiting, writing, finishing, dying };

/// All of what a handler uses, made before any signal.
struct Prepared {
  ReportProgram program;
  RawReport rawReport;
  std::array<char, std::tuple_size_v<decltype(CrashRequest::exception)>> exception{};
  std::terminate_handler previousTerminate = nullptr;

  std::atomic<pid_t> crashedThread = 0;
  CrashRequest request;  // this and the rest belong to the crashed thread
  std::atomic<Step> step = Step::starting;
  std::int64_t deadline = 0;
  int nestedCrashes = 0;
};
static_assert(std::atomic<pid_t>::is_always_lock_free && std::atomic<Step>::is_always_lock_free);

std::atomic<Prepared*> prepared = nullptr;

pid_t currentThread() {
  return static_cast<pid_t>(::syscall(SYS_gettid));
}

void setDefaultAction(int signal) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  ::sigaction(signal, &action, nullptr);
}

void unblock(int signal) {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

/// Has this thread get the first signal again, with what the system said of it, and no handler in its way.
[[noreturn]] void die(siginfo_t signal) {
  const int number = signal.si_signo;
  setDefaultAction(number);
  if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), currentThread(), number, &signal) != 0) {
    ::syscall(SYS_tgkill, ::getpid(), currentThread(), number);
  }
  unblock(number);
  constexpr int shellsBase = 128;
  ::_exit(shellsBase + number);
}

/// Time is up; on whichever thread the alarm arrives.
void handleAlarm(int /*signal*/) {
  die(prepared.load()->request.signal);
}

void beginAlarm() {
  struct sigaction action {};
  action.sa_handler = handleAlarm;
  action.sa_flags = SA_ONSTACK;
  ::sigfillset(&action.sa_mask);
  ::sigaction(SIGALRM, &action, nullptr);
  unblock(SIGALRM);
  ::alarm(lastResortSeconds);
}

/// Another thread was first; it ends the process.
[[noreturn]] void waitForTheEnd(const siginfo_t& signal) {
  constexpr timespec pause{0, 50'000'000};
  const std::int64_t end = ReportProgram::milliseconds() + std::int64_t{lastResortSeconds} * 2000;
  while (ReportProgram::milliseconds() < end) ::nanosleep(&pause, nullptr);
  die(signal);
}

void describe(Prepared& all, const siginfo_t& signal, void* context) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  all.request.process = ::getpid();
  all.request.thread = currentThread();
  all.request.second = now.tv_sec;
  all.request.context = reinterpret_cast<std::uint64_t>(context);
  all.request.signal = signal;
  all.request.exception = all.exception;
  all.deadline = ReportProgram::milliseconds() + programMilliseconds;
}

[[noreturn]] void proceed(Prepared& all) {
  if (all.step == Step::starting) {
    // A crash from here on finds the next step.
    all.step = Step::writing;
    if (all.program.start(all.request)) all.step = Step::waiting;
  }
  if (all.step == Step::waiting) {
    if (all.nestedCrashes <= mostNestedCrashes && all.program.wait(all.deadline)) die(all.request.signal);
    all.step = Step::writing;
  }
  if (all.step == Step::writing) {
    all.step = Step::finishing;
    all.program.release();
    all.rawReport.begin(all.request);
  }
  if (all.step == Step::finishing) {
    all.step = Step::dying;
    all.rawReport.finish();
  }
  die(all.request.signal);
}

/// Another process sends it: nothing went wrong here.
bool isSentFromOutside(const siginfo_t& signal) {
  return signal.si_code <= 0 && signal.si_pid != ::getpid();
}

void handleFatalSignal(int /*signal*/, siginfo_t* information, void* context) {
  Prepared& all = *prepared.load();
  pid_t expected = 0;
  const pid_t thread = currentThread();
  if (all.crashedThread.compare_exchange_strong(expected, thread)) {
    describe(all, *information, context);
    beginAlarm();
  } else if (expected != thread) {
    waitForTheEnd(*information);
  } else if (isSentFromOutside(*information)) {
    return;
  } else {
    ++all.nestedCrashes;
  }
  proceed(all);
}

void copyText(Prepared& all, const char* type, const char* what) {
  SignalSafeText text;
  text.add(type);
  if (what != nullptr) text.add(": ").add(what);
  const std::size_t length = std::min(text.size(), all.exception.size() - 1);
  std::memcpy(all.exception.data(), text.text(), length);
  all.exception[length] = '\0';
}

void keepException(Prepared& all) {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return;
  const std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, nullptr), &std::free);
  const char* const name = readable ? readable.get() : type->name();
  try {
    std::rethrow_exception(std::current_exception());
  } catch (const std::exception& exception) {
    copyText(all, name, exception.what());
  } catch (...) {
    copyText(all, name, nullptr);
  }
}

[[noreturn]] void handleTerminate() {
  static std::atomic_flag handled = ATOMIC_FLAG_INIT;
  Prepared& all = *prepared.load();
  if (!handled.test_and_set()) keepException(all);
  if (all.previousTerminate != nullptr) all.previousTerminate();
  std::abort();
}

/// Unless the signal is ignored or handled by somebody else.
void handleWhereDefault(int signal) {
  struct sigaction present {};
  if (::sigaction(signal, nullptr, &present) != 0) return;
  if ((present.sa_flags & SA_SIGINFO) != 0 || present.sa_handler != SIG_DFL) return;
  struct sigaction action {};
  action.sa_sigaction = handleFatalSignal;
  // A crash inside the handler comes back into it; what is no crash waits.
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  ::sigfillset(&action.sa_mask);
  for (const int fatal : fatalSignals) ::sigdelset(&action.sa_mask, fatal);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

bool installCrashHandler(const CrashHandlerSettings& settings) {
  if (isSanitized || prepared.load() != nullptr) return false;
  auto all = std::make_unique<Prepared>();
  if (!all->program.prepare(settings)) return false;
  all->rawReport.prepare(settings);
  // Never destroyed: a crash may come as late as the process's last moment.
  prepared = all.release();
  static const ThreadCrashStack& mainStack = *std::make_unique<ThreadCrashStack>().release();
  static_cast<void>(mainStack);
  prepared.load()->previousTerminate = std::set_terminate(handleTerminate);
  for (const int signal : fatalSignals) handleWhereDefault(signal);
  return true;
}

}  // namespace crash

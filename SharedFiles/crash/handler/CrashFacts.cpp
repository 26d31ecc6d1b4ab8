#include "SharedFiles/crash/handler/CrashFacts.h"

#include <algorithm>
#include <array>
#include <chrono>

#include <string.h>
#include <unistd.h>

namespace crash {
namespace {

void addMoment(SignalSafeText& text, std::time_t second, char between, const char* colon) {
  const std::chrono::sys_seconds moment{std::chrono::seconds(second)};
  const auto midnight = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss time(moment - midnight);
  const auto add = [&text](auto number, unsigned digits = 2) -> SignalSafeText& {
    return text.addNumber(static_cast<std::uint64_t>(number), 10, digits);
  };
  add(int{date.year()}, 4).add('-');
  add(unsigned{date.month()}).add('-');
  add(unsigned{date.day()}).add(between);
  add(time.hours().count()).add(colon);
  add(time.minutes().count()).add(colon);
  add(time.seconds().count());
}

struct Cause {
  int signal, code;
  const char* text;
};

constexpr std::array causes{
    Cause{SIGSEGV, SEGV_MAPERR, "nothing is mapped there"},
    Cause{SIGSEGV, SEGV_ACCERR, "not permitted there"},
    Cause{SIGBUS, BUS_ADRALN, "wrong alignment"},
    Cause{SIGBUS, BUS_ADRERR, "no such memory"},
    Cause{SIGFPE, FPE_INTDIV, "integer division by zero"},
    Cause{SIGFPE, FPE_INTOVF, "integer overflow"},
    Cause{SIGFPE, FPE_FLTDIV, "floating-point division by zero"},
    Cause{SIGILL, ILL_ILLOPC, "illegal instruction"},
    Cause{SIGILL, ILL_ILLOPN, "illegal operand"},
    Cause{SIGILL, ILL_PRVOPC, "privileged instruction"},
};

const char* causeOf(int signal, int code) {
  if (code == SI_USER || code == SI_TKILL || code == SI_QUEUE) return "sent by a process";
  for (const Cause& cause : causes) {
    if (cause.signal == signal && cause.code == code) return cause.text;
  }
  return nullptr;
}

/// Whether the signal tells of an address that was touched.
bool hasAddress(int signal, int code) {
  return code > 0 && code != SI_KERNEL &&
         (signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGTRAP);
}

}  // namespace

void addStamp(SignalSafeText& text, std::time_t second) {
  addMoment(text, second, '-', "");
}

void addDate(SignalSafeText& text, std::time_t second) {
  addMoment(text, second, ' ', ":");
  text.add(" UTC");
}

void addSignal(SignalSafeText& text, const siginfo_t& signal) {
  const int number = signal.si_signo, code = signal.si_code;
  const char* const name = ::sigabbrev_np(number);
  text.add(name != nullptr ? "SIG" : "signal").add(name).add(" (").addNumber(static_cast<std::uint64_t>(number));
  text.add("), code ").add(code < 0 ? "-" : "");
  text.addNumber(static_cast<std::uint64_t>(code < 0 ? -static_cast<std::int64_t>(code) : code));
  if (const char* const cause = causeOf(number, code)) text.add(", ").add(cause);
  if (hasAddress(number, code)) {
    text.add(", address ").addAddress(reinterpret_cast<std::uint64_t>(signal.si_addr));
  }
}

void addReportName(SignalSafeText& text, const char* application, std::time_t second, const char* host, int attempt) {
  text.add(application).add('_');
  addStamp(text, second);
  text.add('_').add(host);
  if (attempt > 1) text.add('_').addNumber(static_cast<std::uint64_t>(attempt), 10, 2);
  text.add(".crash");
}

std::string hostName() {
  constexpr std::size_t longest = 256;
  std::array<char, longest> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "localhost";
  std::string text = name.data();
  // A name that is not plain would make the report's name unreadable to those who look for it.
  std::replace_if(
      text.begin(), text.end(), [](char each) { return each <= ' ' || each == '/' || each == '\x7f'; }, '-');
  return text;
}

}  // namespace crash

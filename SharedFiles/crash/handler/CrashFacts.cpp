#include "SharedFiles/crash/handler/CrashFacts.h"

#include <algorithm>
#include <array>
#include <csignal>

#include <unistd.h>

namespace crash {
namespace {

struct Day {
  std::int64_t year;
  unsigned month, day;
};

/// The proleptic Gregorian date of a day counted from 1970-01-01, by counting in eras of 400 years that begin in March.
Day dayOf(std::int64_t days) {
  constexpr std::int64_t daysInEra = 146097;
  days += 719468;  // from 0000-03-01
  const std::int64_t era = (days >= 0 ? days : days - daysInEra + 1) / daysInEra;
  const std::int64_t inEra = days - era * daysInEra;
  const std::int64_t yearInEra = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
  const std::int64_t inYear = inEra - (365 * yearInEra + yearInEra / 4 - yearInEra / 100);
  const std::int64_t marchMonth = (5 * inYear + 2) / 153;
  const std::int64_t day = inYear - (153 * marchMonth + 2) / 5 + 1;
  const std::int64_t month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
  return {yearInEra + era * 400 + (month <= 2 ? 1 : 0), static_cast<unsigned>(month), static_cast<unsigned>(day)};
}

void addMoment(SignalSafeText& text, std::time_t second, char between, const char* colon) {
  constexpr std::time_t secondsOfDay = 86400;
  const std::int64_t days = (second - (second % secondsOfDay + secondsOfDay) % secondsOfDay) / secondsOfDay;
  const auto time = static_cast<std::uint64_t>(second - days * secondsOfDay);
  const Day day = dayOf(days);
  text.addNumber(static_cast<std::uint64_t>(day.year), 10, 4).add('-');
  text.addNumber(day.month, 10, 2).add('-').addNumber(day.day, 10, 2).add(between);
  text.addNumber(time / 3600, 10, 2).add(colon).addNumber(time / 60 % 60, 10, 2).add(colon);
  text.addNumber(time % 60, 10, 2);
}

struct Word {
  int signal, code;
  const char* name;
};

constexpr int anyCode = -1000;
constexpr std::array words{
    Word{SIGSEGV, anyCode, "SIGSEGV"},
    Word{SIGBUS, anyCode, "SIGBUS"},
    Word{SIGFPE, anyCode, "SIGFPE"},
    Word{SIGILL, anyCode, "SIGILL"},
    Word{SIGABRT, anyCode, "SIGABRT"},
    Word{SIGSYS, anyCode, "SIGSYS"},
    Word{SIGTRAP, anyCode, "SIGTRAP"},
    Word{SIGSEGV, SEGV_MAPERR, "nothing is mapped there"},
    Word{SIGSEGV, SEGV_ACCERR, "not permitted there"},
    Word{SIGBUS, BUS_ADRALN, "wrong alignment"},
    Word{SIGBUS, BUS_ADRERR, "no such memory"},
    Word{SIGFPE, FPE_INTDIV, "integer division by zero"},
    Word{SIGFPE, FPE_INTOVF, "integer overflow"},
    Word{SIGFPE, FPE_FLTDIV, "floating-point division by zero"},
    Word{SIGILL, ILL_ILLOPC, "illegal instruction"},
    Word{SIGILL, ILL_ILLOPN, "illegal operand"},
    Word{SIGILL, ILL_PRVOPC, "privileged instruction"},
};

const char* wordFor(int signal, int code) {
  for (const Word& word : words) {
    if (word.signal == signal && word.code == code) return word.name;
  }
  return nullptr;
}

}  // namespace

void addStamp(SignalSafeText& text, std::time_t second) {
  addMoment(text, second, '-', "");
}

void addDate(SignalSafeText& text, std::time_t second) {
  addMoment(text, second, ' ', ":");
  text.add(" UTC");
}

void addSignal(SignalSafeText& text, int signal, int code) {
  const char* const name = wordFor(signal, anyCode);
  text.add(name != nullptr ? name : "signal").add(" (").addNumber(static_cast<std::uint64_t>(signal)).add("), code ");
  if (code < 0) text.add('-');
  text.addNumber(static_cast<std::uint64_t>(code < 0 ? -static_cast<std::int64_t>(code) : code));
  const char* cause = wordFor(signal, code);
  if (code == SI_USER || code == SI_TKILL || code == SI_QUEUE) cause = "sent by a process";
  if (cause != nullptr) text.add(", ").add(cause);
}

bool hasAddress(int signal, int code) {
  return code > 0 && code != SI_KERNEL &&
         (signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE || signal == SIGILL || signal == SIGTRAP);
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

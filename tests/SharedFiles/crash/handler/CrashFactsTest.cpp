#include <bit>
#include <csignal>
#include <cstdint>

#include <gtest/gtest.h>

#include "SharedFiles/crash/handler/CrashFacts.h"

namespace {

using crash::SignalSafeText;

TEST(CrashFacts, WriteDatesInUtc) {
  struct Row {
    std::time_t second;
    const char *stamp, *date;
  };
  for (const Row& row : {Row{0, "1970-01-01-000000", "1970-01-01 00:00:00 UTC"},
                         Row{951782399, "2000-02-28-235959", "2000-02-28 23:59:59 UTC"},
                         Row{951782400, "2000-02-29-000000", "2000-02-29 00:00:00 UTC"},
                         Row{1795241520, "2026-11-21-061200", "2026-11-21 06:12:00 UTC"},
                         Row{4107542400, "2100-03-01-000000", "2100-03-01 00:00:00 UTC"},
                         Row{-1, "1969-12-31-235959", "1969-12-31 23:59:59 UTC"}}) {
    SignalSafeText stamp, date;
    crash::addStamp(stamp, row.second);
    crash::addDate(date, row.second);
    EXPECT_STREQ(stamp.text(), row.stamp);
    EXPECT_STREQ(date.text(), row.date);
  }
}

TEST(CrashFacts, AgreeWithTheSystemAboutEveryDayOfACentury) {
  constexpr std::time_t day = 86400;
  for (std::time_t second = 0; second < 36525 * day; second += day) {
    tm parts{};
    ASSERT_NE(gmtime_r(&second, &parts), nullptr);
    char expected[32];
    ASSERT_NE(std::strftime(expected, sizeof expected, "%Y-%m-%d-%H%M%S", &parts), 0U);
    SignalSafeText stamp;
    crash::addStamp(stamp, second);
    ASSERT_STREQ(stamp.text(), expected);
  }
}

TEST(CrashFacts, NameReportsSoThatLaterOnesSortLast) {
  std::string before;
  for (const auto& [second, attempt] : {std::pair{1795241520, 1}, std::pair{1795241520, 2}, std::pair{1795241520, 9},
                                        std::pair{1795241520, 10}, std::pair{1795241521, 1}}) {
    SignalSafeText name;
    crash::addReportName(name, "Lumacheck", second, "host", attempt);
    EXPECT_LT(before, name.text());
    before = name.text();
  }
  EXPECT_EQ(before, "Lumacheck_2026-11-21-061201_host.crash");
  SignalSafeText second;
  crash::addReportName(second, "Lumacheck", 0, "host", 2);
  EXPECT_STREQ(second.text(), "Lumacheck_1970-01-01-000000_host_02.crash");
}

TEST(CrashFacts, NameSignalsAndTheirCauses) {
  struct Row {
    int signal, code;
    const char* text;
  };
  for (const Row& row :
       {Row{SIGSEGV, SEGV_MAPERR, "SIGSEGV (11), code 1, nothing is mapped there, address 0xbeef"},
        Row{SIGABRT, SI_TKILL, "SIGABRT (6), code -6, sent by a process"},
        Row{SIGFPE, FPE_INTDIV, "SIGFPE (8), code 1, integer division by zero, address 0xbeef"},
        Row{SIGSEGV, SI_KERNEL, "SIGSEGV (11), code 128"},
        Row{SIGSEGV, SI_USER, "SIGSEGV (11), code 0, sent by a process"}, Row{SIGABRT, 1, "SIGABRT (6), code 1"},
        Row{SIGHUP, 99, "SIGHUP (1), code 99"}, Row{SIGRTMAX, 99, "signal (64), code 99"}}) {
    siginfo_t signal{};
    signal.si_signo = row.signal;
    signal.si_code = row.code;
    signal.si_addr = std::bit_cast<void*>(std::uintptr_t{0xbeef});
    SignalSafeText text;
    crash::addSignal(text, signal);
    EXPECT_STREQ(text.text(), row.text);
  }
}

TEST(SignalSafeText, CutsWhatDoesNotFit) {
  SignalSafeText text;
  for (int i = 0; i < 10000; ++i) text.add('x');
  EXPECT_EQ(text.size(), SignalSafeText::capacity);
  EXPECT_EQ(std::string(text.text()), std::string(SignalSafeText::capacity, 'x'));
  text.clear();
  text.addNumber(0).add(' ').addNumber(~0ULL).add(' ').addAddress(0xdeadbeef).add(' ').addNumber(7, 10, 3);
  EXPECT_STREQ(text.text(), "0 18446744073709551615 0xdeadbeef 007");
}

TEST(CrashFacts, KnowAHostName) {
  EXPECT_FALSE(crash::hostName().empty());
  EXPECT_EQ(crash::hostName().find('/'), std::string::npos);
}

}  // namespace

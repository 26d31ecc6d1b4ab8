#pragma once

#include <csignal>
#include <ctime>
#include <string>

#include "SharedFiles/crash/handler/SignalSafeText.h"

namespace crash {

/// The second of a crash as its report tells it, in UTC: reports must sort by time in a night when clocks are put back.
/// addStamp writes 2026-11-21-061200, addDate 2026-11-21 06:12:00 UTC. Safe in signal handlers.
void addStamp(SignalSafeText& text, std::time_t second);
void addDate(SignalSafeText& text, std::time_t second);

/// SIGSEGV and the like, what the signal's code says of its cause, and the address that was touched, if it was one.
/// Safe in signal handlers.
void addSignal(SignalSafeText& text, const siginfo_t& signal);

/// How often a report's name is tried: crashes within one second get a number, from the second one on.
constexpr int nameAttempts = 99;

/// APPLICATION_STAMP_HOST.crash, then APPLICATION_STAMP_HOST_02.crash and on: names sort by time. Safe in signal
/// handlers.
void addReportName(SignalSafeText& text, const char* application, std::time_t second, const char* host, int attempt);

/// The host's name as part of a file name. Not for signal handlers.
std::string hostName();

}  // namespace crash

#pragma once

#include <ctime>
#include <string>

#include "SharedFiles/crash/handler/CrashHandler.h"
#include "SharedFiles/crash/handler/CrashRequest.h"
#include "SharedFiles/crash/handler/SignalSafeText.h"

namespace crash {

/// The report that a signal handler writes itself: the crashed thread's frames as addresses in modules, and what is
/// mapped. Allocates nothing and takes no lock. One object for a process.
class RawReport {
 public:
  /// Must be called before: loads what the unwinder needs.
  void prepare(const CrashHandlerSettings& settings);

  // What follows is for signal handlers.

  /// Makes the file, and writes what happened and the frames. Safe but for backtrace(), which comes last.
  void begin(const CrashRequest& request);
  /// Writes what is mapped; also when the first part ended in a crash.
  void finish();

 private:
  int makeFile(std::time_t second);
  void writeHead(const CrashRequest& request);
  void writeFrame(int number, std::uint64_t address);
  void writeMappings();
  void flush();
  void write(const char* bytes, std::size_t size) const;

  CrashHandlerSettings settings_;
  std::string host_, program_;
  SignalSafeText text_;
  int file_ = -1;
};

}  // namespace crash

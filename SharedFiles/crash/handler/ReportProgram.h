#pragma once

#include "SharedFiles/crash/handler/CrashHandler.h"
#include "SharedFiles/crash/handler/CrashRequest.h"

namespace crash {

/// The program that writes a crash report, as a signal handler starts it: everything it needs is prepared beforehand,
/// and it is started without fork, whose handlers could wait for a lock. One object for a process.
class ReportProgram {
 public:
  /// Makes the pipe that the request goes through. False when there is none.
  bool prepare(const CrashHandlerSettings& settings);

  // What follows is safe in signal handlers.

  /// Starts the program, lets it trace this process and gives it the request; false when it could not be started.
  bool start(const CrashRequest& request);
  /// Waits until the program ends, at most until `deadline` of the monotonic clock in milliseconds, and then kills it.
  /// True when it wrote the report. May be called again after it was left in the middle.
  bool wait(std::int64_t deadline) const;

  /// Gives its descriptors back, to whoever has no other left.
  void release();

  static std::int64_t milliseconds();  ///< of the monotonic clock

 private:
  static int run(void* self);

  CrashHandlerSettings settings_;
  char* arguments_[5] = {};
  char* environment_[2] = {};
  char* stackTop_ = nullptr;
  int reading_ = -1, writing_ = -1;
  pid_t process_ = 0;
};

}  // namespace crash

#pragma once

#include <cstddef>

namespace crash {

/// A stack for the calling thread's signal handlers while this lives, so that even the overflow of its own stack gives
/// a crash report. A thread that has one already keeps it. Under AddressSanitizer and ThreadSanitizer this does
/// nothing. Destroyed on the same thread.
class ThreadCrashStack {
 public:
  ThreadCrashStack();
  ~ThreadCrashStack();
  ThreadCrashStack(const ThreadCrashStack&) = delete;
  ThreadCrashStack& operator=(const ThreadCrashStack&) = delete;

 private:
  static constexpr std::size_t size = 131072;
  static constexpr std::size_t guard = 16384;

  void* memory_ = nullptr;
};

}  // namespace crash

#pragma once

#include <vector>

#include <sys/types.h>

namespace crash {

/// The threads of another process, stopped while this lives. One thread of it goes on: the one that crashed, which
/// waits in its handler and must be able to give up waiting. Used on one thread.
class StoppedThreads {
 public:
  StoppedThreads(pid_t process, pid_t crashed);
  ~StoppedThreads();  ///< lets them go on
  StoppedThreads(const StoppedThreads&) = delete;
  StoppedThreads& operator=(const StoppedThreads&) = delete;

  /// Without the crashed one; in the order of their numbers. One that does not stop within two seconds, or may not be
  /// traced, is left out.
  const std::vector<pid_t>& all() const { return stopped_; }

 private:
  std::vector<pid_t> seized_, stopped_;
};

}  // namespace crash

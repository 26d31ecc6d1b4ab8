#pragma once

#include <array>

#include <signal.h>

namespace cli {

/// An interrupt ends the process at once with status 130; a reader that goes away shows as a failed write.
void installSignalHandling();

/// While one lives, what users and systems end processes with (SIGINT, SIGTERM, SIGHUP; one that is ignored stays
/// ignored) is only noted, on whatever thread it arrives: for work that has something to clean up. One at a time.
class NotedInterrupts {
 public:
  NotedInterrupts();
  ~NotedInterrupts();  ///< the signals do again what they did
  NotedInterrupts(const NotedInterrupts&) = delete;
  NotedInterrupts& operator=(const NotedInterrupts&) = delete;

  /// Which signal came first since the last one began; 0 for none.
  static int signal();

 private:
  std::array<struct sigaction, 3> before_{};
};

}  // namespace cli

#pragma once

#include <string_view>

namespace cli {

/// Makes descriptors 0, 1 and 2 taken, so that no file opened later becomes stdin, stdout or stderr. One that was
/// closed refuses reads and writes, as it would have.
void keepStandardDescriptorsTaken();

/// An interrupt ends the process at once with status 130; a reader that goes away shows as a failed write.
void installSignalHandling();

/// While one lives, an interrupt is only noted: for work that has something to clean up. One at a time.
class NotedInterrupts {
 public:
  NotedInterrupts();
  ~NotedInterrupts();  ///< an interrupt ends the process again
  NotedInterrupts(const NotedInterrupts&) = delete;
  NotedInterrupts& operator=(const NotedInterrupts&) = delete;

  static bool any();  ///< since the last one began
};

/// Writes all of it; false with errno set when that fails.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace cli

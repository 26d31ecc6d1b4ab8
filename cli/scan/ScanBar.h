#pragma once

#include <chrono>
#include <string>

#include "scan/Scan.h"

namespace cli {

/// How far a scan is, on a line of a terminal that is written over again and again.
class ScanBar {
 public:
  /// Writes to stderr, where that is a terminal.
  ScanBar();
  ~ScanBar();  ///< takes the line away
  ScanBar(const ScanBar&) = delete;
  ScanBar& operator=(const ScanBar&) = delete;

  /// At most a few times a second.
  void show(const scan::ScanProgress& progress);

 private:
  using Clock = std::chrono::steady_clock;
  bool isTerminal_ = false, isShown_ = false;
  Clock::time_point begin_, shown_;
};

/// The line: a bar, the share, the speed as a multiple of real time, the time left, what was found so far. `seconds`:
/// since the scan began.
std::string barLine(const scan::ScanProgress& progress, double seconds);

}  // namespace cli

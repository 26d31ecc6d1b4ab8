#pragma once

#include <string>
#include <vector>

#include "SharedFiles/crash/handler/CrashRequest.h"
#include "SharedFiles/crash/report/ProcessImage.h"

namespace crash {

struct ThreadReport {
  pid_t thread = 0;
  std::string name;
  std::vector<StackFrame> frames;
};

/// Everything that a report tells.
struct CrashReport {
  std::string application, version, path, system, host;
  CrashRequest request;
  std::vector<ThreadReport> threads;  ///< the crashed one first
  std::vector<LoadedModule> modules;
};

constexpr std::size_t mostFrames = 256;  ///< of a thread; an endless recursion has more

/// Looks into the crashed process: stops its other threads, and lets them go on before it returns. Without threads when
/// it may not.
CrashReport examine(const CrashRequest& request, std::string application, std::string version);

/// UTF-8, lines as they stand in a report.
std::string textOf(const CrashReport& report);

/// Writes a report of its own name into the folder, which is made when it is missing: whole or not at all, readable for
/// its owner only.
bool writeReport(const std::string& folder, const CrashReport& report);

}  // namespace crash

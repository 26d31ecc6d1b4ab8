#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "SharedFiles/privileged/PinnedFolder.h"

namespace privileged {

/// A path for a tool, below a folder that this process holds open.
struct ToolPath {
  const sys::Descriptor& folder;
  std::string name;
};

/// Runs a tool with its options on such paths and waits for it. It gets the standard streams (nothing to read), those
/// folders and no other descriptor, the default signal handling and an environment of its own. Its status, 128 and the
/// signal that ended it, or ExitStatus::systemError.
int runTool(const std::vector<std::string>& program, std::initializer_list<ToolPath> paths);

}  // namespace privileged

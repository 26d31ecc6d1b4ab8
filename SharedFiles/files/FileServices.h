#pragma once

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/tasks/PlatformTools.h"

class PrivilegedFileOperations;

/// What the file manager asks of its surroundings.
struct FileServices {
  const PathPlatform& paths = PathPlatform::standard();
  const PlatformTools& tools = PlatformTools::standard();
  PrivilegedFileOperations* privileges = nullptr;  ///< null: QVAuthorization::sharedController()
};

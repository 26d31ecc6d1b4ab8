#pragma once

#include <string>

#include "movie/atoms/MovieError.h"

namespace movie {

/// The address of `entry` in the module of that file name. Modules lie in ../lib/lumacheck from the executable's
/// folder, or in the folder that LUMACHECK_MODULES names. A module stays loaded for good. Thread-safe as long as nobody
/// changes the environment. Error: the module is not there, cannot be loaded, or has no such entry.
Result<void*> moduleEntry(const std::string& moduleName, const char* entry);

}  // namespace movie

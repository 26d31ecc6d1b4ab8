#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "SharedFiles/foundation/BundleInfo.h"

namespace privileged {

/// What may be neither removed, nor moved, nor replaced.
struct ProtectedPlaces {
  std::function<bool(const std::string& path)> isProtected;  ///< by an absolute path of UTF-8, as it is written
  std::vector<std::string> folders;                          ///< and by what they are, whatever path leads there
};

/// This system's: the system directories of QVLocalPaths as each of these users knows them, and the roots of the file
/// hierarchy. Of an environment only this process's own is known: without one, the default places below their home
/// folders count. `application` is the bundle whose prefix holds the machine-wide places.
ProtectedPlaces systemPlaces(const std::vector<uid_t>& users, const BundleInfo& application);

}  // namespace privileged

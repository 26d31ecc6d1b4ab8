#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace privileged {

/// What may be neither removed, nor moved, nor replaced.
struct ProtectedPlaces {
  std::function<bool(const std::string& path)> isProtected;  ///< by an absolute path of UTF-8, as it is written
  std::vector<std::string> folders;                          ///< and by what they are, whatever path leads there
};

/// This system's: the system directories of QVLocalPaths as each of these users knows them, and the roots of the file
/// hierarchy. The users' own environment is not known here: the default places below their home folders count.
ProtectedPlaces systemPlaces(const std::vector<uid_t>& users);

}  // namespace privileged

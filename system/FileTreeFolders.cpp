#include <cerrno>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "system/FileTree.h"

namespace sys {

namespace {

/// The path and what is before each of its slashes, shortest first.
std::vector<std::string> wayTo(const std::string& path) {
  std::vector<std::string> way;
  for (auto slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    way.push_back(path.substr(0, slash));
  }
  way.push_back(path);
  return way;
}

}  // namespace

bool standsAt(const std::string& path) {
  struct stat status = {};
  return ::lstat(path.c_str(), &status) == 0;
}

bool isFolderAt(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<void> createFolders(const std::string& path) {
  std::vector<std::string> made;
  for (const std::string& folder : wayTo(path)) {
    if (::mkdir(folder.c_str(), 0777) == 0) {
      made.push_back(folder);
      continue;
    }
    const int number = errno;
    if (isFolderAt(folder)) continue;
    for (auto undone = made.crbegin(); undone != made.crend(); ++undone) ::rmdir(undone->c_str());
    return failure(number, Step::Create, folder);
  }
  return {};
}

}  // namespace sys

#include "system/FileTree.h"

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/FileTreeCopy.h"
#include "system/FileTreeRemoval.h"

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

/// Waits until the names in a folder are on the disk. One that may not be opened is left to the system as a whole.
int syncFolder(int folder) {
  const Descriptor opened(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.isOpen()) return ::fsync(opened.get()) == 0 ? 0 : errno;
  ::sync();
  return 0;
}

Result<void> moveByCopy(const FilePlace& from, const FilePlace& to) {
  TRY(checkRemovalFromFolder(from));
  PendingCopy copy(to, TreeCopy::Durability::synced);
  TRY(copy.make(from));
  TRY(checkRemoval(from, copy.record()));
  TRY(copy.reveal());
  if (const int number = syncFolder(to.folder)) return to.failed(number, Step::RemoveOriginal);
  return TreeRemoval(copy.record()).remove(from).map_error([](Error error) {
    error.what = Step::RemoveOriginal;
    return error;
  });
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

Result<void> copyTree(const std::string& source, const std::string& destination, const std::stop_token& stop) {
  TRY(const auto from, OpenedPlace::open(source));
  TRY(const auto to, OpenedPlace::open(destination));
  TRY(PendingCopy::allowed(from.place, to.place));
  PendingCopy copy(to.place, TreeCopy::Durability::later, stop);
  TRY(copy.make(from.place));
  return copy.reveal();
}

Result<void> moveTree(const std::string& source, const std::string& destination) {
  TRY(const auto from, OpenedPlace::open(source));
  TRY(const auto to, OpenedPlace::open(destination));
  TRY(PendingCopy::allowed(from.place, to.place));
  const int number = renameWithoutReplacing(from.place, to.place);
  if (number == EXDEV) return moveByCopy(from.place, to.place);
  if (number != 0) return from.place.failed(number, Step::Create);
  return {};
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

Result<void> removeTree(const std::string& path) {
  TRY(const auto opened, OpenedPlace::open(path));
  return TreeRemoval(TreeRemoval::Permissions::kept).remove(opened.place);
}

}  // namespace sys

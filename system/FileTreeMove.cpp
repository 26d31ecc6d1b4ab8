#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "system/FileTree.h"
#include "system/FileTreeCopy.h"
#include "system/FileTreeRemoval.h"

namespace sys {

namespace {

/// Waits until the names in a folder are on the disk. One that may not be opened is left to the system as a whole.
int syncFolder(int folder) {
  const Descriptor opened(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.isOpen()) return ::fsync(opened.get()) == 0 ? 0 : errno;
  ::sync();
  return 0;
}

Result<void> removeCopied(const FilePlace& from, const TreeRecord& record) {
  TreeRemoval removal(record);
  auto result = removal.remove(from);
  if (!result) result.error().what = Step::RemoveOriginal;
  return result;
}

Result<void> moveByCopy(const FilePlace& from, const FilePlace& to) {
  auto result = checkRemovalFromFolder(from);
  if (!result) return result;
  PendingCopy copy(to, TreeCopy::Durability::synced);
  result = copy.make(from);
  if (result) result = checkRemoval(from, copy.record());
  if (result) result = copy.reveal();
  if (!result) return result;
  if (const int number = syncFolder(to.folder)) {
    return failure(number, Step::RemoveOriginal, to.path);
  }
  return removeCopied(from, copy.record());
}

}  // namespace

Result<void> moveTree(const std::string& source, const std::string& destination) {
  const auto from = OpenedPlace::open(source), to = OpenedPlace::open(destination);
  if (!from) return tl::unexpected(from.error());
  if (!to) return tl::unexpected(to.error());
  auto result = PendingCopy::allowed(from->place, to->place);
  if (!result) return result;
  const int number = renameWithoutReplacing(from->place, to->place);
  if (number == EXDEV) return moveByCopy(from->place, to->place);
  if (number != 0) return from->place.failed(number, Step::Create);
  return {};
}

}  // namespace sys

#pragma once

#include "system/FilePlace.h"
#include "system/FileTree.h"

namespace sys {

class TreeRecord;

/// Removes trees.
class TreeRemoval {
 public:
  /// `forced`: a folder of one's own that forbids it is made writable.
  enum class Permissions { kept, forced };

  explicit TreeRemoval(Permissions permissions) : permissions_(permissions) {}
  /// Removes only what is recorded, and stops at anything else.
  explicit TreeRemoval(const TreeRecord& record) : record_(&record) {}

  Result<void> remove(const FilePlace& place);

 private:
  Result<void> removeEntries(const FilePlace& place);

  Permissions permissions_ = Permissions::kept;
  const TreeRecord* record_ = nullptr;
};

/// What would stop the removal of a tree: something that is not as recorded, or a folder from which this process may
/// remove nothing. Removes nothing.
Result<void> checkRemoval(const FilePlace& place, const TreeRecord& record);
/// The same for the folder that the place is in.
Result<void> checkRemovalFromFolder(const FilePlace& place);

}  // namespace sys

#pragma once

#include <sys/stat.h>

#include "system/FileBytes.h"

namespace sys {

/// Why a file gets the attributes of another one.
enum class Heir {
  /// It is a copy: set-id bits where they still mean the same user and group; the times too; of owner, group, extended
  /// attributes and access lists what the process and the file system allow.
  Copy,
  /// It takes the other's place with a content of its own: no set-id and sticky bits, and its own times. Where it
  /// cannot have the group, the group that it has may do what all others may. The access list and the user's extended
  /// attributes must be had.
  Replacement,
};

/// Gives an open file or folder the owner and group, extended attributes and access list, permissions and times of
/// another, in this order, whose status is `status`; an access list that only the heir has goes.
Result<void> inheritAttributes(FileRef from, FileRef to, const struct stat& status, Heir heir,
                               FileCalls& calls = systemCalls());

/// The permission bits for a copy that belongs to `owner` and `group`: those of the original, its set-id bits only
/// where they still mean the same user and group.
mode_t permissionsOfCopy(const struct stat& original, uid_t owner, gid_t group);

}  // namespace sys

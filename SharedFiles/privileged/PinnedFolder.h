#pragma once

#include <string>

#include <sys/stat.h>
#include <tl/expected.hpp>

#include "SharedFiles/privileged/ExitStatus.h"
#include "system/Descriptor.h"

namespace privileged {

/// A folder held by a descriptor, so that whatever happens to the path that led there, it stays the one that was
/// checked.
struct PinnedFolder {
  sys::Descriptor descriptor;  ///< opened with O_PATH
  std::string path;            ///< where it lies, without a link in it; "/" or without a slash at the end

  std::string pathOf(const std::string& name) const { return (path == "/" ? "" : path) + "/" + name; }
};

/// Opens the folder at a plain path and follows no link on the way: whoever asks has resolved the path before, and what
/// became a link since leads elsewhere. Fails with `notThere` when there is no such folder, with `changed` when a link
/// stands on the way or at its end.
tl::expected<PinnedFolder, ExitStatus> pinFolder(const std::string& plainPath);

/// The folder of that name in another one. Fails as pinFolder.
tl::expected<PinnedFolder, ExitStatus> pinFolderIn(const PinnedFolder& parent, const std::string& name);

/// A name in a pinned folder. What the name stands for may change under it; a link that it stands for is meant itself.
struct PinnedEntry {
  PinnedFolder folder;
  std::string name;

  std::string path() const { return folder.pathOf(name); }
  /// What the name stands for, links not followed; fails with `notThere` when it stands for nothing.
  tl::expected<struct stat, ExitStatus> status() const;
};

/// The entry at a plain path other than "/".
tl::expected<PinnedEntry, ExitStatus> pinEntry(const std::string& plainPath);

std::string parentOf(const std::string& plainPath);
std::string nameOf(const std::string& plainPath);

}  // namespace privileged

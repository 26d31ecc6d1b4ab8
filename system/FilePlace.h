#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <tl/expected.hpp>

#include "system/FileDescriptor.h"
#include "system/FileTree.h"

/// A name in an open folder: what stands there is reached without looking at the rest of the path again. Nothing here
/// follows a link that stands at the name.
struct FilePlace {
  int folder;
  std::string name;
  std::string path;  ///< for what is told of errors

  FilePlace inside(int ownFolder, const std::string& entry) const { return {ownFolder, entry, path + '/' + entry}; }
  FilePlace beside(const std::string& other) const { return {folder, other, path}; }

  tl::unexpected<FileTreeError> failed(int number) const { return tl::unexpected(FileTreeError{number, path}); }
  /// What stands there; errno when nothing does.
  tl::expected<struct stat, int> status() const;
  /// The folder that stands there.
  FileDescriptor openFolder() const;
};

/// The folder of a path's last name, open, and the place in it.
struct OpenedPlace {
  FileDescriptor folder;
  FilePlace place;

  static tl::expected<OpenedPlace, FileTreeError> open(const std::string& path);
};

/// The names in an open folder, "." and ".." left out, in the order of their bytes. Or an errno.
tl::expected<std::vector<std::string>, int> namesInFolder(int folder);

/// Renames unless something stands at the new place. 0 or an errno.
int renameWithoutReplacing(const FilePlace& from, const FilePlace& to);

/// Whether the open folder is that folder or lies in it.
bool isInside(int folder, const struct stat& other);

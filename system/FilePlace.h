#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace sys {

/// A name in an open folder: what stands there is reached without looking at the rest of the path again. Nothing here
/// follows a link that stands at the name.
struct FilePlace {
  int folder;
  std::string name;
  std::string path;  ///< for what is told of errors

  FilePlace inside(int ownFolder, const std::string& entry) const { return {ownFolder, entry, path + '/' + entry}; }
  FilePlace beside(const std::string& other) const { return {folder, other, path}; }

  tl::unexpected<Error> failed(int code, Step what) const { return failure(code, what, path); }
  /// What stands there; ENOENT when nothing does.
  Result<struct stat> status() const;
  /// The folder that stands there; none and errno when it cannot be opened.
  Descriptor openFolder() const;
};

/// The folder of a path's last name, open, and the place in it.
struct OpenedPlace {
  Descriptor folder;
  FilePlace place;

  static Result<OpenedPlace> open(const std::string& path);
};

/// The names in an open folder, "." and ".." left out, in the order of their bytes.
Result<std::vector<std::string>> namesInFolder(FileRef folder);
/// The same for the folder that a path leads to.
Result<std::vector<std::string>> namesInFolderAt(const std::string& path);

/// ".lumacheck-", 16 digits and this end: a name that nobody else chooses.
std::string ownName(std::string_view end = {});

/// Renames unless something stands at the new place. 0 or an errno.
int renameWithoutReplacing(const FilePlace& from, const FilePlace& to);

/// Whether the open folder is that folder or lies in it.
bool isInside(int folder, const struct stat& other);

}  // namespace sys

#pragma once

#include <stop_token>
#include <string>

#include "system/Error.h"

namespace sys {

// Paths are bytes, relative to the working folder when they do not begin with a slash. A path that ends in "." or ".."
// is refused, and so is "/". Links are worked on themselves and never followed, except on the way to the last name of a
// path. Callable from any thread. Logs nothing.

/// Whether something stands there: a link, too, that leads nowhere.
bool standsAt(const std::string& path);

/// Whether a folder stands there or where the link leads.
bool isFolderAt(const std::string& path);

/// Copies a file, a folder with all that is in it, a link (as a link), a pipe, socket or device (as another one): bytes
/// and holes, permissions, times, extended attributes and access lists; owner and group as far as this process may give
/// them away. What cannot be given away is the process's own, without the set-id bits.
///
/// The destination must not exist, its folder must. It appears whole, by a rename, or not at all: until then the copy
/// has a name that begins with ".lumacheck-" beside it. A folder is not copied into itself. Names in folders may
/// be any bytes.
///
/// A copy that is asked to stop, from any thread, ends soon with ECANCELED as its error.
Result<void> copyTree(const std::string& source, const std::string& destination, const std::stop_token& stop = {});

/// Moves by a rename. To another file system: copies as copyTree(), waits until the copy is on the disk, makes sure
/// that the source is still what was copied and may be removed, lets the copy appear and removes what was copied. A
/// failure leaves the source untouched and no destination, but for one of Step::RemoveOriginal: the copy is complete
/// then.
Result<void> moveTree(const std::string& source, const std::string& destination);

/// Makes a folder and those that are missing on the way to it, with permissions as the process's mask has them. One
/// that exists is fine, also behind a link. A failure leaves none of them.
Result<void> createFolders(const std::string& path);

/// Removes a file, a link, or a folder with all that is in it.
Result<void> removeTree(const std::string& path);

}  // namespace sys

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "SharedFiles/privileged/ExitStatus.h"
#include "SharedFiles/privileged/ProtectedPlaces.h"

namespace privileged {

struct PrivilegedRun {
  ProtectedPlaces places;
  std::function<void()> started;  ///< called once, when every check is through and the tool is about to run
};

/// Why a command line is not let through.
struct Refusal {
  ExitStatus status;
  std::string path;  ///< the one that is refused; empty where the status is `usage`
};

/// What forbids a command line whoever runs it: it is none that is let through (`usage`), or one of its paths is not
/// plain (`badPath`) or a protected place. A process without administrator rights can ask, too, before it obtains them;
/// a place that it may not look into counts as unprotected then.
std::optional<Refusal> refusalOf(const std::vector<std::string>& commandLine, const ProtectedPlaces& places);

/// Checks a command line and runs it: the path of a tool and its arguments, as parseToolCommand() lets them through.
/// The tool's own status, or an ExitStatus when none ran or when its outcome could not be put in place.
///
/// What is checked is what is acted on, however folders and links are swapped meanwhile: the folders above every path
/// are held by descriptor from before the checks on, and the tool gets paths that start at them. A link is removed or
/// moved itself. A destination that is a folder, or a link to one, takes the file in under its own name.
///
/// A move and a copy arrive under a name of this program's own, in a folder that nobody else may enter, and take their
/// place by one renaming. So no link is written through that stands, or is put, where the file is to go; a file that is
/// replaced is replaced whole; and a folder that is not empty is not replaced, nor merged with another.
int runPrivileged(const std::vector<std::string>& commandLine, const PrivilegedRun& run);

}  // namespace privileged

#pragma once

#include <optional>
#include <string>

#include "cli/CheckCommand.h"
#include "cli/CommandResult.h"

namespace cli {

enum class SyncMode { Save, DryRun };

struct SyncOptions {
  std::string source, dest;           ///< paths, raw bytes
  std::optional<std::string> saveAs;  ///< a flattened copy there instead of the destination itself
  SyncMode mode = SyncMode::Save;
  OutputForm form = OutputForm::Text;
};

/// `lumacheck sync`: copies the source's colour metadata onto the destination and saves it. Examines every result: what
/// is refused, failed or incomplete is said on stderr, with status 2.
CommandResult runSyncCommand(const SyncOptions& options);

}  // namespace cli

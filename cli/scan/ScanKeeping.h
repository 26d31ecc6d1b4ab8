#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <tl/expected.hpp>

#include "cli/scan/ScanProblem.h"
#include "scan/Scan.h"
#include "scan/resume/ResumeFile.h"

namespace cli {

/// What of a file tells whether it is still the same. Zeros where that cannot be told.
struct FileState {
  std::uint64_t bytes = 0;
  std::int64_t modified = 0;  ///< in nanoseconds since 1970
};
FileState stateOf(const std::string& path);

/// What a scan is of.
struct KeptScan {
  const scan::MoviePair& rows;
  const scan::ScanOptions& asked;
  FileState source, dest;
};

/// The file that a scan is kept in while it goes on, where that was asked for.
class ScanKeeping {
 public:
  /// Without a path, or with a movie that has no frames, nothing is kept. Error: the file cannot be used.
  static tl::expected<ScanKeeping, ScanProblem> of(const std::optional<std::string>& path, const KeptScan& scan);

  /// Null where nothing is kept.
  scan::ScanKeeper* keeper() { return file_ ? &*file_ : nullptr; }
  /// Writes the rest. What could not be kept, if anything could not.
  std::optional<ScanProblem> finish();

 private:
  std::string path_;
  std::optional<scan::ResumeFile> file_;
};

}  // namespace cli

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "cli/Commands.h"
#include "cli/ScanJson.h"
#include "cli/scan/ScanProblem.h"

namespace cli {

/// The files that a scan writes beside its text. Their places are found before anybody waits for what goes into them;
/// they take their names when all of it is there.
class ScanFiles {
 public:
  /// Error: one has no place, or cannot be made.
  static tl::expected<ScanFiles, ScanProblem> of(const ScanOptions& options);
  ScanFiles(ScanFiles&&) noexcept;
  ~ScanFiles();

  /// What could not be written, each with a sentence; the others are. Of a table that is none nothing is.
  std::vector<ScanProblem> write(const ScanDocument& document);

  /// The proof, where one was asked for; see ProofFile::made().
  std::optional<ScanProof> makeProof(const ScanDocument& document, const scan::OnProgress& onProgress);

 private:
  struct File;
  ScanFiles();
  std::vector<File> files_;
  std::optional<ProofFile> proof_;
};

}  // namespace cli

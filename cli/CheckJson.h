#pragma once

#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "check/GammaCheck.h"
#include "check/Report.h"
#include "cli/MovieJson.h"
#include "diagnosis/Finding.h"
#include "scan/align/Counterpart.h"

namespace cli {

/// What became of looking for the destination's picture.
struct CheckAlignment {
  scan::Counterpart::Result result = scan::Counterpart::Result::NotFound;
  double offset = 0;  ///< by so many seconds it comes later in the source; only where it was found
};

/// What there is to tell of a finished check. Without an alignment nothing was looked for.
struct CheckDocument {
  JsonValue source, dest;
  const check::CheckOutcome& outcome;
  const diagnosis::Finding& finding;
  const std::vector<check::ReportParagraph>& report;
  int exitStatus = 0;
  std::optional<CheckAlignment> alignment = std::nullopt;
};

/// Its document. "metadata" with "compared" false has null matches and no mismatch; "pixels" is null when there was no
/// verdict on them: a frame is missing, or the source frame is too dark.
JsonValue checkJson(CheckDocument document);

/// The document of a check that could not be made.
JsonValue checkErrorJson(const std::string& message, const std::string& path, int exitStatus);

}  // namespace cli

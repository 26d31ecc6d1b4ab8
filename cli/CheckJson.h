#pragma once

#include <vector>

#include "check/GammaCheck.h"
#include "check/Report.h"
#include "cli/MovieJson.h"
#include "diagnosis/Finding.h"

namespace cli {

/// What there is to tell of a finished check.
struct CheckDocument {
  JsonValue source, dest;
  const check::CheckOutcome& outcome;
  const diagnosis::Finding& finding;
  const std::vector<check::ReportParagraph>& report;
  int exitStatus = 0;
};

/// Its document. "metadata" with "compared" false has null matches and no mismatch; "pixels" is null when there was no
/// verdict on them: a frame is missing, or the source frame is too dark.
JsonValue checkJson(CheckDocument document);

/// The document of a check that could not be made.
JsonValue checkErrorJson(const std::string& message, const std::string& path, int exitStatus);

}  // namespace cli

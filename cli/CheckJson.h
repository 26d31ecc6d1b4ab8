#pragma once

#include <vector>

#include "check/GammaCheck.h"
#include "check/Report.h"
#include "cli/MovieJson.h"

namespace cli {

/// The document of a finished check. "metadata" with "compared" false has null matches and no mismatch; "pixels" is
/// null when there was no verdict on them: a frame is missing, or the source frame is too dark.
JsonValue checkJson(JsonValue source, JsonValue dest, const check::CheckOutcome& outcome,
                    const std::vector<check::ReportParagraph>& report, int exitStatus);

/// The document of a check that could not be made.
JsonValue checkErrorJson(const std::string& message, const std::string& path, int exitStatus);

}  // namespace cli

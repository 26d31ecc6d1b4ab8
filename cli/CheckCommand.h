#pragma once

#include <optional>
#include <string>

#include "cli/CommandResult.h"
#include "cli/ReportText.h"
#include "cli/TimeArgument.h"

namespace check {
struct CheckOutcome;
}

namespace cli {

enum class OutputForm { Text, Json };
enum class ExitPolicy { ByVerdict, ZeroUnlessFailed };

struct CheckOptions {
  std::string source, dest;                          ///< paths, raw bytes
  std::optional<TimeArgument> sourceTime, destTime;  ///< none: the beginning
  OutputForm form = OutputForm::Text;
  ExitPolicy exitPolicy = ExitPolicy::ByVerdict;
};

/// `lumacheck check`: opens both movies and runs the check on them.
CommandResult runCheckCommand(const CheckOptions& options, TextStyling styling);

/// The exit status that an outcome stands for: a frame that could not be had and frames that do not match come before a
/// shift in the metadata.
int exitStatusOf(const check::CheckOutcome& outcome, ExitPolicy policy);

}  // namespace cli

#pragma once

#include <string>
#include <vector>

#include "check/Report.h"

namespace cli {

enum class TextStyling { Plain, Terminal };

/// Styled when stdout is a terminal that can show it and NO_COLOR is not set.
TextStyling stylingOfStandardOutput();

/// The paragraphs with one blank line between them, and a line break after the last. UTF-8; styles as ANSI sequences.
std::string reportText(const std::vector<check::ReportParagraph>& paragraphs, TextStyling styling);

}  // namespace cli

#pragma once

#include <string>

#include "cli/ReportText.h"
#include "diagnosis/Finding.h"
#include "movie/Movie.h"

namespace cli {

/// A side as a person knows it: its file, and the timecode where there is one, else seconds.
std::string namedSide(const movie::Movie& movie, const movie::MovieTime& time);

struct NamedSides {
  std::string source, dest;
};

/// The finding for a terminal: a line each for the verdict, what speaks for it, what to do, and both files; an empty
/// line after the last. UTF-8.
std::string findingBlock(const diagnosis::Finding& finding, const NamedSides& sides, TextStyling styling);

}  // namespace cli

#pragma once

#include <string>

#include "diagnosis/Finding.h"

namespace cli {

/// Where a picture is looked at.
enum class PlotGround {
  Page,    ///< dark letters on white
  Screen,  ///< the same, or light ones on black where the reader's screen is dark
};

/// The style sheet and the patterns: what stands at the head of the drawing.
std::string plotStyle(PlotGround ground);

/// The class by which a stretch is filled: a colour, and a pattern that is told from the others without it.
const char* fillOf(diagnosis::CauseKind kind);
constexpr const char* unmatchedFill = "unmatched";
constexpr const char* unmeasuredFill = "unmeasured";

}  // namespace cli

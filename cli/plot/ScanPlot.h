#pragma once

#include <string>

#include "cli/plot/PlotStyle.h"
#include "cli/plot/ScanWords.h"
#include "scan/Scan.h"

namespace cli {

/// What a scan was of.
struct ScanSubject {
  std::string source, dest;  ///< what the movies are called: raw bytes
  const scan::FrameRow& destRow;
  ScanClocks clocks;
};

/// A finished scan as an SVG document: the exponent over the destination's time, logarithmic, with where it spreads;
/// what was found in each stretch; where the time map has cuts; what has no counterpart, and what was not measured; the
/// frame that differs most. Width 1200, as high as it needs to be. UTF-8, whatever the movies are called.
std::string scanPlot(const scan::ScanResult& result, const ScanSubject& subject, PlotGround ground);

}  // namespace cli

#pragma once

#include <functional>
#include <optional>

#include "check/FrameAnalysis.h"
#include "check/Report.h"
#include "movie/Movie.h"

namespace check {

/// What the metadata section found; absent when a movie has no video track.
struct MetadataFindings {
  bool gammaMatch = false, colorMatch = false, colorSpaceMatch = false;
  bool mismatch() const { return !gammaMatch || !colorMatch || !colorSpaceMatch; }
};

enum class PixelShift { None, Darker, Lighter, Unmatched };

/// The verdict on a commonDiff: darker or lighter inside [0.2, 0.95) and (1.05, 5.0]; Unmatched for 0, below 0.2, above 5
/// and NaN (the frames do not match: the report shows these as no shift); else None.
PixelShift pixelShiftOf(double commonDiff);

struct CheckOutcome {
  std::optional<MetadataFindings> metadata;
  std::optional<GammaEstimate> pixels;              ///< absent when the source was too dark
  bool tooDark = false;
  std::optional<movie::MovieError> sourceFrameError, destFrameError;  ///< the frame could not be had
};

struct CheckRequest {
  const movie::Movie& source;  ///< the masters; the check works on copies of its own
  const movie::Movie& dest;
  movie::MovieTime sourceTime, destTime;
  std::function<void()> stopPlayback;  ///< called once, after the first line; may be empty
};

/// The gamma check, steps in their settled order: compares the colour metadata, renders one 320 x 240 frame of each side
/// under one fixed colour set, refuses a source frame that is too dark, and reports. Synchronous; both frames are decoded
/// side by side on two threads. The outcome says what the report does not: which frame is missing and why.
CheckOutcome runGammaCheck(const CheckRequest& request, ReportConsole& console);

/// The report's last paragraphs for a commonDiff v and the metadata verdict: the decision table.
void reportPixels(double v, bool metadataMismatch, ReportConsole& console);

}  // namespace check

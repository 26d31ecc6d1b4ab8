#pragma once

#include <QString>
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

/// The verdict on a commonDiff: darker or lighter inside [0.2, 0.95) and (1.05, 5.0]; Unmatched for 0, below 0.2, above
/// 5 and NaN (the frames do not match: the report shows these as no shift); else None.
PixelShift pixelShiftOf(double commonDiff);

/// What to tell the user when the source frame is too dark; the report itself ends without a word then.
inline const QString tooDarkMessageText = QStringLiteral("Source frame is too dark");
inline const QString tooDarkInformativeText = QStringLiteral(
    "The source frame does not have enough non-black pixels for a valid analysis. Please move the playhead to a more "
    "representative frame.");

struct CheckOutcome {
  std::optional<MetadataFindings> metadata;
  /// Absent when the source was too dark. A missing frame counts as an empty bitmap: no average, commonDiff 0.
  std::optional<GammaEstimate> pixels;
  bool tooDark = false;
  std::optional<movie::MovieError> sourceFrameError, destFrameError;  ///< the frame could not be had
  /// What was looked at, in its own colours, as shown; absent where the frame could not be had.
  std::optional<movie::Picture> sourcePicture, destPicture;
};

/// Where the two frames are taken.
struct Playheads {
  movie::MovieTime source, dest;
};

struct CheckRequest {
  const movie::Movie& source;  ///< the masters; the check works on copies of its own
  const movie::Movie& dest;
  Playheads playheads;
  /// Called once, after the first line: stops what plays and tells where the playheads came to stand. May be empty.
  std::function<Playheads()> stopPlayback;
};

/// The gamma check, steps in their settled order: compares the colour metadata, renders one 320 x 240 frame of each
/// side under one fixed colour set, refuses a source frame that is too dark, and reports. Synchronous; both frames are
/// decoded side by side on two threads. The outcome says what the report does not: which frame is missing and why. An
/// exception of the console or of the analysis passes on.
CheckOutcome runGammaCheck(const CheckRequest& request, ReportConsole& console);

/// The report's last paragraphs for a commonDiff v and the metadata verdict: the decision table.
void reportPixels(double v, bool metadataMismatch, ReportConsole& console);

}  // namespace check

#include "cli/scan/ScanFilter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "diagnosis/undo/UndoFilter.h"

namespace cli {
namespace {

using diagnosis::CauseKind;

bool wasLeftAlone(const scan::Segment& segment) {
  const CauseKind kind = segment.causes.front().kind;
  return kind == CauseKind::Same || kind == CauseKind::Identical || kind == CauseKind::Unreadable;
}

/// Whether a frame is one of a segment's: its time lies between the beginnings of frames, half a frame early, so that
/// rounding does not count.
std::string duringSegment(const scan::FrameRange& range, const scan::FrameRow& dest) {
  const double half = (dest.timeOf(range.first + 1) - dest.timeOf(range.first)) / 2;
  char text[100];
  std::snprintf(text, sizeof text, "between(t,%.4f,%.4f)", dest.timeOf(range.first) - half,
                dest.timeOf(range.end) - half);
  return text;
}

/// Whether one way to undo it may be left without times: all of the movie was compared, and it is one segment.
bool coversAll(const scan::ScanResult& result, const scan::FrameRow& dest) {
  const bool complete =
      !result.stopped && !result.failure && result.scanned.first == 0 && result.scanned.end == dest.shape().frames;
  return complete && result.segments.size() == 1;
}

}  // namespace

ScanFilter scanFilter(const scan::ScanResult& result, const scan::ScanTags& tags, const scan::FrameRow& dest) {
  if (result.correspondence == scan::Beginning::Result::NotFound) {
    return {"", "It is not known how the one lies upon the other."};
  }
  if (result.segments.empty()) return {"", "There is nothing to go by."};
  const diagnosis::UndoSides sides{tags.source, tags.dest, diagnosis::comparedIn(tags.source, tags.dest)};
  const bool covers = coversAll(result, dest);
  std::string chain;
  for (const scan::Segment& segment : result.segments) {
    if (wasLeftAlone(segment)) continue;
    if (!segment.recipe || segment.confidence() < diagnosis::leastConfidence) {
      return {"", "It cannot be undone: it is not known surely what was done."};
    }
    const auto undo = diagnosis::undoFilter(*segment.recipe, sides, covers ? "" : duringSegment(segment.dest, dest));
    if (!undo) return {"", undo.error()};
    if (!covers && !undo->canBeTimed)
      return {"", "No filter is made: only a part of the movie needs it, and it takes no times."};
    chain += (chain.empty() ? "" : ",") + undo->text;
  }
  if (chain.empty()) return {"", "There is nothing to undo."};
  return {chain, ""};
}

}  // namespace cli

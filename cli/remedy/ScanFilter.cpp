#include "cli/remedy/ScanFilter.h"

#include <cstdio>

#include "cli/remedy/ScanUndo.h"
#include "diagnosis/undo/UndoFilter.h"

namespace cli {
namespace {

/// Whether a frame is one of a segment's: its time lies between the beginnings of frames, half a frame early, so that
/// rounding does not count.
std::string duringSegment(const scan::FrameRange& range, const scan::FrameRow& dest) {
  const auto early = [&](std::size_t frame) {
    const std::size_t before = frame > 0 ? frame - 1 : 0;
    return dest.timeOf(frame) - (dest.timeOf(before + 1) - dest.timeOf(before)) / 2;
  };
  char text[100];
  std::snprintf(text, sizeof text, "between(t,%.4f,%.4f)", early(range.first), early(range.end));
  return text;
}

}  // namespace

ScanFilter scanFilter(const scan::ScanResult& result, const scan::ScanTags& tags, const scan::FrameRow& dest) {
  const auto segments = segmentsToUndo(result);
  if (!segments) return {"", segments.error()};
  const diagnosis::UndoSides sides{tags.source, tags.dest, diagnosis::comparedIn(tags.source, tags.dest)};
  const bool covers = isOneWholeSegment(result, dest);
  std::string chain;
  for (const scan::Segment* const segment : *segments) {
    const auto undo = diagnosis::undoFilter(*segment->recipe, sides, covers ? "" : duringSegment(segment->dest, dest));
    if (!undo) return {"", undo.error()};
    if (!covers && !undo->canBeTimed)
      return {"", "No filter is made: only a part of the movie needs it, and it takes no times."};
    chain += (chain.empty() ? "" : ",") + undo->text;
  }
  return {chain, ""};
}

}  // namespace cli

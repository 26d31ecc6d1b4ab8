#include "cli/remedy/ScanUndo.h"

namespace cli {
namespace {

using diagnosis::CauseKind;

bool wasLeftAlone(const scan::Segment& segment) {
  const CauseKind kind = segment.causes.front().kind;
  return kind == CauseKind::Same || kind == CauseKind::Identical || kind == CauseKind::Unreadable;
}

}  // namespace

tl::expected<std::vector<const scan::Segment*>, std::string> segmentsToUndo(const scan::ScanResult& result) {
  const auto none = [](const char* why) { return tl::unexpected<std::string>(why); };
  if (result.correspondence == scan::Beginning::Result::NotFound) {
    return none("It is not known how the one lies upon the other.");
  }
  if (result.segments.empty()) return none("There is nothing to go by.");
  std::vector<const scan::Segment*> segments;
  for (const scan::Segment& segment : result.segments) {
    if (wasLeftAlone(segment)) continue;
    if (!segment.recipe || segment.confidence() < diagnosis::leastConfidence) {
      return none("It cannot be undone: it is not known surely what was done.");
    }
    segments.push_back(&segment);
  }
  if (segments.empty()) return none("There is nothing to undo.");
  return segments;
}

bool isOneWholeSegment(const scan::ScanResult& result, const scan::FrameRow& dest) {
  const bool complete =
      !result.stopped && !result.failure && result.scanned.first == 0 && result.scanned.end == dest.shape().frames;
  return complete && result.segments.size() == 1;
}

}  // namespace cli

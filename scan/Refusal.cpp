#include "scan/Refusal.h"

#include <limits>

#include "diagnosis/Advice.h"

namespace scan {
namespace {

void tellOthers(diagnosis::Finding& finding) {
  finding.causes = {{.kind = diagnosis::CauseKind::Different, .confidence = 0.95}};
  finding.curve.clear();
  finding.difference = 0;
  finding.correspondence.same = false;
  finding.action = diagnosis::actionFor(finding);
}

}  // namespace

ScanResult refusal(const ScanTags& tags, std::size_t frames) {
  ScanResult result;
  result.finding.wholeMovies = true;
  result.finding.tags = diagnosis::compareTags(tags.source, tags.dest);
  result.finding.frames = result.finding.unmatchedFrames = static_cast<int>(frames);
  tellOthers(result.finding);
  return result;
}

bool isRefused(const Matches& matches, const Beginning& beginning) {
  std::size_t telling = 0, matched = 0, matchedFlat = 0;
  for (const FrameMatch& match : matches.frames) {
    telling += match.flat ? 0 : 1;
    if (match.isMatched()) ++(match.flat ? matchedFlat : matched);
  }
  if (matched + matchedFlat == 0) return true;
  // Places that were looked for all over the destination were found more than once.
  const bool isSure = beginning.isProbed && beginning.result == Beginning::Result::Found;
  return !isSure && 2 * matched < telling;
}

void refuse(ScanResult& result) {
  result.correspondence = Beginning::Result::NotFound;
  result.segments.clear();
  result.unmeasured.clear();
  result.worst.reset();
  for (FrameMatch& match : result.matches.frames) match.logExponent = std::numeric_limits<float>::quiet_NaN();
  tellOthers(result.finding);
}

}  // namespace scan

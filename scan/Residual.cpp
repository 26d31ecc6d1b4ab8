#include "scan/Residual.h"

#include "scan/Conclusion.h"
#include "scan/follow/Evidence.h"
#include "scan/follow/Follow.h"
#include "scan/follow/FrameComparison.h"

namespace scan {

movie::Result<Residual> residualOf(FrameRow& source, FrameRow& row, const ScanTags& tags, const SameFrames& frames) {
  Residual residual;
  Followed followed;
  std::size_t comparable = 0;  // by which evidence counts: of a sampled movie, few frames are
  for (std::size_t i = 0; i < frames.dest.count(); ++i) {
    const std::size_t frame = frames.dest.first + i;
    FrameMatch match;
    const bool wasCompared = (frame - frames.matches.first) % frames.matches.every == 0;
    if (wasCompared) match = frames.matches.at(frame);
    match.identical = false;
    followed.matches.frames.push_back(match);
    if (!match.isMatched() || match.blended || !followed.evidence.wants(comparable++)) continue;
    TRY(const Thumbnail shown, source.thumbnail(static_cast<std::size_t>(match.source)));
    TRY(const Thumbnail here, row.thumbnail(frames.first + i));
    followed.evidence.add(comparable - 1, alignedThumbnails(shown, here, frames.placement));
    ++residual.frames;
  }
  StretchFinding found = stretchFinding(followed, {0, frames.dest.count()}, tags, frames.tolerance);
  residual.difference = found.difference;
  residual.causes = std::move(found.causes);
  return residual;
}

}  // namespace scan

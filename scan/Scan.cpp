#include "scan/Scan.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "scan/Conclusion.h"
#include "scan/Refusal.h"
#include "scan/align/Probe.h"
#include "scan/follow/FrameComparison.h"

namespace scan {
namespace {

/// How far it is, counted frame by frame.
class ProgressCount {
 public:
  ProgressCount(const FrameRow& dest, std::size_t known) : dest_(dest) {
    progress_ = {.stage = ScanProgress::Stage::Comparing, .frames = dest.shape().frames, .known = known};
  }

  const ScanProgress& of(const Matches& matches) {
    for (; progress_.done < matches.frames.size(); ++progress_.done) {
      const FrameMatch& match = matches.frames[progress_.done];
      progress_.unmatched += match.isMatched() ? 0 : 1;
      progress_.identical += match.identical ? 1 : 0;
      if (match.isMeasured()) progress_.exponent = std::exp(double{match.logExponent});
    }
    progress_.seconds = dest_.timeOf(progress_.done) - dest_.timeOf(0);
    progress_.matches = &matches;
    return progress_;
  }

 private:
  const FrameRow& dest_;
  ScanProgress progress_;
};

/// Takes the colours of a frame that was gone through before. False where it cannot be read any more, which the scan
/// ends with.
bool readAgain(Followed& followed, std::size_t frame, FrameRow& source, FrameRow& dest,
               const diagnosis::Placement& placement) {
  const auto failed = [&](ReadFailure::Side side, std::size_t number, const movie::MovieError& error) {
    if (!followed.failure) followed.failure = ReadFailure{side, number, error};
    return false;
  };
  const auto number = static_cast<std::size_t>(followed.matches.frames[frame - followed.matches.first].source);
  const auto shown = source.thumbnail(number);
  if (!shown) return failed(ReadFailure::Side::Source, number, shown.error());
  const auto here = dest.thumbnail(frame);
  if (!here) return failed(ReadFailure::Side::Dest, frame, here.error());
  followed.evidence.insert(frame, alignedThumbnails(*shown, *here, placement));
  return true;
}

/// Segments too short for one of the frames that were kept: some of theirs are read again.
void completeEvidence(Followed& followed, FrameRow& source, FrameRow& dest, const diagnosis::Placement& placement) {
  constexpr std::size_t enough = 4, mostSegments = 24;
  std::size_t completed = 0;
  for (const ExponentSegment& segment : segmentsOf(followed.matches, dest)) {
    if (followed.evidence.countIn(segment.dest) >= enough || ++completed > mostSegments) continue;
    for (std::size_t i = 0; i < enough; ++i) {
      const std::size_t frame = segment.dest.first + segment.dest.count() * (2 * i + 1) / (2 * enough);
      if (!followed.matches.frames[frame - followed.matches.first].isMeasured()) continue;
      if (!readAgain(followed, frame, source, dest, placement)) return;
    }
  }
}

/// Colours of frames that were gone through before. They are read again: there are too many of them to be kept.
void readEvidenceAgain(Followed& before, FrameRow& source, FrameRow& dest, const diagnosis::Placement& placement,
                       const Stop& stop) {
  Thinned added;
  for (std::size_t i = 0; i < before.matches.frames.size(); ++i) {
    if (isEvidence(before.matches.frames[i]) && added.wants(i)) added.add(i);
  }
  before.evidence = Evidence(added);
  for (const std::size_t i : added.numbers()) {
    if (stop() || !readAgain(before, i, source, dest, placement)) return;
  }
}

/// Behind what was kept of the same scan.
Departure departureAfter(const SavedScan& saved, FrameRow& source, FrameRow& dest, const Stop& stop) {
  Departure departure = departureOf(saved.beginning);
  if (saved.frames.empty()) return departure;
  departure.before.matches.frames = saved.frames;
  departure.before.lines = saved.lines;
  readEvidenceAgain(departure.before, source, dest, departure.placement, stop);
  departure.bearing = saved.standing.bearing;
  departure.state = saved.standing.state;
  return departure;
}

/// From frames of the row that was compared to frames of the movie.
void countInMovie(ScanResult& result, const SampledRow& compared) {
  const auto inMovie = [&](FrameRange& range) {
    range = {compared.wholeFrame(range.first), compared.wholeFrame(range.end)};
  };
  inMovie(result.scanned);
  for (MapPiece& piece : result.map.pieces) inMovie(piece.dest);
  for (Gap& gap : result.map.dropped) gap.before = compared.wholeFrame(gap.before);
  for (FrameRange& range : result.map.unmatched) inMovie(range);
  for (Segment& segment : result.segments) inMovie(segment.dest);
  for (UnmeasuredRange& range : result.unmeasured) inMovie(range.dest);
  if (result.worst) result.worst->frame = compared.wholeFrame(result.worst->frame);
  if (result.failure && result.failure->side == ReadFailure::Side::Dest) {
    result.failure->frame = compared.wholeFrame(result.failure->frame);
  }
  result.matches.first = compared.wholeFrame(0);
  result.matches.every = compared.every();
}

}  // namespace

FrameRange rangeOf(const FrameRow& dest, const ScanOptions& options) {
  const std::size_t frames = dest.shape().frames;
  FrameRange range{0, frames};
  if (options.from) range.first = std::min(frames - 1, frameAt(dest, *options.from));
  if (options.to && *options.to < dest.timeOf(frames)) {
    const std::size_t last = frameAt(dest, *options.to);
    // A frame that begins at the end is not in it.
    range.end = std::max(range.first + 1, dest.timeOf(last) < *options.to - 1e-5 ? last + 1 : last);
  }
  return range;
}

ScanResult scanned(FrameRow& source, FrameRow& dest, const ScanTags& tags, const ScanOptions& options,
                   const OnProgress& onProgress, ScanKeeper* keeper) {
  if (source.shape().frames == 0 || dest.shape().frames == 0) return refusal(tags, dest.shape().frames);
  const StartOptions start{rangeOf(dest, options), options.align};
  bool stopped = false;
  const Stop stop = [&] {
    const bool now = onProgress && onProgress({.frames = start.range.count()});
    stopped = stopped || now;
    return stopped;
  };
  const SavedScan* const saved = keeper != nullptr ? keeper->saved() : nullptr;
  const Beginning beginning = saved != nullptr ? saved->beginning : beginningOf(source, dest, start, stop);
  if (beginning.result == Beginning::Result::NotFound || stopped) {
    ScanResult result = refusal(tags, start.range.count());
    result.stopped = stopped;
    return result;
  }
  if (keeper != nullptr && saved == nullptr) keeper->begun(beginning);
  SampledRow compared(dest, start.range, std::max<std::size_t>(1, options.every));
  Departure departure = saved != nullptr ? departureAfter(*saved, source, compared, stop) : departureOf(beginning);
  ProgressCount progress(compared, departure.before.matches.frames.size());
  const FollowHooks hooks{
      .onFollowed = [&](const Followed& soFar) { return onProgress && onProgress(progress.of(soFar.matches)); },
      .onSettled =
          [&](const Followed& soFar, const Standing& standing) {
            if (keeper != nullptr) keeper->settled(soFar.matches, soFar.lines, standing);
          }};
  Followed followed = scan::followed(source, compared, std::move(departure),
                                     options.align ? Following::WhereverItIs : Following::OneLine, hooks);
  if (!followed.stopped)
    completeEvidence(followed, source, compared, beginning.placement);  // who stops it will not wait
  ScanResult result;
  result.correspondence = beginning.result;
  result.compared = beginning.placement;
  result.placement = widened(beginning.placement, clipWidth, clipHeight);
  conclude(result, std::move(followed), source, compared, tags, options.tolerance);
  if (!result.stopped && isRefused(result.matches, beginning)) refuse(result);
  countInMovie(result, compared);
  return result;
}

movie::Result<MoviePair> pairOf(const movie::Movie& source, const movie::Movie& dest) {
  MoviePair pair;
  TRY(pair.source, MovieRow::of(source));
  TRY(pair.dest, MovieRow::of(dest));
  const std::uint16_t matrix = diagnosis::comparedIn(pair.source->tags(), pair.dest->tags()).matrix;
  pair.source->compareIn(matrix);
  pair.dest->compareIn(matrix);
  return pair;
}

}  // namespace scan

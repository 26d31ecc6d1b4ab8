#include "scan/Conclusion.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "diagnosis/Advice.h"
#include "diagnosis/Causes.h"
#include "diagnosis/Difference.h"
#include "diagnosis/ToneCurve.h"
#include "diagnosis/numbers/Statistics.h"

namespace scan {
namespace {

using diagnosis::Cause;
using diagnosis::CauseKind;

std::size_t framesOfASecond(const FrameRow& row) {
  return static_cast<std::size_t>(std::max(1.0, std::round(row.shape().rate())));
}

/// Runs of frames for which something holds, of so many at least.
template <typename Holds>
std::vector<FrameRange> runsWhere(const Matches& matches, const FrameRange& within, std::size_t fewest, Holds holds) {
  std::vector<FrameRange> runs;
  std::size_t first = within.first;
  for (std::size_t i = within.first; i <= within.end; ++i) {
    if (i < within.end && holds(matches.frames[i - matches.first])) continue;
    if (i >= first + fewest) runs.push_back({first, i});
    first = i + 1;
  }
  return runs;
}

/// Pieces of a range, cut at both ends of each run.
std::vector<FrameRange> cutAt(const FrameRange& range, const std::vector<FrameRange>& runs) {
  std::vector<FrameRange> pieces;
  std::size_t at = range.first;
  for (const FrameRange& run : runs) {
    if (run.first > at) pieces.push_back({at, run.first});
    pieces.push_back(run);
    at = run.end;
  }
  if (at < range.end) pieces.push_back({at, range.end});
  return pieces;
}

bool areIdentical(const Matches& matches, const FrameRange& range) {
  std::size_t matched = 0, identical = 0;
  for (std::size_t i = range.first; i < range.end; ++i) {
    const FrameMatch& match = matches.frames[i - matches.first];
    matched += match.isMatched() ? 1 : 0;
    identical += match.identical ? 1 : 0;
  }
  return matched > 0 && matched == identical;
}

/// How far frames are from those that they show, in the middle.
double farnessIn(const Matches& matches, const FrameRange& range) {
  std::vector<double> distances;
  for (std::size_t i = range.first; i < range.end; ++i) {
    const FrameMatch& match = matches.frames[i - matches.first];
    if (match.isMatched()) distances.push_back(double{match.distance});
  }
  return distances.empty() ? 0 : diagnosis::medianOf(distances);
}

/// What a confidence is worth of pictures of which an encoder left so little that even their blocks are off: their
/// colours are, too, and no longer by what was done to all of them. Set on a few exports by H.264 at rate factors of 44
/// and 51; at 36, frames are hardly farther than usual.
double worth(const Cause& cause, double farness) {
  constexpr double usual = 1.5, eachOfChange = 1.2, eachOfSame = 0.8;
  const double each = cause.kind == CauseKind::Same ? eachOfSame : eachOfChange;
  const double left = cause.confidence * std::exp(-each * std::max(0.0, farness - usual));
  return left / (left + 1 - cause.confidence);
}

Segment segmentOf(const Followed& followed, const FrameRange& range, const ScanTags& tags, double tolerance) {
  StretchFinding found = stretchFinding(followed, range, tags, tolerance);
  Segment segment{range, std::nullopt, {}, std::move(found.causes), found.recipe, std::move(found.colors)};
  if (const auto measured = exponentIn(followed.matches, range)) {
    segment.exponent = std::exp(measured->logExponent);
    segment.interval = measured->interval;
  }
  return segment;
}

bool isUnchanged(const Segment& segment) {
  const CauseKind kind = segment.causes.front().kind;
  return kind == CauseKind::Same || kind == CauseKind::Identical || kind == CauseKind::Unreadable;
}

/// A few frames that are too little to tell from alone: the dim end of a fade.
bool isScrap(const Segment& segment, const FrameRow& dest) {
  return segment.causes.front().kind == CauseKind::Unreadable && segment.dest.count() < framesOfASecond(dest);
}

/// Both as one where one cause explains them as well as each alone: what a shot shows may move its exponent, and what
/// is told of a few colours may be told otherwise of more.
std::optional<Segment> asOne(const Followed& followed, const Segment& one, const Segment& other, const FrameRow& dest,
                             const ScanTags& tags, double tolerance) {
  constexpr double asWell = 1.25, codes = 0.15, mostWorse = 1;
  const Cause &first = one.causes.front(), &second = other.causes.front();
  const bool hasScrap = isScrap(one, dest) || isScrap(other, dest);
  if (!hasScrap && first.kind != second.kind && (isUnchanged(one) || isUnchanged(other))) return std::nullopt;
  Segment both = segmentOf(followed, {one.dest.first, other.dest.end}, tags, tolerance);
  const Cause& cause = both.causes.front();
  const auto isAs = [&](const Cause& each) { return cause.kind == each.kind && cause.direction == each.direction; };
  const bool tells = cause.kind != CauseKind::Unreadable || first.kind == second.kind;
  const bool same = tells && (isAs(first) || isAs(second));
  // One that fits badly, a fade of one side, is no reason to fit the other badly.
  const bool isSecond = first.kind == CauseKind::Unreadable ||
                        (second.kind != CauseKind::Unreadable && other.dest.count() > one.dest.count());
  const Cause& longer = isSecond ? second : first;
  const double better = hasScrap ? longer.residual : std::min(first.residual, second.residual);
  const bool fits = cause.residual <= asWell * longer.residual + codes && cause.residual <= better + mostWorse;
  return same && fits ? std::optional(both) : std::nullopt;
}

std::vector<UnmeasuredRange> unmeasuredRanges(const Matches& matches, const FrameRow& dest) {
  std::vector<UnmeasuredRange> ranges;
  const FrameRange all{matches.first, matches.end()};
  for (const FrameRange& run : runsWhere(matches, all, framesOfASecond(dest), [](const FrameMatch& match) {
         return match.isMatched() && !match.isMeasured();
       })) {
    const auto flat = std::count_if(matches.frames.begin() + static_cast<std::ptrdiff_t>(run.first - matches.first),
                                    matches.frames.begin() + static_cast<std::ptrdiff_t>(run.end - matches.first),
                                    [](const FrameMatch& match) { return match.flat; });
    const bool mostFlat = 2 * static_cast<std::size_t>(flat) >= run.count();
    ranges.push_back({run, mostFlat ? Unmeasured::Dark : Unmeasured::Clipped});
  }
  return ranges;
}

std::optional<WorstFrame> worstOf(const Matches& matches) {
  std::optional<WorstFrame> worst;
  for (std::size_t i = 1; i + 1 < matches.frames.size(); ++i) {
    // What a single frame has alone is a flash, or a mistake.
    double least = 1e9, value = 0;
    for (const std::size_t at : {i - 1, i, i + 1}) {
      const FrameMatch& match = matches.frames[at];
      const double off = match.isMeasured() ? std::abs(double{match.logExponent}) : 0.0;
      least = std::min(least, off);
    }
    if (!matches.frames[i].isMeasured()) continue;
    value = double{matches.frames[i].logExponent};
    if (!worst || least > std::abs(std::log(worst->exponent))) {
      const double held = std::copysign(least, value);
      worst = WorstFrame{matches.first + i, std::exp(held)};
    }
  }
  return worst;
}

/// What is told of the whole: the longest of the segments that differ, else the first.
const Segment* weightiest(const std::vector<Segment>& segments) {
  const Segment* best = nullptr;
  for (const Segment& segment : segments) {
    if (best == nullptr || (isUnchanged(*best) && !isUnchanged(segment)) ||
        (isUnchanged(*best) == isUnchanged(segment) && segment.dest.count() > best->dest.count())) {
      best = &segment;
    }
  }
  return best;
}

void tellWhole(ScanResult& result, const Followed& followed, const ScanTags& tags, double tolerance) {
  diagnosis::Finding& finding = result.finding;
  finding.wholeMovies = true;
  finding.tags = diagnosis::compareTags(tags.source, tags.dest);
  const std::size_t frames = followed.matches.frames.size();
  std::size_t matched = 0, flat = 0;
  for (const FrameMatch& match : followed.matches.frames) {
    matched += match.isMatched() ? 1 : 0;
    flat += match.isMatched() && match.flat && !match.isMeasured() ? 1 : 0;
  }
  finding.frames = static_cast<int>(frames);
  finding.darkFrames = static_cast<int>(flat);
  finding.unmatchedFrames = static_cast<int>(frames - matched);
  finding.identicalSamples = frames > 0 && result.identicalFrames == frames;
  finding.correspondence = {frames > 0 ? static_cast<double>(matched) / static_cast<double>(frames) : 0.0,
                            result.placement, matched > 0};
  const Segment* const segment = weightiest(result.segments);
  if (segment != nullptr) {
    const StretchFinding told = stretchFinding(followed, segment->dest, tags, tolerance);
    finding.causes = told.causes;
    finding.curve = told.curve;
    finding.difference = told.difference;
  } else if (finding.identicalSamples && diagnosis::sameMeaning(tags.source, tags.dest)) {
    finding.causes = {{.kind = CauseKind::Identical, .confidence = 1}};
  } else {
    const CauseKind kind = matched == 0 ? CauseKind::Different : (flat > 0 ? CauseKind::Dark : CauseKind::Unreadable);
    finding.causes = {{.kind = kind, .confidence = 0.95}};
  }
  finding.action = diagnosis::actionFor(finding);
}

}  // namespace

StretchFinding stretchFinding(const Followed& followed, const FrameRange& range, const ScanTags& tags,
                              double tolerance) {
  const diagnosis::ComparedIn space = diagnosis::comparedIn(tags.source, tags.dest);
  const diagnosis::StrataBuilder builder = followed.evidence.in(range);
  const std::vector<diagnosis::Stratum> strata = diagnosis::withinRgb(builder.strata(), space.matrix);
  StretchFinding finding;
  finding.difference = diagnosis::differenceOf(strata);
  finding.curve = diagnosis::toneCurve(builder.calmSource(), builder.calmDest());
  diagnosis::ToldCauses told = diagnosis::toldCauses(
      {strata, tags.source, tags.dest, space, tolerance, finding.difference, areIdentical(followed.matches, range)});
  finding.causes = std::move(told.causes);
  const double farness = farnessIn(followed.matches, range);
  for (Cause& cause : finding.causes) cause.confidence = worth(cause, farness);
  finding.recipe = told.recipe;
  if (finding.recipe) finding.colors = strata;
  return finding;
}

std::vector<Segment> toldSegments(const Followed& followed, const FrameRow& dest, const ScanTags& tags,
                                  double tolerance) {
  std::vector<Segment> segments;
  for (const ExponentSegment& stretch : segmentsOf(followed.matches, dest)) {
    const std::vector<FrameRange> identical = runsWhere(followed.matches, stretch.dest, framesOfASecond(dest),
                                                        [](const FrameMatch& match) { return match.identical; });
    for (const FrameRange& range : cutAt(stretch.dest, identical)) {
      const Segment segment = segmentOf(followed, range, tags, tolerance);
      auto both = segments.empty() ? std::nullopt : asOne(followed, segments.back(), segment, dest, tags, tolerance);
      if (both) {
        segments.back() = std::move(*both);
      } else {
        segments.push_back(segment);
      }
    }
  }
  return segments;
}

void conclude(ScanResult& result, Followed followed, const FrameRow& source, const FrameRow& dest, const ScanTags& tags,
              double tolerance) {
  result.scanned = {followed.matches.first, followed.matches.end()};
  result.stopped = followed.stopped;
  result.failure = followed.failure;
  result.map = timeMapOf(followed.matches, source, dest, followed.lines);
  result.segments = toldSegments(followed, dest, tags, tolerance);
  result.unmeasured = unmeasuredRanges(followed.matches, dest);
  result.worst = worstOf(followed.matches);
  result.identicalFrames =
      static_cast<std::size_t>(std::count_if(followed.matches.frames.begin(), followed.matches.frames.end(),
                                             [](const FrameMatch& match) { return match.identical; }));
  tellWhole(result, followed, tags, tolerance);
  result.matches = std::move(followed.matches);
}

}  // namespace scan

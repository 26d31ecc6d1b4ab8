#include "scan/TimeMap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "diagnosis/numbers/Statistics.h"

namespace scan {
namespace {

/// A jump is one for good once so many frames in a row follow it.
constexpr std::size_t persistent = 6;
/// A picture is held once so many frames in a row show it that should show others.
constexpr std::size_t fewestHeld = 6;

/// What the steps from frame to frame are made of.
struct Steps {
  std::size_t all = 0, none = 0, one = 0, blended = 0;
};

Steps stepsOf(const Matches& matches, const FrameRange& range) {
  Steps steps;
  for (std::size_t i = range.first + 1; i < range.end; ++i) {
    const FrameMatch& before = matches.frames[i - 1 - matches.first];
    const FrameMatch& here = matches.frames[i - matches.first];
    if (!before.isMatched() || !here.isMatched()) continue;
    ++steps.all;
    if (here.source == before.source) ++steps.none;
    if (here.source == before.source + 1) ++steps.one;
    if (here.blended) ++steps.blended;
  }
  return steps;
}

double middleOf(std::vector<double> values) {
  return diagnosis::medianOf(values);
}

/// Cuts the matches into stretches that lie on one line each, or hold one picture.
class Cutter {
 public:
  Cutter(const Matches& matches, const FrameRow& source, const FrameRow& dest, const std::vector<TimeLine>& lines)
      : matches_(matches), source_(source), dest_(dest), lines_(lines) {
    period_ = 1 / std::max(1e-3, source.shape().rate());
  }

  std::vector<MapPiece> pieces() {
    FrameRange held;
    for (std::size_t i = matches_.first; i < matches_.end(); ++i) {
      const FrameMatch& match = frame(i);
      if (!match.isMatched()) continue;
      if (i >= held.end) held = heldFrom(i);
      if (i >= held.first && i < held.end) {
        if (open_) close(i);
        pieces_.push_back({held, {0, source_.timeOf(static_cast<std::size_t>(match.source))}, {}, 1});
        i = held.end - 1;
        continue;
      }
      if (open_ && (match.line != line_ || jumpsAt(i))) close(i);
      if (!open_) open(i);
      offsets_.push_back(offsetOf(i));
      times_.push_back(dest_.timeOf(i));
      last_ = i + 1;
    }
    if (open_) close(last_);
    return joinedHolds(pieces_);
  }

 private:
  const FrameMatch& frame(std::size_t i) const { return matches_.frames[i - matches_.first]; }
  double rate() const { return lines_[line_].rate; }
  double offsetOf(std::size_t i) const {
    return source_.timeOf(static_cast<std::size_t>(frame(i).source)) - rate() * dest_.timeOf(i);
  }

  /// One picture that is held, where of a slow shot the next one was taken for it somewhere.
  std::vector<MapPiece> joinedHolds(const std::vector<MapPiece>& pieces) const {
    constexpr double few = 2.5;  // frames
    const double destPeriod = 1 / std::max(1e-3, dest_.shape().rate());
    const auto isNext = [&](const MapPiece& before, const MapPiece& after) {
      const bool areHolds = before.line.rate == 0 && after.line.rate == 0;
      const double between = dest_.timeOf(after.dest.first) - dest_.timeOf(before.dest.end);
      return areHolds && between <= few * destPeriod &&
             std::abs(after.line.offset - before.line.offset) <= few * period_;
    };
    std::vector<MapPiece> joined;
    for (const MapPiece& piece : pieces) {
      const std::size_t count = joined.size();
      const bool follows =
          count > 1 && static_cast<double>(joined[count - 1].dest.count()) <= few && isNext(joined[count - 2], piece);
      if (follows) joined.pop_back();
      if (follows || (count > 0 && isNext(joined.back(), piece))) {
        joined.back().dest.end = piece.dest.end;
      } else {
        joined.push_back(piece);
      }
    }
    return joined;
  }

  /// Of the frames from one on that show what it shows, those that come after its time, if they are many; else an
  /// empty range behind all of them. That one is matched.
  FrameRange heldFrom(std::size_t i) const {
    constexpr double hardly = 0.25;
    const FrameMatch& match = frame(i);
    if (lines_[match.line].rate <= 0) return {i + 1, i + 1};
    const auto shown = static_cast<std::size_t>(match.source);
    const double lasting = (source_.timeOf(shown + 1) - source_.timeOf(shown)) / lines_[match.line].rate;
    const double due = dest_.timeOf(i) + lasting - hardly / std::max(1e-3, dest_.shape().rate());
    FrameRange held{matches_.end(), i + 1};
    for (; held.end < matches_.end() && frame(held.end).source == match.source; ++held.end) {
      if (dest_.timeOf(held.end) > due) held.first = std::min(held.first, held.end);
    }
    return held.end >= held.first + fewestHeld ? held : FrameRange{held.end, held.end};
  }

  void open(std::size_t i) {
    open_ = true;
    line_ = frame(i).line;
    first_ = i;
    offsets_.clear();
    times_.clear();
    const double step = rate() * source_.shape().rate() / std::max(1e-3, dest_.shape().movieRate());
    reach_ = (std::abs(step - 1) < 2e-3 ? 0.6 : 1.6) * period_;
  }

  /// Whether this frame and those after it lie on another line for good.
  bool jumpsAt(std::size_t i) const {
    const std::size_t lately = std::min<std::size_t>(offsets_.size(), 25);
    std::vector<double> latest(offsets_.end() - static_cast<std::ptrdiff_t>(lately), offsets_.end());
    const double here = diagnosis::medianOf(latest);
    std::size_t off = 0;
    for (std::size_t next = i; next < matches_.end() && off < persistent; ++next) {
      if (!frame(next).isMatched()) continue;
      if (frame(next).line != line_) break;
      if (std::abs(offsetOf(next) - here) <= reach_) return false;
      ++off;
    }
    return off > 0 && (off == persistent || offsets_.size() >= persistent);
  }

  void close(std::size_t next) {
    MapPiece piece;
    piece.dest = {first_, std::min(next, last_)};
    piece.line = fittedLine();
    std::size_t near = 0;
    for (std::size_t i = 0; i < offsets_.size(); ++i) {
      const double shown = offsets_[i] + rate() * times_[i];
      if (std::abs(shown - piece.line.at(times_[i])) <= 1.01 * period_) ++near;
    }
    piece.agreement = static_cast<double>(near) / static_cast<double>(piece.dest.count());
    pieces_.push_back(piece);
    open_ = false;
  }

  /// The line of the frames so far: at the rate that it was found with or, where they drift away from that by more than
  /// a frame, at the one that lengths and usual rates suggest and they follow. Any other slope may be of frames that
  /// were dropped one by one.
  TimeLine fittedLine() const {
    constexpr std::size_t fewest = 90;
    constexpr double nearby = 0.75;
    const TimeLine found{rate(), middleOf(offsets_)};
    if (offsets_.size() < fewest) return found;
    const double later = middleOf(lastThird(offsets_)) - middleOf(firstThird(offsets_));
    const double drift = later / (middleOf(lastThird(times_)) - middleOf(firstThird(times_)));
    const double lasting = times_.back() - times_.front();
    if (std::abs(drift) * lasting <= period_) return found;
    const double followed = rate() + drift, likeliest = likeliestRate(followed);
    if (std::abs(likeliest - followed) * lasting >= nearby * period_) return found;
    std::vector<double> offsets = offsets_;
    for (std::size_t i = 0; i < offsets.size(); ++i) offsets[i] += (rate() - likeliest) * times_[i];
    return {likeliest, diagnosis::medianOf(offsets)};
  }

  double likeliestRate(double near) const {
    const RowShape source = source_.shape();
    RowShape dest = dest_.shape();
    if (dest.every > 1) dest.frames = dest.all;
    std::vector<double> likely = usualRates(source, dest);
    likely.push_back(source.seconds / std::max(1e-3, dest.seconds));
    return *std::min_element(likely.begin(), likely.end(), [near](double one, double other) {
      return std::abs(one - near) < std::abs(other - near);
    });
  }

  static std::vector<double> firstThird(const std::vector<double>& values) {
    return {values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 3)};
  }
  static std::vector<double> lastThird(const std::vector<double>& values) {
    return {values.end() - static_cast<std::ptrdiff_t>(values.size() / 3), values.end()};
  }

  const Matches& matches_;
  const FrameRow& source_;
  const FrameRow& dest_;
  const std::vector<TimeLine>& lines_;
  double period_ = 1, reach_ = 0;
  bool open_ = false;
  std::size_t line_ = 0, first_ = 0, last_ = 0;
  std::vector<double> offsets_, times_;  ///< of the frames of the piece that is open
  std::vector<MapPiece> pieces_;
};

/// `framesEach`: of the source, for a frame of the destination. `every`: one of so many of these is known.
Pattern patternOf(const MapPiece& piece, const Steps& steps, double framesEach, std::size_t every) {
  constexpr double equal = 5e-4, nearly = 0.1, sampled = 2e-3, someBlended = 0.2, pulldown = 0.8;
  const double blended = steps.all > 0 ? static_cast<double>(steps.blended) / static_cast<double>(steps.all) : 0;
  // Lengths and counts give a rate that one long frame, or one that an edit cuts, puts wrong: the steps count more.
  const bool inSteps = steps.all <= steps.one + 1 && blended <= someBlended;
  const double reach = every > 1 ? sampled : inSteps ? nearly : equal;
  if (std::abs(framesEach - 1) < reach || steps.all == 0) {
    return std::abs(piece.line.rate - 1) < 1e-6 ? Pattern::FrameForFrame : Pattern::Retimed;
  }
  if (blended > someBlended) {
    const bool telecine = std::abs(framesEach - pulldown) < 0.01 && blended < 0.5;
    return telecine ? Pattern::Pulldown : Pattern::Blended;
  }
  return framesEach < 1 ? Pattern::Duplicated : Pattern::Dropped;
}

std::vector<FrameRange> unmatchedRanges(const Matches& matches) {
  std::vector<FrameRange> ranges;
  for (std::size_t i = matches.first; i < matches.end(); ++i) {
    if (matches.frames[i - matches.first].isMatched()) continue;
    if (!ranges.empty() && ranges.back().end == i) {
      ++ranges.back().end;
    } else {
      ranges.push_back({i, i + 1});
    }
  }
  return ranges;
}

/// What the source shows between two pieces that follow each other at once in the destination. `step`: from one frame
/// to the next where nothing is missing.
std::optional<Gap> gapBetween(const MapPiece& before, const MapPiece& after, const Matches& matches,
                              std::int32_t step) {
  constexpr std::size_t nearlyAtOnce = 3;
  if (after.dest.first > before.dest.end + nearlyAtOnce) return std::nullopt;
  const auto sourceOf = [&](std::size_t i) { return matches.frames[i - matches.first].source; };
  const std::int32_t last = sourceOf(before.dest.end - 1), next = sourceOf(after.dest.first);
  if (next <= last + step) return std::nullopt;
  return Gap{{static_cast<std::size_t>(last + step), static_cast<std::size_t>(next)}, after.dest.first};
}

/// The frames of the source from the first one that a piece shows to the last.
FrameRange shownBy(const MapPiece& piece, const Matches& matches) {
  FrameRange shown{std::numeric_limits<std::size_t>::max(), 0};
  for (std::size_t i = piece.dest.first; i < piece.dest.end; ++i) {
    const FrameMatch& match = matches.frames[i - matches.first];
    if (!match.isMatched()) continue;
    const auto source = static_cast<std::size_t>(match.source);
    shown = {std::min(shown.first, source), std::max(shown.end, source + 1)};
  }
  return shown;
}

/// What of a gap is in no piece: a shot that is shown elsewhere is not dropped.
std::vector<Gap> unshown(const Gap& gap, const std::vector<FrameRange>& shown) {
  std::vector<Gap> left{gap};
  for (const FrameRange& range : shown) {
    std::vector<Gap> rest;
    for (const Gap& each : left) {
      const FrameRange before{each.source.first, std::min(each.source.end, range.first)};
      const FrameRange after{std::max(each.source.first, range.end), each.source.end};
      if (before.first < before.end) rest.push_back({before, gap.before});
      if (after.first < after.end) rest.push_back({after, gap.before});
    }
    left = std::move(rest);
  }
  return left;
}

}  // namespace

TimeMap timeMapOf(const Matches& matches, const FrameRow& source, const FrameRow& dest,
                  const std::vector<TimeLine>& lines) {
  TimeMap map;
  map.unmatched = unmatchedRanges(matches);
  map.pieces = Cutter(matches, source, dest, lines).pieces();
  const std::size_t every = dest.shape().every;
  const double framesPerFrame = source.shape().rate() / std::max(1e-3, dest.shape().movieRate());
  for (MapPiece& piece : map.pieces) {
    // A piece ends at its last matched frame.
    while (piece.dest.count() > 1 && !matches.frames[piece.dest.end - 1 - matches.first].isMatched()) --piece.dest.end;
    piece.pattern = patternOf(piece, stepsOf(matches, piece.dest), piece.line.rate * framesPerFrame, every);
  }
  std::vector<FrameRange> shown;
  shown.reserve(map.pieces.size());
  for (const MapPiece& piece : map.pieces) shown.push_back(shownBy(piece, matches));
  for (std::size_t i = 1; i < map.pieces.size(); ++i) {
    const double apart = static_cast<double>(every) * map.pieces[i].line.rate * framesPerFrame;
    const auto step = every > 1 ? std::max(1, static_cast<std::int32_t>(std::lround(apart))) : 1;
    const auto gap = gapBetween(map.pieces[i - 1], map.pieces[i], matches, step);
    if (!gap) continue;
    const std::vector<Gap> left = unshown(*gap, shown);
    map.dropped.insert(map.dropped.end(), left.begin(), left.end());
  }
  return map;
}

}  // namespace scan

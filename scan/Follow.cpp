#include "scan/Follow.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "scan/FrameExponent.h"
#include "scan/Relocation.h"

namespace scan {
namespace {

/// Frames on both sides of the expected one that may be shown instead.
constexpr std::int64_t reach = 4;
/// Of the source some more are kept than belong to frames that are not decided.
constexpr std::size_t keptBesides = 40;
/// A place is lost once so many frames in a row are like none.
constexpr std::size_t lostAfter = 20;
constexpr std::size_t burstFrames = 24;
/// Looked for nearby every so often while it is lost, anywhere ever more seldom.
constexpr std::size_t nearbyEvery = 8;

/// How far decisions are put off, and how much of the source has to be kept for that: where the destination has fewer
/// frames, it is more of the source for each.
struct Delay {
  std::size_t settledAfter = Track::usuallySettled, keptFrames = 0;
};

Delay delayFor(const FrameRow& source, const SampledRow& dest, const TimeLine& line) {
  constexpr double fewest = 18;
  // Of the source only what may be shown is read.
  constexpr std::size_t readEach = 2 * static_cast<std::size_t>(reach) + 1;
  if (dest.every() > 1) return {static_cast<std::size_t>(fewest), std::size_t{2} * 18 * readEach + keptBesides};
  const double each = std::max(1.0, line.rate * source.shape().rate() / std::max(1e-3, dest.shape().rate()));
  const double settled = std::max(fewest, static_cast<double>(Track::usuallySettled) / each);
  constexpr double most = 600;
  return {static_cast<std::size_t>(settled),
          static_cast<std::size_t>(std::min(most, 2 * settled * each)) + keptBesides};
}

/// One walk through both movies.
class Walk {
 public:
  Walk(const FrameRow& source, const SampledRow& dest, const Beginning& beginning, Following following,
       const OnFollowed& onFollowed)
      : source_(source),
        dest_(dest),
        placement_(beginning.placement),
        following_(following),
        onFollowed_(onFollowed),
        delay_(delayFor(source, dest, beginning.lines.front())),
        course_{beginning.lines.front(), beginning.exponent},
        reading_(dest.every() > 1 ? SourceWindow::Reading::Asked : SourceWindow::Reading::All),
        window_(source, {beginning.placement.source, beginning.exponent}, delay_.keptFrames, reading_),
        track_(delay_.settledAfter),
        relocation_(source, beginning.placement, [this] { return isStopped(); }) {
    result_.lines = beginning.lines;
  }

  Followed all() {
    ReadAhead reader(dest_.copy(), {placement_.dest, 1}, 0, dest_.shape().frames);
    std::size_t frame = 0;
    for (auto read = reader.next(); read && !result_.stopped; read = reader.next(), ++frame) {
      if (!*read) {
        fail(ReadFailure::Side::Dest, frame, read->error());
        break;
      }
      frames_.push_back({std::move(**read), 1e9F});
      if (!look()) break;
      emit(track_.decided());
    }
    emit(track_.finish());
    return std::move(result_);
  }

 private:
  /// A frame of the destination that is not decided yet.
  struct Waiting {
    ReadFrame read;
    float least = 0;  ///< the distance of the most similar frame of the source
  };

  void fail(ReadFailure::Side side, std::size_t frame, const movie::MovieError& error) {
    result_.failure = ReadFailure{side, frame, error};
  }

  Candidates candidatesFor(const ReadFrame& frame) {
    const double time = course_.line.at(frame.time);
    const std::int64_t expected = nearestFrame(source_, time), middle = expected + centre_;
    Candidates candidates{expected, std::max<std::int64_t>(0, middle - reach), {}};
    window_.reach(middle - reach, middle + reach + 1);
    for (std::int64_t i = candidates.first; i <= middle + reach; ++i) {
      const ReadFrame* const shown = window_.frame(i);
      if (shown == nullptr) break;
      candidates.distances.push_back(distance(frame.signature, shown->signature));
    }
    return candidates;
  }

  /// At the newest frame. False where the source cannot be read any more.
  bool look() {
    Waiting& newest = frames_.back();
    const Candidates candidates = candidatesFor(newest.read);
    newest.least = leastOf(candidates);
    track_.add(candidates);
    if (window_.failure()) {
      fail(ReadFailure::Side::Source, window_.failedAt(), *window_.failure());
      return false;
    }
    recentre(candidates);
    if (!newest.read.signature.isFlat()) lost_ = newest.least > Track::costOfNone ? lost_ + 1 : 0;
    if (following_ == Following::WhereverItIs && lost_ >= lostAfter) findAgain();
    return true;
  }

  static float leastOf(const Candidates& candidates) {
    const auto least = std::min_element(candidates.distances.begin(), candidates.distances.end());
    return least == candidates.distances.end() ? static_cast<float>(Track::highestCost) : *least;
  }

  /// Follows a drift: frames that were dropped one by one.
  void recentre(const Candidates& candidates) {
    constexpr int steady = 8;
    constexpr std::int64_t off = 2;
    if (candidates.distances.empty()) return;
    const auto least = std::min_element(candidates.distances.begin(), candidates.distances.end());
    const bool clear =
        *least < 5 && *std::max_element(candidates.distances.begin(), candidates.distances.end()) > *least + 1;
    const std::int64_t place = candidates.first + (least - candidates.distances.begin()) - candidates.expected;
    if (!clear || std::abs(place - centre_) < off) {
      if (clear) aside_ = 0;
      return;
    }
    if (++aside_ < steady) return;
    centre_ = place;
    aside_ = 0;
  }

  Moments lastMoments(std::size_t count) const {
    Moments moments;
    const std::size_t first = frames_.size() - std::min(frames_.size(), count);
    for (std::size_t i = first; i < frames_.size(); ++i) {
      moments.push_back({frames_[i].read.time, frames_[i].read.signature});
    }
    return moments;
  }

  /// The same of consecutive frames of the movie, where the row has not all of them: those before the newest.
  Moments latestOfMovie() const {
    const std::unique_ptr<FrameRow> movie = dest_.whole().copy();
    const std::size_t end = dest_.wholeFrame(frames_.back().read.number) + 1;
    return clipOf(*movie, {end - std::min(end, burstFrames), end}).moments(placement_.dest);
  }

  void findAgain() {
    const std::size_t firstLost = frames_.back().read.number + 1 - lost_;
    const bool farAlso = lost_ == lostAfter || lost_ == nextFar_;
    if ((lost_ - lostAfter) % nearbyEvery != 0 && !farAlso) return;
    if (lost_ == lostAfter) {
      lossTime_ = course_.line.at(dest_.timeOf(firstLost)) +
                  static_cast<double>(centre_) / std::max(1e-3, source_.shape().rate());
      nextFar_ = 3 * lostAfter;
    }
    const bool isSampled = dest_.every() > 1;
    const Moments burst = isSampled ? latestOfMovie() : lastMoments(std::min(lost_, burstFrames));
    if (burst.empty()) return;
    const Relocation::Loss loss =
        isSampled ? Relocation::Loss{frames_.back().read.number, course_.line.at(burst.front().time), burst, course_,
                                     result_.lines}
                  : Relocation::Loss{firstLost, lossTime_, burst, course_, result_.lines};
    std::optional<Course> found = relocation_.nearby(loss);
    if (!found && farAlso) {
      if (lost_ != lostAfter) nextFar_ = lost_ + std::min<std::size_t>(lost_, 480);
      found = relocation_.anywhere(loss);
    }
    if (found && isNew(*found)) change(*found);
  }

  bool isNew(const Course& found) const {
    const double here = frames_.back().read.time;
    const double apart = std::abs(found.line.at(here) - course_.line.at(here)) * source_.shape().rate();
    return apart > 1.5 || found.exponent != course_.exponent;
  }

  /// Where the new course begins to be the better one, among the frames that are not decided yet: their place in
  /// frames_.
  std::size_t splitFor(const std::vector<float>& leasts, std::size_t from) const {
    double cost = 0, lowest = 0;
    std::size_t split = from;
    for (std::size_t i = from; i < frames_.size(); ++i) {
      const double stay = std::min(static_cast<double>(frames_[i].least), Track::costOfNone);
      const double go = std::min(static_cast<double>(leasts[i - from]), Track::highestCost);
      cost += stay - go;
      if (cost < lowest) lowest = cost, split = i + 1;
    }
    return split;
  }

  void change(const Course& next) {
    constexpr std::size_t margin = 26;
    const std::size_t from = frames_.size() - std::min(frames_.size(), lost_ + margin);
    // The least distances on the new course, of a window of its own: the old one is needed until all before is emitted.
    SourceWindow window(source_, {placement_.source, next.exponent}, keptBesides, reading_);
    std::vector<float> leasts;
    for (std::size_t i = from; i < frames_.size(); ++i) {
      const std::int64_t expected = nearestFrame(source_, next.line.at(frames_[i].read.time));
      window.reach(expected - 1, expected + 2);
      float least = static_cast<float>(Track::highestCost);
      for (std::int64_t at = expected - 1; at <= expected + 1; ++at) {
        const ReadFrame* const shown = window.frame(at);
        if (shown != nullptr) least = std::min(least, distance(frames_[i].read.signature, shown->signature));
      }
      leasts.push_back(least);
    }
    begin(next, splitFor(leasts, from));
  }

  /// Leaves the old course at one of the waiting frames, and follows the new one from there.
  void begin(const Course& next, std::size_t split) {
    std::vector<Tracked> before = track_.finish();
    before.resize(std::min(before.size(), split));
    emit(before);
    track_ = Track(delay_.settledAfter);
    course_ = next;
    centre_ = 0;
    aside_ = 0;
    lost_ = 0;
    window_.lookAgain({placement_.source, next.exponent});
    line_ = lineNumber(next.line);
    for (Waiting& waiting : frames_) {
      const Candidates candidates = candidatesFor(waiting.read);
      waiting.least = leastOf(candidates);
      track_.add(candidates);
    }
  }

  std::uint16_t lineNumber(const TimeLine& line) {
    for (std::size_t i = 0; i < result_.lines.size(); ++i) {
      if (result_.lines[i] == line) return static_cast<std::uint16_t>(i);
    }
    constexpr std::size_t most = 60000;
    if (result_.lines.size() < most) result_.lines.push_back(line);
    return static_cast<std::uint16_t>(result_.lines.size() - 1);
  }

  void emit(const std::vector<Tracked>& decided) {
    for (const Tracked& each : decided) {
      result_.matches.frames.push_back(matchOf(frames_.front().read, each));
      frames_.pop_front();
    }
    if (!decided.empty()) isStopped();
  }

  /// Asked while a place is looked for, too: that may take a while.
  bool isStopped() {
    if (onFollowed_ && onFollowed_(result_)) result_.stopped = true;
    return result_.stopped;
  }

  FrameMatch matchOf(const ReadFrame& frame, const Tracked& tracked) {
    FrameMatch match;
    match.line = line_;
    match.distance = tracked.distance;
    match.flat = frame.signature.isFlat();
    const ReadFrame* const shown = tracked.source ? bestBeside(frame, *tracked.source) : nullptr;
    if (shown == nullptr) return match;
    match.source = static_cast<std::int32_t>(shown->number);
    match.distance = distance(frame.signature, shown->signature);
    match.identical = frame.thumbnail.digest != 0 && frame.thumbnail.digest == shown->thumbnail.digest;
    match.blended = isBlended(frame, *shown, match.distance);
    measure(match, frame, *shown);
    return match;
  }

  /// The frame that was decided for, or one next to it where that is clearly more like it: of another frame rate, which
  /// of two is shown goes to and fro. Null where none is kept.
  const ReadFrame* bestBeside(const ReadFrame& frame, std::int64_t number) const {
    constexpr float clearly = 0.7F;
    const ReadFrame* best = window_.frame(number);
    if (best == nullptr) return nullptr;
    float least = clearly * distance(frame.signature, best->signature);
    for (const std::int64_t other : {number - 1, number + 1}) {
      const ReadFrame* const beside = window_.frame(other);
      if (beside == nullptr) continue;
      const float away = distance(frame.signature, beside->signature);
      if (away < least) best = beside, least = away;
    }
    return best;
  }

  /// Whether a neighbour mixed in explains it much better.
  bool isBlended(const ReadFrame& frame, const ReadFrame& shown, float alone) const {
    constexpr float pure = 0.2F, muchBetter = 0.75F, leastMotion = 1;
    const auto number = static_cast<std::int64_t>(shown.number);
    for (const std::int64_t other : {number - 1, number + 1}) {
      const ReadFrame* const neighbour = window_.frame(other);
      if (neighbour == nullptr || distance(neighbour->signature, shown.signature) < leastMotion) continue;
      const Mixture mixture = mixtureOf(shown.signature, neighbour->signature, frame.signature);
      const bool isMixture = mixture.share > pure && mixture.share < 1 - pure;
      if (isMixture && mixture.distance < muchBetter * alone) return true;
    }
    return false;
  }

  void measure(FrameMatch& match, const ReadFrame& frame, const ReadFrame& shown) {
    constexpr int width = 80, height = 45;
    const bool isPlain = placement_.isPlain();
    const bool wanted = result_.evidence.wants(frame.number) && !match.flat && !match.blended;
    if (wanted || !isPlain) {
      const diagnosis::AlignedPair pair = alignedThumbnails(shown.thumbnail, frame.thumbnail, placement_);
      if (wanted) result_.evidence.add(frame.number, pair);
      setExponent(match, reducedTo(pair.source, width, height), reducedTo(pair.dest, width, height));
    } else {
      setExponent(match, diagnosis::reduced(shown.thumbnail.signal, width, height),
                  diagnosis::reduced(frame.thumbnail.signal, width, height));
    }
  }

  static diagnosis::Signal reducedTo(const diagnosis::Signal& signal, int width, int height) {
    return diagnosis::reduced(signal, std::min(width, signal.width), std::min(height, signal.height));
  }

  static void setExponent(FrameMatch& match, const diagnosis::Signal& source, const diagnosis::Signal& dest) {
    const std::optional<FrameExponent> exponent = exponentOf(source, dest);
    if (!exponent) return;
    match.logExponent = static_cast<float>(exponent->logExponent);
    match.spread = static_cast<float>(exponent->spread);
    match.weight = static_cast<float>(exponent->weight);
    match.level = static_cast<float>(exponent->level);
  }

  const FrameRow& source_;
  const SampledRow& dest_;
  diagnosis::Placement placement_;
  Following following_;
  const OnFollowed& onFollowed_;
  Followed result_;
  Delay delay_;

  Course course_;
  std::uint16_t line_ = 0;
  std::int64_t centre_ = 0;  ///< how far from the line the frames are found lately
  int aside_ = 0;            ///< for how many frames they have been found elsewhere
  std::size_t lost_ = 0;     ///< for how many frames nothing has been found
  std::size_t nextFar_ = 0;
  double lossTime_ = 0;

  std::deque<Waiting> frames_;
  SourceWindow::Reading reading_;
  SourceWindow window_;
  Track track_;
  Relocation relocation_;
};

}  // namespace

diagnosis::AlignedPair alignedThumbnails(const Thumbnail& source, const Thumbnail& dest,
                                         const diagnosis::Placement& placement) {
  return diagnosis::aligned(source.signal, dest.signal, placement);
}

Followed followed(const FrameRow& source, const SampledRow& dest, const Beginning& beginning, Following following,
                  const OnFollowed& onFollowed) {
  return Walk(source, dest, beginning, following, onFollowed).all();
}

}  // namespace scan

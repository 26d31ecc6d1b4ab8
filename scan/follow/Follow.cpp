#include "scan/follow/Follow.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "scan/follow/Delay.h"
#include "scan/follow/Drift.h"
#include "scan/follow/FrameComparison.h"
#include "scan/follow/LatestExponent.h"
#include "scan/follow/Relocation.h"

namespace scan {
namespace {

/// A place is lost once so many frames in a row are like none.
constexpr std::size_t lostAfter = 20;
constexpr std::size_t burstFrames = 24;
/// Looked for nearby every so often while it is lost, anywhere ever more seldom.
constexpr std::size_t nearbyEvery = 8;
/// Every so many frames it is asked whether they are lighter or darker than they are taken for.
constexpr std::size_t tonedEvery = 24;

/// The distance from a frame of the source, or from one next to it; `looks`: other ones than those of the window.
float leastBeside(const ReadFrame& frame, std::int64_t middle, const SourceWindow& source,
                  const std::optional<Looks>& looks) {
  auto least = static_cast<float>(Track::highestCost);
  for (std::int64_t i = middle - 1; i <= middle + 1; ++i) {
    const ReadFrame* const shown = source.frame(i);
    if (shown == nullptr) continue;
    const Signature other = looks ? signatureOf(shown->thumbnail, *looks) : shown->signature;
    least = std::min(least, farness(frame.signature, other));
  }
  return least;
}

/// One walk through both movies.
class Walk {
 public:
  Walk(const FrameRow& source, const SampledRow& dest, Departure departure, Following following,
       const FollowHooks& hooks)
      : source_(source),
        dest_(dest),
        placement_(departure.placement),
        following_(following),
        hooks_(hooks),
        result_(std::move(departure.before)),
        delay_(delayFor(source, dest, result_.lines.front())),
        at_(departure.bearing),
        reading_(dest.every() > 1 ? SourceWindow::Reading::Asked : SourceWindow::Reading::All),
        reach_(dest.every() > 1 ? shortReach : usualReach),
        window_(source, looks(), delay_.keptFrames, reading_),
        track_(delay_.settledAfter, departure.state),
        relocation_(source, placement_, [this] { return isStopped(); }) {}

  Followed all() {
    std::size_t frame = result_.matches.frames.size();
    if (frame > 0) reachBehind(frame);
    // The one before tells whether it is shown once more.
    ReadAhead reader(dest_.copy(), {placement_.dest, 1}, frame - std::min<std::size_t>(1, frame), dest_.shape().frames);
    if (frame > 0 && !readBefore(frame - 1, reader.next())) return std::move(result_);
    for (auto read = reader.next(); read && !result_.stopped; read = reader.next(), ++frame) {
      if (!*read) {
        fail(ReadFailure::Side::Dest, frame, read->error());
        break;
      }
      const float change = changeTo((*read)->signature);
      before_ = (*read)->signature;
      frames_.push_back({std::move(**read), change, 1e9F, {}, false});
      if (!look()) break;
      settle();
    }
    const bool isWhole = !result_.stopped && !result_.failure;
    emit(track_.finish());
    if (isWhole) tellSettled({});
    return std::move(result_);
  }

 private:
  /// A frame of the destination that is not decided yet.
  struct Waiting {
    ReadFrame read;
    float change = 0;   ///< the distance from the frame before it
    float least = 0;    ///< the distance of the most similar frame of the source
    Bearing bearing{};  ///< after it
    bool lost = false;  ///< it, or one before it that nothing has been found since
  };

  /// The frame before the first one. False where it cannot be had any more.
  bool readBefore(std::size_t frame, const std::optional<movie::Result<ReadFrame>>& read) {
    if (!read) return true;
    if (!*read) {
      fail(ReadFailure::Side::Dest, frame, read->error());
      return false;
    }
    before_ = (*read)->signature;
    return true;
  }

  /// How far a frame is from the one before it, where there is enough in both to tell: the dim ends of fades have
  /// little.
  float changeTo(const Signature& newest) const {
    constexpr float enough = 0.05F;
    const bool tells = before_ && std::min(before_->deviation, newest.deviation) >= enough;
    return tells ? distance(newest, *before_) : std::numeric_limits<float>::infinity();
  }

  Looks looks() const { return {placement_.source, at_.course.exponent}; }

  /// Where one goes on in the middle: as much of the source as would have been kept.
  void reachBehind(std::size_t frame) {
    if (frame >= dest_.shape().frames || reading_ == SourceWindow::Reading::Asked) return;
    const std::int64_t middle = nearestFrame(source_, at_.course.line.at(dest_.timeOf(frame))) + at_.centre;
    const auto behind = static_cast<std::int64_t>((delay_.keptFrames + keptBesides) / 2);
    window_.reach(middle - reach_ - behind, middle + reach_ + 1);
  }

  void settle() {
    const std::vector<Tracked> decided = track_.decided();
    emit(decided);
    if (!decided.empty() && track_.settled() && !lastLost_) tellSettled(*track_.settled());
  }

  void tellSettled(const Track::State& state) {
    if (hooks_.onSettled && !result_.stopped) hooks_.onSettled(result_, {lastBearing_, state});
  }

  void fail(ReadFailure::Side side, std::size_t frame, const movie::MovieError& error) {
    result_.failure = ReadFailure{side, frame, error};
  }

  Candidates candidatesFor(const ReadFrame& frame, float change) {
    const double time = at_.course.line.at(frame.time);
    const std::int64_t expected = nearestFrame(source_, time), middle = expected + at_.centre;
    Candidates candidates{expected, std::max<std::int64_t>(0, middle - reach_), {}, change};
    window_.reach(middle - reach_, middle + reach_ + 1);
    for (std::int64_t i = candidates.first; i <= middle + reach_; ++i) {
      const ReadFrame* const shown = window_.frame(i);
      if (shown == nullptr) break;
      candidates.distances.push_back(farness(frame.signature, shown->signature));
    }
    return candidates;
  }

  /// At the newest frame. False where the source cannot be read any more.
  bool look() {
    Waiting& newest = frames_.back();
    const Candidates candidates = candidatesFor(newest.read, newest.change);
    newest.least = leastOf(candidates);
    track_.add(candidates);
    // What is only looked at beside it may be missing.
    const std::int64_t needed = candidates.expected + at_.centre + shortReach;
    if (window_.failure() && static_cast<std::int64_t>(window_.failedAt()) <= needed) {
      fail(ReadFailure::Side::Source, window_.failedAt(), *window_.failure());
      return false;
    }
    const bool isNew = newest.read.number >= at_.settledBefore;
    if (isNew && !newest.read.signature.isFlat()) {
      lost_ = newest.least > mostUsual() ? lost_ + 1 : 0;
      if (lost_ == 0) goOn(newest.read, newest.least, candidates);
    }
    newest.bearing = at_;
    newest.lost = lost_ > 0;
    if (following_ == Following::WhereverItIs && lost_ >= lostAfter) findAgain();
    return true;
  }

  /// Behind a frame that shows what it is expected to show.
  void goOn(const ReadFrame& frame, float least, const Candidates& candidates) {
    followDrift(at_, candidates);
    at_.usual.add(least);
    if (frame.number % tonedEvery == 0) followTone(frame, least);
  }

  /// Raised to the exponent that was measured, the source is nearer, and what is not shown is farther by comparison.
  /// Measured long enough ago to be known wherever one went on.
  void followTone(const ReadFrame& frame, float least) {
    constexpr double clearly = 0.08;
    constexpr float nearer = 0.8F;
    const std::size_t known = frame.number - std::min(frame.number, delay_.settledAfter);
    const std::optional<double> exponent = latestExponent(result_.matches, known);
    if (!exponent || std::abs(std::log(*exponent / at_.course.exponent)) < clearly) return;
    const std::int64_t middle = nearestFrame(source_, at_.course.line.at(frame.time)) + at_.centre;
    const Looks next{placement_.source, *exponent};
    if (leastBeside(frame, middle, window_, next) > nearer * least) return;
    at_.course.exponent = *exponent;
    at_.usual = {};
    window_.lookAgain(looks());
  }

  /// Frames that are farther show something else. On one line nothing else is looked for.
  float mostUsual() const {
    constexpr auto most = static_cast<float>(Track::costOfNone);
    return following_ == Following::WhereverItIs ? std::min(most, at_.usual.limit()) : most;
  }

  static float leastOf(const Candidates& candidates) {
    const auto least = std::min_element(candidates.distances.begin(), candidates.distances.end());
    return least == candidates.distances.end() ? static_cast<float>(Track::highestCost) : *least;
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
    const double farness = latelyFar();
    const bool isNear = farness < Track::costOfNone;
    const bool farAlso = lost_ == nextFar_ || (lost_ == lostAfter && !isNear);
    if ((lost_ - lostAfter) % nearbyEvery != 0 && !farAlso) return;
    if (lost_ == lostAfter) {
      lossTime_ = at_.course.line.at(dest_.timeOf(firstLost)) +
                  static_cast<double>(at_.centre) / std::max(1e-3, source_.shape().rate());
      nextFar_ = 3 * lostAfter;
    }
    const bool isSampled = dest_.every() > 1;
    const Moments burst = isSampled ? latestOfMovie() : lastMoments(std::min(lost_, burstFrames));
    if (burst.empty()) return;
    const Relocation::Loss loss{isSampled ? frames_.back().read.number : firstLost,
                                isSampled ? at_.course.line.at(burst.front().time) : lossTime_,
                                burst,
                                farness,
                                reach_,
                                at_.course,
                                result_.lines};
    std::optional<Course> found = relocation_.nearby(loss);
    if (!found && farAlso) found = relocation_.anywhere(loss);
    if (found && isNew(*found)) return change(*found);
    if (farAlso && isNear) return becomeUsed(farness);
    if (farAlso && lost_ != lostAfter) nextFar_ = lost_ + std::min<std::size_t>(lost_, 480);
  }

  /// The mean distance of the frames that are lost, or of the last of them.
  double latelyFar() const {
    const std::size_t count = std::min({lost_, burstFrames, frames_.size()});
    double sum = 0;
    for (std::size_t i = frames_.size() - count; i < frames_.size(); ++i) sum += static_cast<double>(frames_[i].least);
    return sum / static_cast<double>(std::max<std::size_t>(1, count));
  }

  /// Frames that are farther than usual and fit nowhere better are where they belong: an encoder leaves less of them.
  void becomeUsed(double farness) {
    at_.usual.mean = static_cast<float>(farness);
    lost_ = 0;
  }

  bool isNew(const Course& found) const {
    const double here = frames_.back().read.time;
    const double apart = std::abs(found.line.at(here) - at_.course.line.at(here)) * source_.shape().rate();
    return apart > 1.5 || found.exponent != at_.course.exponent;
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
      leasts.push_back(leastBeside(frames_[i].read, expected, window, {}));
    }
    begin(next, splitFor(leasts, from));
  }

  /// Leaves the old course at one of the waiting frames, and follows the new one from there.
  void begin(const Course& next, std::size_t split) {
    const std::size_t newest = frames_.back().read.number;
    std::vector<Tracked> before = track_.finish();
    before.resize(std::min(before.size(), split));
    emit(before);
    track_ = Track(delay_.settledAfter);
    at_ = {.course = next, .line = lineNumber(next.line), .usual = at_.usual, .settledBefore = newest + 1};
    lost_ = 0;
    window_.lookAgain(looks());
    for (Waiting& waiting : frames_) {
      const Candidates candidates = candidatesFor(waiting.read, waiting.change);
      waiting.least = leastOf(candidates);
      waiting.bearing = at_;
      waiting.lost = false;
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
      FrameMatch match = matched(frames_.front().read, each, window_, placement_, result_.evidence);
      match.line = at_.line;
      result_.matches.frames.push_back(match);
      lastBearing_ = frames_.front().bearing;
      lastLost_ = frames_.front().lost;
      frames_.pop_front();
    }
    if (!decided.empty()) isStopped();
  }

  /// Asked while a place is looked for, too: that may take a while.
  bool isStopped() {
    if (hooks_.onFollowed && hooks_.onFollowed(result_)) result_.stopped = true;
    return result_.stopped;
  }

  const FrameRow& source_;
  const SampledRow& dest_;
  diagnosis::Placement placement_;
  Following following_;
  const FollowHooks& hooks_;
  Followed result_;
  Delay delay_;

  Bearing at_;
  std::size_t lost_ = 0;  ///< for how many frames nothing has been found
  std::size_t nextFar_ = 0;
  double lossTime_ = 0;

  std::optional<Signature> before_;  ///< of the newest frame
  std::deque<Waiting> frames_;
  Bearing lastBearing_;  ///< of the last frame that was decided
  bool lastLost_ = false;
  SourceWindow::Reading reading_;
  std::int64_t reach_;
  SourceWindow window_;
  Track track_;
  Relocation relocation_;
};

}  // namespace

Departure departureOf(const Beginning& beginning) {
  return {.placement = beginning.placement,
          .before = {.matches = {}, .lines = beginning.lines, .evidence = {}, .failure = std::nullopt},
          .bearing = {.course = {beginning.lines.front(), beginning.exponent}},
          .state = std::nullopt};
}

Followed followed(const FrameRow& source, const SampledRow& dest, Departure departure, Following following,
                  const FollowHooks& hooks) {
  if (departure.before.failure) return std::move(departure.before);
  return Walk(source, dest, std::move(departure), following, hooks).all();
}

}  // namespace scan

#pragma once

#include <chrono>
#include <cstdint>

namespace player {

/// A playhead that moves by a clock. Positions are microseconds of movie time, held within 0 and the movie's duration;
/// every `now` is given by the caller, so nothing here looks at a real clock. A plain value.
class PlaybackClock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  PlaybackClock() = default;
  /// Stands still at 0. `duration` in microseconds.
  explicit PlaybackClock(std::int64_t duration) : duration_(duration) {}

  std::int64_t duration() const { return duration_; }
  double rate() const { return rate_; }
  bool isMoving() const { return rate_ != 0; }

  void setPosition(std::int64_t position, TimePoint now);
  /// The position stays where it is. Rates beyond +-8 count as +-8, one that is no number as 0.
  void setRate(double rate, TimePoint now);

  std::int64_t position(TimePoint now) const;
  /// Whether it moves and cannot move on.
  bool isAtEnd(TimePoint now) const;
  /// When it comes, or came, to a position at its present rate; the latest time there is while it stands still or moves
  /// away from there.
  TimePoint whenAt(std::int64_t position) const;

 private:
  std::int64_t duration_ = 0;
  double rate_ = 0;
  std::int64_t anchor_ = 0;  ///< the position at `since_`
  TimePoint since_;
};

}  // namespace player

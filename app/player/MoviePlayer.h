#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "app/player/PicturePlan.h"
#include "app/player/RenderedFrames.h"
#include "movie/Movie.h"

namespace player {

class PictureWorker;

/// How playing went since the rate was last changed from 0.
struct PlayingStatistics {
  std::uint64_t due = 0;     ///< frames whose time came
  std::uint64_t shown = 0;   ///< of these, handed out
  std::uint64_t inTime = 0;  ///< of those, no later than one frame after they were due
};

/// Plays one movie without sound: a playhead with a clock, and a thread that decodes and renders what the playhead
/// needs, ahead of it in the direction of play. Every member is called on one thread, the owner's; none waits for a
/// picture.
class MoviePlayer {
 public:
  using Clock = std::chrono::steady_clock;
  struct Environment {
    /// A frame came that is wanted at once: for a playhead that stands there, or after it was due. Called on the
    /// player's thread; short, and must not call back. Frames that come ahead of time are not announced: see
    /// nextChange().
    std::function<void()> frameArrived = [] {};
    std::function<Clock::time_point()> now = Clock::now;  ///< called on both threads
    /// Times the work on a frame, which decides how many are left out; called on the player's thread.
    std::function<Clock::time_point()> workTime = Clock::now;
  };

  explicit MoviePlayer(Environment environment);
  ~MoviePlayer();  ///< waits for the sample in work
  MoviePlayer(const MoviePlayer&) = delete;
  MoviePlayer& operator=(const MoviePlayer&) = delete;

  /// Takes a copy of a movie of its own, stopped at its current time; null for none. No frame of the movie before is
  /// given from then on. Throws std::system_error when the system gives no thread.
  void setMovie(std::unique_ptr<movie::Movie> movie);
  /// Of the pictures, in device pixels, as shown (turned): exactly this size, whatever the movie's shape; until it is
  /// told, or 0 x 0, that of the movie's clean aperture. The ones held already stay until new ones are there.
  void setPictureSize(int width, int height);

  /// Moves the playhead. While still, the frame on screen at that time is decoded; of several moves in a row those that
  /// are overtaken are dropped, the last is always shown. While playing, play goes on from there.
  void setTime(const movie::MovieTime& time);
  /// The playhead now. While playing it moves by itself, in units of a microsecond, and stops at the beginning (0) or
  /// the end (the duration) of the movie, where the rate becomes 0. Stopping leaves it at the start of the frame that
  /// is on screen.
  movie::MovieTime time();
  /// 1 plays, 0 stops, -1 plays backwards; other rates up to +-8 work too. A movie without a duration does not play.
  void setRate(double rate);
  double rate();

  /// The frame to show now: the one on screen at the playhead, or while that is not ready the best one so far (the
  /// latest before it in the direction of play; while still, the one that came last). Null until a movie's first, and
  /// for a movie without pictures. Marks it as shown.
  std::shared_ptr<const ShownFrame> frame();
  /// When the next change is due by the clock, the end of playing included; Clock::time_point::max() while still.
  Clock::time_point nextChange();

  const PlayingStatistics& statistics() const { return statistics_; }

 private:
  Clock::time_point now() const { return environment_.now(); }
  std::optional<movie::FrameSpan> spanNow(std::int64_t position) const;
  void standAt(const movie::MovieTime& time);
  void stop(std::int64_t position);
  void stopAtEnd();
  std::int64_t expectedStep(std::int64_t moved);
  void send();
  void countDue(const movie::FrameSpan& here);
  void countShown(const ShownFrame& frame, Clock::time_point now);

  const Environment environment_;
  std::unique_ptr<movie::Movie> movie_;  ///< to look up spans; the worker has another copy
  Wish wish_;
  std::int64_t lastMove_ = 0;  ///< in microseconds
  PlayingStatistics statistics_;
  std::optional<movie::FrameSpan> counted_;  ///< the frame counted as due last
  std::optional<movie::MovieTime> shown_;    ///< the start of the one counted as shown last
  std::int64_t playedFrom_ = 0;              ///< the start of the frame that was on screen as play began
  std::unique_ptr<PictureWorker> worker_;    ///< last: its thread goes first
};

}  // namespace player

#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "app/player/PlaybackClock.h"
#include "app/player/RenderedFrames.h"
#include "movie/Movie.h"

namespace player {

/// What the owner of a player wants of its thread: the state that it has set.
struct Wish {
  std::shared_ptr<movie::Movie> movie;  ///< for the thread alone
  std::uint64_t epoch = 0;              ///< another number since a movie, a time or a rate was set
  std::uint64_t movieNumber = 0;        ///< another number since a movie was set
  PictureSize size;
  PlaybackClock clock;
  movie::MovieTime time;  ///< of the playhead while it stands still
  /// By how much it was moved last, in microseconds, where more moves of that kind are to be expected; else 0.
  std::int64_t step = 0;
};

/// A frame to make.
struct Target {
  movie::FrameSpan span;
  std::optional<movie::FrameSpan> next;  ///< the one likely to be made after it
  bool awaited = false;                  ///< the playhead stands there
};

/// Decides which frame to make next, from what is wanted and what is there. Used by the player's thread.
class PicturePlan {
 public:
  /// None when there is nothing to do until the wish or the frames change.
  std::optional<Target> next(const Wish& wish, const RenderedFrames& frames, PlaybackClock::TimePoint now);
  /// To be told of each frame that was made, and how long that took.
  void made(std::int64_t micros);

 private:
  std::optional<Target> nextWhileStill(const Wish& wish, const RenderedFrames& frames);
  std::optional<Target> nextForward(const Wish& wish, const RenderedFrames& frames, std::int64_t position);
  std::optional<Target> nextBackward(const Wish& wish, const RenderedFrames& frames, std::int64_t position);
  std::optional<movie::FrameSpan> candidate(const movie::Movie& movie, const RenderedFrames& frames) const;
  std::int64_t cost() const;
  void fillChunk(const Wish& wish, const movie::FrameSpan& upper, std::size_t room);
  std::optional<Target> fromChunk(const Wish& wish, const RenderedFrames& frames);
  void fellBehind(const movie::FrameSpan& here, double rate);
  void keptAhead(const movie::FrameSpan& here, double rate);

  std::uint64_t epoch_ = 0;
  std::optional<movie::FrameSpan> last_;  ///< forwards: the one decided on last
  std::deque<movie::FrameSpan> chunk_;    ///< backwards: decided on, in order of time
  std::optional<std::int64_t> lowest_;    ///< backwards: all frames down to here were decided on
  std::array<std::int64_t, 3> costs_{};   ///< of the last frames
  int stride_ = 1;                        ///< every so many frames is made
  int calm_ = 0;                          ///< so many times in a row there was nothing to do
  int falls_ = 0;                         ///< so often it fell behind since then
  int patience_ = 4;                      ///< so much calm is asked for before more frames are tried
};

}  // namespace player

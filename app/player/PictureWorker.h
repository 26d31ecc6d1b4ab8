#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "app/player/PicturePlan.h"
#include "app/player/RenderedFrames.h"

namespace player {

/// The thread that makes a player's frames, and the mailbox it works from. Every public member is called on the owner's
/// thread; none waits for a picture but the destructor, which waits for the sample in work.
class PictureWorker {
 public:
  using TimePoint = PlaybackClock::TimePoint;

  /// Both are called on the thread too.
  PictureWorker(std::function<void()> frameArrived, std::function<TimePoint()> now,
                std::function<TimePoint()> workTime);
  ~PictureWorker();
  PictureWorker(const PictureWorker&) = delete;
  PictureWorker& operator=(const PictureWorker&) = delete;

  /// Replaces what is wanted. Another movie number empties the frames: none of the movie before is given from then on.
  void setWish(const Wish& wish);

  /// The frame that starts at `start`, else the best one so far: while moving the latest to have come on screen, while
  /// still the one that arrived or was given last. Null before a movie's first. Lets go of frames that are over.
  std::shared_ptr<const ShownFrame> frame(std::int64_t start, std::int64_t position);

 private:
  void run();
  bool make(const Wish& wish, const Target& target);
  bool isGivenUp(const Wish& wish, const Target& target);
  void deliver(const Wish& wish, const Target& target, std::shared_ptr<const ShownFrame> frame);

  const std::function<void()> frameArrived_;
  const std::function<TimePoint()> now_, workTime_;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool dirty_ = false;                        ///< something to think about since the thread last looked
  Wish wish_;                                 // the rest up to the next note is guarded by mutex_
  RenderedFrames frames_;                     ///< of wish_'s movie
  std::shared_ptr<const ShownFrame> newest_;  ///< the one that arrived for the playhead or was given last

  std::atomic<bool> stop_ = false;
  std::atomic<std::uint64_t> epoch_ = 0;  ///< wish_'s

  PicturePlan plan_;  // the thread's own
  std::chrono::steady_clock::time_point lastArrival_;

  std::thread thread_;  // last: it uses all of the above
};

}  // namespace player

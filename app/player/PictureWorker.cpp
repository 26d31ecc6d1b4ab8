#include "app/player/PictureWorker.h"

#include <exception>
#include <utility>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"

namespace player {
namespace {

using RealClock = std::chrono::steady_clock;

/// So long no picture may come while the playhead is dragged about; then one is finished although it is overtaken.
constexpr auto longestBlindness = std::chrono::milliseconds(250);

std::shared_ptr<const ShownFrame> madeFrame(movie::Movie& movie, const Target& target,
                                            const movie::PlayedFrameRequest& request) {
  auto made = std::make_shared<ShownFrame>();
  made->time = target.span.start;
  made->sample = target.span.sample.index;
  try {
    auto image = movie.playedFrame(target.span, request);
    if (!image) {
      made->error = std::move(image.error());
    } else if (!*image) {
      return nullptr;
    } else {
      made->image = std::move(**image);
    }
  } catch (const std::exception& failure) {
    made->error = movie::MovieError{{}, {}, 0, movie::verbatim(failure.what())};
  }
  return made;
}

}  // namespace

PictureWorker::PictureWorker(std::function<void()> frameArrived, std::function<TimePoint()> now,
                             std::function<TimePoint()> workTime)
    : frameArrived_(std::move(frameArrived)),
      now_(std::move(now)),
      workTime_(std::move(workTime)),
      thread_([this] { run(); }) {}

PictureWorker::~PictureWorker() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void PictureWorker::setWish(const Wish& wish) {
  std::shared_ptr<movie::Movie> old;  // goes after the lock
  {
    const std::lock_guard lock(mutex_);
    if (wish.movieNumber != wish_.movieNumber) {
      frames_.clear();
      newest_.reset();
    }
    old = std::exchange(wish_, wish).movie;
    epoch_ = wish.epoch;
    dirty_ = true;
  }
  changed_.notify_one();
}

std::shared_ptr<const ShownFrame> PictureWorker::frame(std::int64_t start, std::int64_t position) {
  std::shared_ptr<const ShownFrame> found;
  bool roomMade = false;
  {
    const std::lock_guard lock(mutex_);
    const double rate = wish_.clock.rate();
    found = frames_.at(start);
    if (!found && rate != 0) found = frames_.latestBy(position, rate > 0);
    if (!found) found = newest_;
    newest_ = found;
    roomMade = frames_.trim(position, rate);
    dirty_ = dirty_ || roomMade;
  }
  if (roomMade) changed_.notify_one();
  return found;
}

void PictureWorker::run() {
  const crash::ThreadCrashStack crashStack;
  Wish wish;
  RenderedFrames frames;
  for (;;) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return stop_ || dirty_; });
      if (stop_) return;
      dirty_ = false;
    }
    for (bool busy = true; busy && !stop_;) {
      std::shared_ptr<movie::Movie> old = std::move(wish.movie);  // goes after the lock
      {
        const std::lock_guard lock(mutex_);
        wish = wish_;
        frames = frames_;
      }
      old.reset();
      const auto began = workTime_();
      const auto target = plan_.next(wish, frames, now_());
      frames.clear();
      busy = target.has_value();
      if (!busy || !make(wish, *target)) continue;
      plan_.made(std::chrono::duration_cast<std::chrono::microseconds>(workTime_() - began).count());
    }
  }
}

/// False when it was given up.
bool PictureWorker::make(const Wish& wish, const Target& target) {
  const movie::PlayedFrameRequest request{
      .width = wish.size.width, .height = wish.size.height, .next = target.next, .givenUp = [&] {
        return isGivenUp(wish, target);
      }};
  auto frame = madeFrame(*wish.movie, target, request);
  if (!frame) return false;
  deliver(wish, target, std::move(frame));
  return true;
}

/// Asked while a frame is in work, between two samples.
bool PictureWorker::isGivenUp(const Wish& wish, const Target& target) {
  if (stop_) return true;
  if (epoch_ == wish.epoch) return false;
  Wish newer;
  {
    const std::lock_guard lock(mutex_);
    newer = wish_;
  }
  if (newer.movieNumber != wish.movieNumber || newer.clock.isMoving() || wish.clock.isMoving()) return true;
  const auto wanted = newer.movie->frameSpanAt(newer.time);
  if (wanted && wanted->startMicros == target.span.startMicros) return false;
  return !target.awaited || RealClock::now() - lastArrival_ < longestBlindness;
}

void PictureWorker::deliver(const Wish& wish, const Target& target, std::shared_ptr<const ShownFrame> frame) {
  bool wanted = false;
  {
    const std::lock_guard lock(mutex_);
    if (wish_.movieNumber != wish.movieNumber) return;
    const PlaybackClock& clock = wish_.clock;
    const std::int64_t position = clock.position(now_());
    const bool due = clock.rate() > 0 ? target.span.startMicros <= position : target.span.endMicros >= position;
    wanted = clock.isMoving() ? due : target.awaited;
    if (target.awaited) newest_ = frame;
    frames_.put(target.span, wish.size, std::move(frame));
    frames_.trim(position, clock.rate());
  }
  lastArrival_ = RealClock::now();
  if (wanted) frameArrived_();
}

}  // namespace player

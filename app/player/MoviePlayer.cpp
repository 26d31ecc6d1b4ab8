#include "app/player/MoviePlayer.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

#include "app/player/PictureWorker.h"

namespace player {
namespace {

constexpr std::int32_t micro = 1000000;

std::int64_t microsOf(const movie::MovieTime& time) {
  if (time.scale <= 0 || time.value <= 0) return 0;
  __extension__ using Wide = __int128;
  const Wide micros = Wide{time.value} * micro / time.scale;
  return static_cast<std::int64_t>(std::min<Wide>(micros, std::numeric_limits<std::int64_t>::max()));
}

movie::MovieTime timeAt(std::int64_t micros) {
  return {.value = micros, .scale = micro};
}

/// The first position backwards at which the frame before is on screen: a time one microsecond before a frame's start
/// still counts as that frame's.
std::int64_t endBackwards(const movie::FrameSpan& span) {
  return span.startMicros - 2;
}

}  // namespace

MoviePlayer::MoviePlayer(Environment environment) : environment_(std::move(environment)) {}

MoviePlayer::~MoviePlayer() = default;

void MoviePlayer::setMovie(std::unique_ptr<movie::Movie> movie) {
  if (!worker_ && movie)
    worker_ = std::make_unique<PictureWorker>(environment_.frameArrived, environment_.now, environment_.workTime);
  movie_ = std::move(movie);
  wish_.movie = movie_ ? std::shared_ptr<movie::Movie>(movie_->copy()) : nullptr;
  wish_.clock = PlaybackClock(movie_ ? microsOf(movie_->duration()) : 0);
  ++wish_.movieNumber;
  counted_.reset();
  shown_.reset();
  lastMove_ = wish_.step = 0;
  standAt(movie_ ? movie_->currentTime() : movie::MovieTime{});
  send();
}

void MoviePlayer::send() {
  ++wish_.epoch;
  if (worker_) worker_->setWish(wish_);
}

void MoviePlayer::setPictureSize(int width, int height) {
  const PictureSize size = width > 0 && height > 0 ? PictureSize{width, height} : PictureSize{};
  if (size == wish_.size) return;
  wish_.size = size;
  // What is in work for a moving playhead goes on; the next ones have the new size.
  if (worker_) worker_->setWish(wish_);
}

std::optional<movie::FrameSpan> MoviePlayer::spanNow(std::int64_t position) const {
  if (!movie_) return std::nullopt;
  return movie_->frameSpanAt(wish_.clock.isMoving() ? timeAt(position) : wish_.time);
}

/// Puts the playhead at a time. The clock begins inside of the frame that is on screen there, though the time may be
/// one written a little before that frame's start.
void MoviePlayer::standAt(const movie::MovieTime& time) {
  wish_.time = time;
  std::int64_t position = microsOf(time);
  const auto span = movie_ ? movie_->frameSpanAt(time) : std::nullopt;
  if (span) position = std::max(position, span->startMicros);
  wish_.clock.setPosition(position, now());
}

/// What a move lets expect: more of its kind after a move forward, and after two moves backward.
std::int64_t MoviePlayer::expectedStep(std::int64_t moved) {
  constexpr std::int64_t longest = 500000;
  const bool small = moved != 0 && std::abs(moved) <= longest;
  const bool row = small && (moved > 0) == (lastMove_ > 0) && lastMove_ != 0;
  lastMove_ = small ? moved : 0;
  return small && (moved > 0 || row) ? moved : 0;
}

void MoviePlayer::setTime(const movie::MovieTime& time) {
  if (!movie_) return;
  const Clock::time_point at = now();
  const std::int64_t before = wish_.clock.position(at);
  standAt(time);
  wish_.step = wish_.clock.isMoving() ? 0 : expectedStep(wish_.clock.position(at) - before);
  counted_.reset();
  send();
}

movie::MovieTime MoviePlayer::time() {
  stopAtEnd();
  return wish_.clock.isMoving() ? timeAt(wish_.clock.position(now())) : wish_.time;
}

void MoviePlayer::stopAtEnd() {
  if (!wish_.clock.isAtEnd(now())) return;
  const bool forward = wish_.clock.rate() > 0;
  if (const auto span = spanNow(wish_.clock.position(now()))) countDue(*span);
  wish_.clock.setRate(0, now());
  movie::MovieTime end{.value = 0, .scale = movie_->timeScale()};
  if (forward) end = movie_->duration();
  wish_.time = end;
  wish_.step = 0;
  send();
}

void MoviePlayer::stop(std::int64_t position) {
  const auto span = spanNow(position);
  if (span) countDue(*span);
  wish_.clock.setRate(0, now());
  standAt(span ? span->start : timeAt(position));
  send();
}

void MoviePlayer::setRate(double rate) {
  stopAtEnd();
  if (!movie_ || wish_.clock.duration() == 0) return;
  PlaybackClock changed = wish_.clock;
  changed.setRate(rate, now());
  if (changed.rate() == wish_.clock.rate()) return;
  if (!changed.isMoving()) return stop(wish_.clock.position(now()));
  if (!wish_.clock.isMoving()) {
    statistics_ = {};
    counted_ = spanNow(0);
    shown_ = counted_ ? std::optional(counted_->start) : std::nullopt;
    playedFrom_ = counted_ ? counted_->startMicros : 0;
    lastMove_ = wish_.step = 0;
  }
  wish_.clock = changed;
  send();
}

double MoviePlayer::rate() {
  stopAtEnd();
  return wish_.clock.rate();
}

std::shared_ptr<const ShownFrame> MoviePlayer::frame() {
  stopAtEnd();
  const Clock::time_point at = now();
  const std::int64_t position = wish_.clock.position(at);
  const auto here = spanNow(position);
  if (!here || !worker_) return nullptr;
  if (wish_.clock.isMoving()) countDue(*here);
  auto found = worker_->frame(here->startMicros, position);
  if (found) countShown(*found, at);
  return found;
}

/// Counts the frames that became due since it was last asked.
void MoviePlayer::countDue(const movie::FrameSpan& here) {
  const bool forward = wish_.clock.rate() > 0;
  while (counted_ && counted_->startMicros != here.startMicros) {
    const bool behind = counted_->startMicros < here.startMicros;
    if (behind != forward) break;
    auto next = forward ? movie_->frameSpanAfter(counted_->start) : movie_->frameSpanBefore(counted_->start);
    if (!next) break;
    counted_ = next;
    ++statistics_.due;
  }
  counted_ = here;
}

void MoviePlayer::countShown(const ShownFrame& frame, Clock::time_point now) {
  const bool isNew = shown_ != frame.time;
  shown_ = frame.time;
  if (!isNew || !wish_.clock.isMoving()) return;
  const auto span = movie_->frameSpanAt(frame.time);
  const bool forward = wish_.clock.rate() > 0;
  if (!span || !counted_) return;
  // What stood there before play began was never due, and neither was what has its turn later.
  const auto [first, last] = std::minmax(playedFrom_, counted_->startMicros);
  if (span->startMicros == playedFrom_ || span->startMicros < first || span->startMicros > last) return;
  ++statistics_.shown;
  // One frame after it was due is when the next one is due.
  const std::int64_t length = span->endMicros - span->startMicros;
  const std::int64_t limit = forward ? span->endMicros : endBackwards(*span);
  if (now <= wish_.clock.whenAt(limit) && length > 0) ++statistics_.inTime;
}

MoviePlayer::Clock::time_point MoviePlayer::nextChange() {
  stopAtEnd();
  if (!wish_.clock.isMoving()) return Clock::time_point::max();
  const bool forward = wish_.clock.rate() > 0;
  const std::int64_t end = forward ? wish_.clock.duration() : 0;
  const auto here = spanNow(wish_.clock.position(now()));
  if (!here || (forward && here->last)) return wish_.clock.whenAt(end);
  const std::int64_t change = forward ? here->endMicros : endBackwards(*here);
  return wish_.clock.whenAt(std::clamp<std::int64_t>(change, 0, wish_.clock.duration()));
}

}  // namespace player

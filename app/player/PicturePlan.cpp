#include "app/player/PicturePlan.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace player {
namespace {

constexpr int predictedSteps = 3;
constexpr int largestStride = 16;
constexpr std::size_t longestWalk =
    2000;  // frames of one stretch that has to be decoded forwards to be played backwards

movie::MovieTime timeFromStart(std::int64_t micros) {
  return {.value = std::max<std::int64_t>(micros, 0), .scale = 1000000};
}

/// How many frames of the size in use may be held.
std::size_t framesHeld(const RenderedFrames& frames) {
  const std::size_t count = frames.all().size();
  const std::size_t each = count == 0 ? 0 : std::max<std::size_t>(frames.bytes() / count, 1);
  constexpr std::size_t fewest = RenderedFrames::fewestFrames / 2, most = RenderedFrames::mostFrames / 2;
  return each == 0 ? fewest : std::clamp(RenderedFrames::mostBytes / each, fewest, most);
}

}  // namespace

void PicturePlan::made(std::int64_t micros) {
  std::rotate(costs_.begin(), costs_.begin() + 1, costs_.end());
  costs_.back() = micros;
}

/// What a frame costs, in microseconds: of the last three, the one in the middle. One that needed a new start does not
/// count for those after it.
std::int64_t PicturePlan::cost() const {
  auto sorted = costs_;
  std::sort(sorted.begin(), sorted.end());
  return sorted[1];
}

std::optional<Target> PicturePlan::next(const Wish& wish, const RenderedFrames& frames, PlaybackClock::TimePoint now) {
  if (!wish.movie) return std::nullopt;
  if (epoch_ != wish.epoch) {
    epoch_ = wish.epoch;
    last_.reset();
    lowest_.reset();
    chunk_.clear();
    stride_ = 1;
    calm_ = falls_ = 0;
    patience_ = 4;
  }
  if (!wish.clock.isMoving()) return nextWhileStill(wish, frames);
  const std::int64_t position = wish.clock.position(now);
  return wish.clock.rate() > 0 ? nextForward(wish, frames, position) : nextBackward(wish, frames, position);
}

std::optional<Target> PicturePlan::nextWhileStill(const Wish& wish, const RenderedFrames& frames) {
  const auto here = wish.movie->frameSpanAt(wish.time);
  if (!here) return std::nullopt;
  if (!frames.holds(here->startMicros, wish.size)) return Target{.span = *here, .next = {}, .awaited = true};
  if (wish.step == 0) return std::nullopt;
  if (const auto inWork = fromChunk(wish, frames)) return inWork;
  for (int i = 1; i <= predictedSteps; ++i) {
    const std::int64_t there = here->startMicros + i * wish.step;
    if (there < 0 || there > wish.clock.duration()) break;
    const auto span = wish.movie->frameSpanAt(timeFromStart(there));
    if (!span || frames.holds(span->startMicros, wish.size)) continue;
    if (wish.step > 0) return Target{.span = *span, .next = {}};
    fillChunk(wish, *span, framesHeld(frames) / 2);
    return fromChunk(wish, frames);
  }
  return std::nullopt;
}

/// The frame to make after the last one: `stride_` frames on, not there yet.
std::optional<movie::FrameSpan> PicturePlan::candidate(const movie::Movie& movie, const RenderedFrames& frames) const {
  auto span = last_;
  for (int i = 0; i < stride_ && span; ++i) span = movie.frameSpanAfter(span->start);
  while (span && frames.holds(span->startMicros)) span = movie.frameSpanAfter(span->start);
  return span;
}

std::optional<Target> PicturePlan::nextForward(const Wish& wish, const RenderedFrames& frames, std::int64_t position) {
  const movie::Movie& movie = *wish.movie;
  const auto here = movie.frameSpanAt(timeFromStart(position));
  if (!here) return std::nullopt;
  constexpr std::size_t most = 8;
  const std::size_t ahead = last_ ? frames.countBetween(position, last_->startMicros) : 0;
  if (ahead >= std::min(framesHeld(frames) / 2, most)) {
    keptAhead(*here, wish.clock.rate());
    return std::nullopt;
  }
  auto span = last_ ? candidate(movie, frames) : here;
  if (!last_ && frames.holds(here->startMicros)) {
    last_ = here;
    span = candidate(movie, frames);
  }
  if (!span) return std::nullopt;
  const auto lead = static_cast<std::int64_t>(static_cast<double>(cost()) * wish.clock.rate());
  const bool slow = lead > here->endMicros - here->startMicros;
  if (last_ && span->endMicros <= position + (slow ? lead : 0) && !span->last) {
    // It is over, or would be when it is made: go on with the one that will be on screen then.
    const std::int64_t done = std::min(position + lead, wish.clock.duration());
    fellBehind(*here, wish.clock.rate());
    span = movie.frameSpanAt(timeFromStart(done));
    if (!span) return std::nullopt;
  }
  last_ = span;
  return Target{.span = *span, .next = candidate(movie, frames)};
}

std::optional<Target> PicturePlan::nextBackward(const Wish& wish, const RenderedFrames& frames, std::int64_t position) {
  const movie::Movie& movie = *wish.movie;
  const auto here = movie.frameSpanAt(timeFromStart(position));
  if (!here) return std::nullopt;
  const bool inWork = !chunk_.empty();
  while (!chunk_.empty() && chunk_.back().startMicros > position) chunk_.pop_back();
  if (const auto target = fromChunk(wish, frames)) return target;
  const std::size_t room = framesHeld(frames) / 2;
  if ((lowest_ && *lowest_ > here->startMicros) || (!lowest_ && inWork)) fellBehind(*here, wish.clock.rate());
  // A stretch of which every frame is held already leads on to the one before it.
  for (;;) {
    if (lowest_ && frames.countBetween(*lowest_ - 1, position) > room) {
      keptAhead(*here, wish.clock.rate());
      return std::nullopt;
    }
    auto upper = here;
    if (lowest_ && *lowest_ <= here->startMicros) {
      upper = movie.frameSpanBefore(timeFromStart(*lowest_));
      for (int i = 1; i < stride_ && upper; ++i) upper = movie.frameSpanBefore(upper->start);
    }
    if (!upper || (lowest_ && *lowest_ <= here->startMicros && upper->startMicros >= *lowest_)) return std::nullopt;
    fillChunk(wish, *upper, room);
    if (const auto target = fromChunk(wish, frames)) return target;
  }
}

/// The frames down to where decoding must begin to show `upper`; no more than there is room for, evenly chosen.
void PicturePlan::fillChunk(const Wish& wish, const movie::FrameSpan& upper, std::size_t room) {
  const std::int64_t start = wish.movie->frameSpanAt(wish.movie->decodingStartOf(upper))->startMicros;
  std::vector<movie::FrameSpan> spans{upper};
  while (spans.back().startMicros > start && spans.size() < longestWalk) {
    const auto before = wish.movie->frameSpanBefore(spans.back().start);
    if (!before) break;
    spans.push_back(*before);
  }
  lowest_ = spans.back().startMicros;
  const std::size_t fit = (spans.size() + std::max<std::size_t>(room, 1) - 1) / std::max<std::size_t>(room, 1);
  const std::size_t every = std::max(fit, static_cast<std::size_t>(stride_));
  chunk_.clear();
  for (std::size_t i = 0; i < spans.size(); i += every) chunk_.push_front(spans[i]);
}

std::optional<Target> PicturePlan::fromChunk(const Wish& wish, const RenderedFrames& frames) {
  while (!chunk_.empty()) {
    Target target{.span = chunk_.front(), .next = {}};
    chunk_.pop_front();
    if (frames.holds(target.span.startMicros, wish.size)) continue;
    if (!chunk_.empty()) target.next = chunk_.front();
    return target;
  }
  return std::nullopt;
}

/// Where it happens again and again, so many frames are left out that the rest can be made in time; a hitch changes
/// nothing. Each time that trying more frames failed, the next try comes later.
void PicturePlan::fellBehind(const movie::FrameSpan& here, double rate) {
  constexpr int often = 4, longestPatience = 400;
  calm_ = 0;
  if (++falls_ < often) return;
  falls_ = 0;
  const auto length = static_cast<double>(std::max<std::int64_t>(here.endMicros - here.startMicros, 1));
  const double needed = std::ceil(static_cast<double>(cost()) * std::abs(rate) / length);
  const int stride = static_cast<int>(std::min(needed, static_cast<double>(largestStride)));
  if (stride <= stride_) return;
  stride_ = stride;
  patience_ = std::min(2 * patience_, longestPatience);
}

/// After a while without haste more frames are tried again: soon where they look affordable, else when patience ends.
void PicturePlan::keptAhead(const movie::FrameSpan& here, double rate) {
  falls_ = 0;
  if (stride_ == 1) return;
  constexpr int shortCalm = 3;
  const auto length = static_cast<double>(here.endMicros - here.startMicros);
  const bool affordable = static_cast<double>(cost()) * std::abs(rate) < 0.9 * length * (stride_ - 1);
  if (++calm_ < (affordable ? shortCalm : patience_)) return;
  calm_ = 0;
  --stride_;
}

}  // namespace player

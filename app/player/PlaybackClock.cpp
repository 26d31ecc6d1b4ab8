#include "app/player/PlaybackClock.h"

#include <algorithm>
#include <cmath>

namespace player {
namespace {

constexpr double highestRate = 8;
constexpr double nanosPerMicro = 1000;

}  // namespace

void PlaybackClock::setPosition(std::int64_t position, TimePoint now) {
  anchor_ = std::clamp<std::int64_t>(position, 0, duration_);
  since_ = now;
}

void PlaybackClock::setRate(double rate, TimePoint now) {
  setPosition(position(now), now);
  rate_ = std::isnan(rate) ? 0 : std::clamp(rate, -highestRate, highestRate);
}

std::int64_t PlaybackClock::position(TimePoint now) const {
  if (!isMoving() || now <= since_) return anchor_;
  const auto passed = std::chrono::duration_cast<std::chrono::nanoseconds>(now - since_).count();
  const double moved = std::abs(rate_) * static_cast<double>(passed) / nanosPerMicro;
  const std::int64_t room = rate_ > 0 ? duration_ - anchor_ : anchor_;
  if (moved >= static_cast<double>(room)) return rate_ > 0 ? duration_ : 0;
  const auto whole = static_cast<std::int64_t>(moved);
  return rate_ > 0 ? anchor_ + whole : anchor_ - whole;
}

bool PlaybackClock::isAtEnd(TimePoint now) const {
  return isMoving() && position(now) == (rate_ > 0 ? duration_ : 0);
}

PlaybackClock::TimePoint PlaybackClock::whenAt(std::int64_t position) const {
  if (!isMoving()) return TimePoint::max();
  const double nanos = static_cast<double>(position - anchor_) / rate_ * nanosPerMicro;
  constexpr double aCentury = 3.2e18;
  if (nanos < 0 || nanos > aCentury) return TimePoint::max();
  // The rest of a nanosecond is waited for, so that the position is reached then.
  return since_ + std::chrono::nanoseconds(static_cast<std::int64_t>(std::ceil(nanos)) + 1);
}

}  // namespace player

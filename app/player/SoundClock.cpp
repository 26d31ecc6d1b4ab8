#include "app/player/SoundClock.h"

#include <algorithm>

namespace player {

std::int64_t SoundClock::heard(Time now, std::int64_t counted) {
  if (counted <= 0) return latest_;
  if (!begun_) begin_ = windowBegin_ = now;
  begun_ = true;
  using namespace std::chrono_literals;
  if (now - windowBegin_ >= 500ms) {
    lowestBefore_ = lowest_;
    if (now - windowBegin_ >= 1000ms) lowestBefore_ = unknown;
    lowest_ = unknown;
    windowBegin_ = now;
  }
  const std::chrono::duration<double> since = now - begin_;
  const double time = since.count() * rate_;
  lowest_ = std::min(lowest_, static_cast<double>(counted) - time);
  latest_ = std::max(latest_, static_cast<std::int64_t>(time + std::min(lowest_, lowestBefore_)));
  return latest_;
}

}  // namespace player

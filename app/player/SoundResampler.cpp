#include "app/player/SoundResampler.h"

#include <algorithm>
#include <utility>

namespace player {

SoundResampler::SoundResampler(int from, int to, Pull pull)
    : from_(std::max(from, 1)), to_(std::max(to, 1)), pull_(std::move(pull)) {}

std::int64_t SoundResampler::restart(std::int64_t frame) {
  buffer_.clear();
  const std::int64_t seconds = frame / to_ - (frame % to_ < 0 ? 1 : 0);
  const std::int64_t rest = (frame - seconds * to_) * from_;
  phase_ = rest % to_;
  return seconds * from_ + rest / to_;
}

void SoundResampler::read(std::span<float> stereo) {
  const auto count = static_cast<std::int64_t>(stereo.size() / 2);
  if (count == 0) return;
  const std::int64_t lastUsed = (phase_ + (count - 1) * from_) / to_ + 1;
  const std::int64_t firstOfNext = (phase_ + count * from_) / to_;
  const auto needed = static_cast<std::size_t>(2 * std::max(lastUsed + 1, firstOfNext));
  if (const std::size_t held = buffer_.size(); held < needed) {
    buffer_.resize(needed);
    pull_(std::span(buffer_).subspan(held));
  }
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const float* const at = buffer_.data() + 2 * (phase_ / to_);
    const float share = static_cast<float>(phase_ % to_) / static_cast<float>(to_);
    stereo[2 * i] = at[0] + (at[2] - at[0]) * share;
    stereo[2 * i + 1] = at[1] + (at[3] - at[1]) * share;
    phase_ += from_;
  }
  buffer_.erase(buffer_.begin(), buffer_.begin() + 2 * (phase_ / to_));
  phase_ %= to_;
}

}  // namespace player

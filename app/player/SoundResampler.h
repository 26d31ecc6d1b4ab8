#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace player {

/// Turns stereo frames of one rate into those of another, on straight lines between neighbours. Frame 0 stays where it
/// is; no error adds up, however long it runs.
class SoundResampler {
 public:
  using Pull = std::function<void(std::span<float> stereo)>;  ///< fills all of the next frames at the rate `from`

  /// Rates in frames a second, above 0.
  SoundResampler(int from, int to, Pull pull);

  /// Goes on from a frame at the rate `to`. Gives the frame at the rate `from` that is pulled first then.
  std::int64_t restart(std::int64_t frame);
  void read(std::span<float> stereo);

 private:
  std::int64_t from_, to_;
  Pull pull_;
  std::int64_t phase_ = 0;  ///< how far the next frame lies behind the first of the buffer, in 1/to_ frames
  std::vector<float> buffer_;
};

}  // namespace player

#pragma once

#include <chrono>
#include <cstdint>
#include <limits>

namespace player {

/// Evens out how far a device says that it has played. Devices take sound in blocks, of up to a tenth of a second, and
/// count a block as played once they took it, though it is only then that it begins to be heard. So what is heard at
/// the end of a block, just before the next one is counted, is what the count says; between two such instants time goes
/// on at the device's rate. A device that stalls is followed at once, one that catches up within a second.
class SoundClock {
 public:
  using Time = std::chrono::steady_clock::time_point;

  explicit SoundClock(int rate) : rate_(rate) {}  ///< frames a second

  /// How many frames have been heard, where the device counts `counted`. Never falls, and never goes beyond the count;
  /// the more often it is asked the better it is. `now` never falls.
  std::int64_t heard(Time now, std::int64_t counted);

 private:
  static constexpr double unknown = std::numeric_limits<double>::infinity();

  double rate_;
  Time begin_{}, windowBegin_{};
  bool begun_ = false;
  double lowest_ = unknown, lowestBefore_ = unknown;  ///< count less time, in frames, in this window and the last one
  std::int64_t latest_ = 0;
};

}  // namespace player

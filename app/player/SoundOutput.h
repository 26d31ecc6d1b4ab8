#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace player {

/// A device that plays sound, two floats a frame, left and right, full scale -1 to 1. Every member is called on the
/// thread that made it.
class SoundOutput {
 public:
  /// Fills all of the frames. The device calls it ahead of what is heard, on whatever thread it works.
  using Pull = std::function<void(std::span<float> stereo)>;

  virtual ~SoundOutput() = default;

  /// Begins to play at `rate` frames a second, 1 or more; what played before is stopped. False without a device: it
  /// stays silent and pulls nothing, and the next time may succeed. Never waits for the device.
  virtual bool open(int rate, Pull pull) = 0;
  /// Falls silent at once. Nothing is pulled after its return.
  virtual void stop() = 0;
  /// How many of the frames that were pulled since open() have been heard. None while nothing is open, and from when
  /// the device went away.
  virtual std::optional<std::int64_t> played() = 0;
  /// 0 silent to 1 as it is; kept over open() and stop().
  virtual void setVolume(double volume) = 0;
};

}  // namespace player

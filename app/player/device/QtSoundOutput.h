#pragma once

#include <memory>

#include "app/player/SoundOutput.h"

namespace player {

/// The system's own device for sound, through Qt Multimedia. Needs a Qt application and an event loop on the thread
/// that made it: that is where frames are pulled.
///
/// A device that takes no floating point gets 16 bits, and one that does not take the rate gets 48000 frames a second
/// or what it likes best. A machine without a device, and a device that goes away, leave silence; Qt's own remarks
/// about that stay off the terminal.
class QtSoundOutput final : public SoundOutput {
 public:
  QtSoundOutput();
  ~QtSoundOutput() override;
  QtSoundOutput(const QtSoundOutput&) = delete;
  QtSoundOutput& operator=(const QtSoundOutput&) = delete;

  bool open(int rate, Pull pull) override;
  void stop() override;
  std::optional<std::int64_t> played() override;
  void setVolume(double volume) override;

 private:
  class Opened;

  std::unique_ptr<Opened> opened_;
  double volume_ = 1;
};

}  // namespace player

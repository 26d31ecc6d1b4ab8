#pragma once

#include <vector>

#include "diagnosis/Finding.h"

namespace diagnosis {

/// Settings that are got wrong often enough for their numbers to be known.
enum class Setting {
  Gammas,       ///< a picture made for one display gamma was taken for another's
  SystemGamma,  ///< scene light was rendered for a display, or should have been
  DimSurround,  ///< a picture was rendered for dim surroundings, or should have been
  SetUp,        ///< black was lifted to NTSC's 7.5 %, or put back from there
  BlackAt16,    ///< black at code 16 was taken for black at 0, or the reverse
  FullAsVideo,  ///< levels from 0 to 255 were written where the file says 16 to 235
  VideoAsFull,  ///< levels from 16 to 235 were taken for 0 to 255
};

struct KnownSetting {
  Setting setting = Setting::Gammas;
  double lower = 0, higher = 0;  ///< of Gammas: which two
};

/// The settings that explain a cause's numbers: one, or two that explain them equally. None where nothing does, or
/// where so much does that it tells nothing.
std::vector<KnownSetting> settingsBehind(const Cause& cause);

}  // namespace diagnosis

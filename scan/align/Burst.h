#pragma once

#include <optional>
#include <vector>

#include "scan/align/Signature.h"
#include "scan/align/TimeLine.h"

namespace scan {

/// A frame that is compared, and when it comes on screen.
struct Moment {
  double time = 0;  ///< in seconds
  Signature signature;
};

/// Frames in a row. A burst is of the destination, a stretch of the source.
using Moments = std::vector<Moment>;

/// Where a burst lies in a stretch, at one rate.
struct BurstFit {
  double rate = 1;
  double destTime = 0;       ///< the burst's middle, in seconds
  double sourceTime = 0;     ///< what it fits best
  double low = 0, high = 0;  ///< what it fits nearly as well
  double cost = 0;           ///< the mean distance of its frames, each from the better of the two frames around it
  double framePeriod = 1;    ///< of the stretch, in seconds
  /// Whether it tells a place: it fits no further than some frames of the source.
  bool tells(double frames) const { return high - low <= frames * framePeriod; }
  static constexpr double framesOfAPlace = 4;
  bool isInformative() const { return tells(framesOfAPlace); }
  TimeLine line() const { return {rate, sourceTime - rate * destTime}; }
};

/// Every frame of a burst against every frame of a stretch.
class BurstCosts {
 public:
  BurstCosts(const Moments& burst, const Moments& stretch);

  /// None where less than half of the burst would lie in the stretch.
  std::optional<double> costOf(const TimeLine& line) const;
  /// The best place, in steps of half a frame; none where the stretch is too short.
  std::optional<BurstFit> fit(double rate) const;

 private:
  std::vector<double> burstTimes_, stretchTimes_;
  std::vector<float> distances_;  ///< of the first frame of the burst from all of the stretch, then of the next
};

/// The best of several rates; of nearly equal ones the first.
std::optional<BurstFit> bestFit(const Moments& burst, const Moments& stretch, const std::vector<double>& rates);

}  // namespace scan

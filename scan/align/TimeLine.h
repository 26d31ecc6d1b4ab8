#pragma once

#include <vector>

#include "scan/align/FrameRow.h"

namespace scan {

/// A straight line from the destination's time to the source's, both in seconds.
struct TimeLine {
  double rate = 1;    ///< source seconds per second of the destination: a PAL speed-up of 24 to 25 is 25/24
  double offset = 0;  ///< the source's time at the destination's beginning
  double at(double destTime) const { return rate * destTime + offset; }
  friend bool operator==(const TimeLine&, const TimeLine&) = default;
};

/// The rates that a movie is exported at as a rule: as fast as its source; frame for frame at its own rate; PAL
/// speed-up and its reverse; a thousandth faster or slower. The first one is 1, and none comes twice.
std::vector<double> usualRates(const RowShape& source, const RowShape& dest);

/// A rate that a measured one stands for: the nearest usual one within a ten-thousandth, else itself.
double settledRate(double measured, const std::vector<double>& usual);

/// What lengths and rates suggest, the likeliest first: both begin together, both end together, at the same speed or
/// frame for frame.
std::vector<TimeLine> suggestedLines(const RowShape& source, const RowShape& dest);

}  // namespace scan

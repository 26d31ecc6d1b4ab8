#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "scan/align/Burst.h"
#include "scan/align/FrameRow.h"

namespace scan {

/// Asked now and then; true ends the work early.
using Stop = std::function<bool()>;

/// Small pictures of a movie, some seconds apart, to look for others in: some two kilobytes each, at most 4,096 of
/// them.
class SourceIndex {
 public:
  /// Which frames are taken.
  enum class Density {
    SyncFrames,  ///< those that can be had alone, about two seconds apart
    Even,        ///< one every second, which may mean to decode all
    Dense        ///< five a second, for a few frames that move fast; fewer where that would be too many
  };
  /// What cannot be decoded is left out; empty where nothing can.
  static SourceIndex of(FrameRow& row, Density density, const Stop& stop);

  std::size_t size() const { return entries_.size(); }
  /// The longest time between two entries, in seconds.
  double widestGap() const;
  LumaPlane picture(std::size_t entry) const;

  struct Hit {
    std::size_t entry = 0;
    double sourceTime = 0, destTime = 0;  ///< of the entry, and of the frame that is nearest to it
    double cost = 0;                      ///< their distance
  };
  /// The entries that come nearest to a frame of a burst, the best first: at most so many, and no two within so many
  /// seconds. `part`: of the source, that the burst shows.
  std::vector<Hit> nearest(const Moments& burst, const diagnosis::Region& part, std::size_t most, double apart) const;

 private:
  struct Entry {
    double time = 0;
    std::vector<std::uint8_t> roots;  ///< of luma
  };
  std::vector<Entry> entries_;
};

}  // namespace scan

#pragma once

#include <cstddef>
#include <vector>

#include "diagnosis/Placement.h"
#include "diagnosis/Strata.h"
#include "scan/align/FrameRow.h"

namespace scan {

/// Colours of some frames of a whole movie and what they became, which the causes of its segments are read from.
/// However long the movie is, only so many frames are kept, evenly spread: where there are more, every other one goes.
class Evidence {
 public:
  /// Whether add() would keep a frame that comes next.
  bool wants(std::size_t destFrame) const { return destFrame % every_ == 0; }
  /// Frames come in ascending order. Two pictures, sample upon sample.
  void add(std::size_t destFrame, const diagnosis::AlignedPair& pair);
  /// The same in any order, whether it is wanted or not: for segments that are too short to have been met.
  void insert(std::size_t destFrame, const diagnosis::AlignedPair& pair);

  std::size_t countIn(const FrameRange& range) const;
  diagnosis::StrataBuilder in(const FrameRange& range) const;

  static constexpr std::size_t mostFrames = 160;

 private:
  struct Frame {
    std::size_t number = 0;
    diagnosis::StrataBuilder strata;
  };
  std::size_t every_ = 2;
  std::vector<Frame> frames_;  ///< ascending
};

}  // namespace scan

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "diagnosis/Placement.h"
#include "diagnosis/Strata.h"
#include "scan/align/FrameRow.h"

namespace scan {

/// Some numbers of many that come in ascending order, evenly spread: where there are more, every other one goes.
class Thinned {
 public:
  static constexpr std::size_t most = 160;

  /// Whether add() would keep it.
  bool wants(std::size_t number) const { return number % every_ == 0; }
  void add(std::size_t number);
  const std::vector<std::size_t>& numbers() const { return numbers_; }

 private:
  std::size_t every_ = 2;
  std::vector<std::size_t> numbers_;
};

/// Colours of some frames of a whole movie and what they became, which the causes of its segments are read from.
/// However long the movie is, only so many frames are kept.
class Evidence {
 public:
  Evidence() = default;
  /// Goes on where frames were added before; their pictures are to be inserted again.
  explicit Evidence(Thinned added) : added_(std::move(added)) {}

  /// Whether add() would keep a frame that comes next.
  bool wants(std::size_t destFrame) const { return added_.wants(destFrame); }
  /// Frames come in ascending order. Two pictures, sample upon sample.
  void add(std::size_t destFrame, const diagnosis::AlignedPair& pair);
  /// The same in any order, whether it is wanted or not: for segments that are too short to have been met.
  void insert(std::size_t destFrame, const diagnosis::AlignedPair& pair);

  std::size_t countIn(const FrameRange& range) const;
  diagnosis::StrataBuilder in(const FrameRange& range) const;

 private:
  struct Frame {
    std::size_t number = 0;
    diagnosis::StrataBuilder strata;
  };
  Thinned added_;
  std::vector<Frame> frames_;  ///< ascending
};

}  // namespace scan

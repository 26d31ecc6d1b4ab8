#include "scan/follow/Evidence.h"

#include <algorithm>

#include "diagnosis/Blocks.h"

namespace scan {
namespace {

/// Samples of a thumbnail are means over areas already: few of them make a block.
constexpr int blockSide = 2;

}  // namespace

void Thinned::add(std::size_t number) {
  numbers_.push_back(number);
  while (numbers_.size() > most) {
    every_ *= 2;
    std::erase_if(numbers_, [&](std::size_t each) { return !wants(each); });
  }
}

void Evidence::add(std::size_t destFrame, const diagnosis::AlignedPair& pair) {
  insert(destFrame, pair);
  added_.add(destFrame);
  std::erase_if(frames_, [&](const Frame& frame) { return !added_.wants(frame.number); });
}

void Evidence::insert(std::size_t destFrame, const diagnosis::AlignedPair& pair) {
  Frame frame{destFrame, {}};
  frame.strata.add(diagnosis::blocksOf(pair, blockSide));
  const auto place = std::upper_bound(frames_.begin(), frames_.end(), destFrame,
                                      [](std::size_t number, const Frame& each) { return number < each.number; });
  frames_.insert(place, std::move(frame));
}

std::size_t Evidence::countIn(const FrameRange& range) const {
  return static_cast<std::size_t>(std::count_if(frames_.begin(), frames_.end(), [&](const Frame& frame) {
    return frame.number >= range.first && frame.number < range.end;
  }));
}

diagnosis::StrataBuilder Evidence::in(const FrameRange& range) const {
  diagnosis::StrataBuilder all;
  for (const Frame& frame : frames_) {
    if (frame.number >= range.first && frame.number < range.end) all.add(frame.strata);
  }
  return all;
}

}  // namespace scan

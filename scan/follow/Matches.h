#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace scan {

/// What is kept of a frame of the destination: some thirty bytes.
struct FrameMatch {
  std::int32_t source = -1;  ///< the frame of the source that it shows; -1 for none
  std::uint16_t line = 0;    ///< the time line that it was found by
  bool identical = false;    ///< the very samples of that frame
  bool blended = false;      ///< a mixture of that frame and a neighbour
  bool flat = false;         ///< nothing in it to go by: black, or of one colour
  float distance = 0;        ///< as farness() has it
  /// As FrameExponent's; no number where there is none.
  float logExponent = std::numeric_limits<float>::quiet_NaN();
  float spread = 0, weight = 0, level = 0;

  bool isMatched() const { return source >= 0; }
  bool isMeasured() const { return isMatched() && !std::isnan(logExponent); }
};

/// Of consecutive frames of the destination, from the first one that was looked at; or of every so many-th.
struct Matches {
  std::size_t first = 0;
  std::vector<FrameMatch> frames;
  std::size_t every = 1;
  std::size_t end() const { return first + frames.size() * every; }
  /// The frame of the destination that a match is of, and the match of the last frame up to one that was looked at.
  std::size_t frameOf(std::size_t place) const { return first + place * every; }
  const FrameMatch& at(std::size_t frame) const { return frames[(frame - first) / every]; }
};

}  // namespace scan

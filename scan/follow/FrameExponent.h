#pragma once

#include <optional>

#include "diagnosis/Signal.h"

namespace scan {

/// By how much one frame is darker or lighter than the one that it shows: destination = source ^ exponent, of luma from
/// 0 to 1.
struct FrameExponent {
  double logExponent = 0;  ///< natural; above 0 the destination is darker
  double spread = 0;       ///< of the samples' own, about half of which lie within it
  double weight = 0;       ///< how many samples speak for it, counted by how much each tells
  double level = 0;        ///< of the source: the mean of ln(-ln luma), which fades change fast
};

/// The weighted median over samples of ln(-ln d) - ln(-ln s), d being s ^ exponent where that is all that happened. A
/// sample counts by how much an exponent moves it, -s ln s, and less with colour, which an exponent of R', G' and B'
/// moves otherwise; not beside edges, nor near black and white. None where fewer than thirty are left. Two signals of
/// one size, of which luma and the chroma signals are looked at.
std::optional<FrameExponent> exponentOf(const diagnosis::Signal& source, const diagnosis::Signal& dest);

}  // namespace scan

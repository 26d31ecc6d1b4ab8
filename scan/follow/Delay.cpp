#include "scan/follow/Delay.h"

#include <algorithm>

namespace scan {

Delay delayFor(const FrameRow& source, const SampledRow& dest, const TimeLine& line) {
  constexpr double fewest = 18;
  // Of the source only what may be shown is read.
  constexpr std::size_t readEach = 2 * static_cast<std::size_t>(shortReach) + 1;
  if (dest.every() > 1) return {static_cast<std::size_t>(fewest), std::size_t{2} * 18 * readEach + keptBesides};
  const double each = std::max(1.0, line.rate * source.shape().rate() / std::max(1e-3, dest.shape().rate()));
  const double settled = std::max(fewest, static_cast<double>(Track::usuallySettled) / each);
  constexpr double most = 600;
  return {static_cast<std::size_t>(settled),
          static_cast<std::size_t>(std::min(most, 2 * settled * each)) + keptBesides};
}

}  // namespace scan

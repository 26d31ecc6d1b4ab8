#include "scan/align/FrameRow.h"

#include <algorithm>
#include <cmath>

namespace scan {

std::size_t frameAt(const FrameRow& row, double time) {
  constexpr double rounding = 1e-5;
  std::size_t low = 0, high = row.shape().frames;
  while (high - low > 1) {
    const std::size_t middle = low + (high - low) / 2;
    (row.timeOf(middle) <= time + rounding ? low : high) = middle;
  }
  return low;
}

std::int64_t nearestFrame(const FrameRow& row, double time) {
  const RowShape shape = row.shape();
  const double first = row.timeOf(0), end = row.timeOf(shape.frames);
  if (time < first) return std::llround((time - first) * shape.rate());
  if (time > end) return static_cast<std::int64_t>(shape.frames) + std::llround((time - end) * shape.rate());
  const std::size_t frame = frameAt(row, time);
  const bool nextIsNearer = row.timeOf(frame + 1) - time < time - row.timeOf(frame);
  return static_cast<std::int64_t>(frame) + (nextIsNearer ? 1 : 0);
}

}  // namespace scan

#include "movie/atoms/MovieTime.h"

#include <algorithm>
#include <limits>

namespace movie {
namespace {

__extension__ using Wide = __int128;

}  // namespace

MovieTime timeScaled(const MovieTime& time, std::int32_t scale) {
  if (time.scale == 0 || scale == 0) return {time.value, time.scale == 0 ? scale : time.scale, time.flags};
  const Wide product = Wide{time.value} * scale;
  const Wide half = Wide{time.scale < 0 ? -Wide{time.scale} : Wide{time.scale}} / 2;
  const bool negative = product < 0;
  const Wide rounded = (product + (negative ? -half : half)) / time.scale;
  constexpr Wide lowest = std::numeric_limits<std::int64_t>::min(), highest = std::numeric_limits<std::int64_t>::max();
  return {static_cast<std::int64_t>(std::clamp(rounded, lowest, highest)), scale, time.flags};
}

int compareTimes(const MovieTime& a, const MovieTime& b) {
  const Wide left = a.scale == 0 ? 0 : Wide{a.value} * (b.scale == 0 ? 1 : b.scale);
  const Wide right = b.scale == 0 ? 0 : Wide{b.value} * (a.scale == 0 ? 1 : a.scale);
  return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace movie

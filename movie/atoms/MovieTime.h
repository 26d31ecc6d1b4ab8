#pragma once

#include <cstdint>

namespace movie {

/// An instant or a length in a movie: `value` units of 1/`scale` second. The zero time has all three fields 0.
struct MovieTime {
  std::int64_t value = 0;
  std::int32_t scale = 0;
  std::int32_t flags = 0;

  friend bool operator==(const MovieTime&, const MovieTime&) = default;
};

/// In seconds; a time without a scale counts as 0.
inline double secondsOf(const MovieTime& time) {
  return time.scale == 0 ? 0.0 : static_cast<double>(time.value) / static_cast<double>(time.scale);
}

/// The same instant in another scale, rounded to nearest, half away from 0, and held at the ends of 64 bits. A time or
/// a target without a scale leaves the value as it is; flags are kept.
MovieTime timeScaled(const MovieTime& time, std::int32_t scale);

/// Below 0, 0 or above 0 as `a` comes before, with or after `b`; exact. A time without a scale counts as 0.
int compareTimes(const MovieTime& a, const MovieTime& b);

}  // namespace movie

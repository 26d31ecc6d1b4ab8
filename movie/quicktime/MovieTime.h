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

}  // namespace movie

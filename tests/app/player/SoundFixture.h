#pragma once

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

#include "movie/Movie.h"
#include "tests/support/MovieFixture.h"

namespace player::test {

inline std::vector<std::string> tone(const std::string& expression, int rate, const std::string& seconds) {
  return {"-f", "lavfi", "-i", "aevalsrc=" + expression + ":s=" + std::to_string(rate) + ":d=" + seconds};
}

/// Left and right that differ from each other and from frame to frame, for two seconds; never 0 but at the beginning.
inline std::string soundMovie() {
  std::vector<std::string> arguments = tone("0.2+0.5*(t+0.0001)/2|-0.1-0.3*(t+0.0001)/2", 48000, "2");
  arguments.insert(arguments.end(), {"-c:a", "pcm_s24le"});
  return movie::test::fixtureMovie("played-sound.mov", arguments);
}

/// One side of soundMovie() at a frame; outside of it 0.
inline float expectedSound(std::int64_t frame, bool left) {
  if (frame < 0 || frame >= 96000) return 0;
  const double t = static_cast<double>(frame) / 48000 + 0.0001;
  return static_cast<float>(left ? 0.2 + 0.5 * t / 2 : -0.1 - 0.3 * t / 2);
}

inline std::unique_ptr<movie::Movie> openedMovie(const std::string& path) {
  auto movie = movie::Movie::movieWithFile(path);
  if (!movie) throw std::runtime_error(movie.error().message());
  return std::move(*movie);
}

}  // namespace player::test

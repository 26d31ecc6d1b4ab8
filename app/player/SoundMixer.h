#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "movie/atoms/MovieFile.h"

namespace player {

/// The sound of a movie: all its enabled sound tracks together, along the movie's time line, clipped to full scale. A
/// track that cannot be played is left out. Used by one thread at a time.
class SoundMixer {
 public:
  /// Opens the tracks. `rate` in frames a second, above 0; tracks of another rate are brought to it.
  SoundMixer(const std::shared_ptr<const movie::MovieFile>& file, int rate);
  ~SoundMixer();
  SoundMixer(const SoundMixer&) = delete;
  SoundMixer& operator=(const SoundMixer&) = delete;

  /// Fills the frames from `first` on, counted from the movie's beginning; silence outside of it.
  void read(std::int64_t first, std::span<float> stereo);

  /// Why something is missing in what was read, the first reason; empty for none.
  const std::string& problem() const { return problem_; }

  /// The rate of the first enabled sound track by its media's clock, where it is a usual one, else 48000; 0 without
  /// such a track. Costs nothing.
  static int naturalRate(const movie::MovieFile& file);

 private:
  class Voice;

  std::vector<std::unique_ptr<Voice>> voices_;
  std::vector<float> one_;
  std::string problem_;
};

}  // namespace player

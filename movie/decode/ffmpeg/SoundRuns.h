#pragma once

#include <cstdint>
#include <memory>

#include "movie/atoms/MovieFile.h"

namespace movie {

/// Samples of a track that lie behind each other in the file.
struct SoundRun {
  std::uint64_t first = 0, count = 0;
  std::uint64_t offset = 0;      ///< of the first one, from the start of the file
  std::uint64_t sampleSize = 0;  ///< as the table has it: see below
  std::size_t description = 0;   ///< 0-based, among the track's sample descriptions
};

/// Finds such runs for tracks whose samples all have one size, as those of uncompressed sound do. It asks for the
/// places of a few samples and takes those in between to lie in order, as they do in every chunk.
///
/// Older files give 1 as the size of a sample, whatever a frame takes. The places of samples within a chunk are wrong
/// then, but a run still begins and ends where a chunk does, and its first place is right.
class SoundRuns {
 public:
  SoundRuns(std::shared_ptr<const MovieFile> file, std::size_t track);

  /// The run from a sample on, `most` samples of it (1 or more), and where the samples are not of `sampleSize` bytes
  /// from the beginning of the run before it. Error: as MovieFile::locateSample.
  Result<SoundRun> at(std::uint64_t sample, std::uint64_t sampleSize, std::uint64_t most);

 private:
  enum class Direction { Back, On };
  struct Line;
  bool isOn(const Line& line, std::uint64_t steps, Direction direction) const;
  std::uint64_t reach(const Line& line, std::uint64_t most, Direction direction, std::uint64_t guess) const;

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  std::uint64_t sampleCount_;
  std::uint64_t guess_ = 0;  ///< how far the last run went on
};

}  // namespace movie

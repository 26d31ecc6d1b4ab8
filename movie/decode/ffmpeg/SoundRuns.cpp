#include "movie/decode/ffmpeg/SoundRuns.h"

#include <algorithm>
#include <utility>

namespace movie {

/// Where a sample lies, and hence where the others would if they all followed each other.
struct SoundRuns::Line {
  std::uint64_t sample;
  SampleLocation place;
};

SoundRuns::SoundRuns(std::shared_ptr<const MovieFile> file, std::size_t track)
    : file_(std::move(file)), track_(track), sampleCount_(file_->sampleTable(track).sampleCount()) {}

bool SoundRuns::isOn(const Line& line, std::uint64_t steps, Direction direction) const {
  const bool back = direction == Direction::Back;
  if (back ? steps > line.sample : steps >= sampleCount_ - line.sample) return false;
  const auto other = file_->locateSample(track_, back ? line.sample - steps : line.sample + steps);
  if (!other || other->size != line.place.size || other->description != line.place.description) return false;
  const std::uint64_t distance = steps * line.place.size;
  return back ? other->offset + distance == line.place.offset : other->offset == line.place.offset + distance;
}

/// How many steps, at most `most`, lead to samples on the line: doubles its stride, then halves it.
std::uint64_t SoundRuns::reach(const Line& line, std::uint64_t most, Direction direction, std::uint64_t guess) const {
  const auto reaches = [&](std::uint64_t steps) { return steps <= most && isOn(line, steps, direction); };
  if (guess > 0 && reaches(guess) && !reaches(guess + 1)) return guess;
  std::uint64_t reached = 0;
  std::uint64_t stride = 1;
  for (; reaches(reached + stride); stride *= 2) reached += stride;
  for (; stride > 0; stride /= 2) {
    if (reaches(reached + stride)) reached += stride;
  }
  return reached;
}

Result<SoundRun> SoundRuns::at(std::uint64_t sample, std::uint64_t sampleSize, std::uint64_t most) {
  TRY(const auto place, file_->locateSample(track_, sample));
  const Line line{sample, place};
  const std::uint64_t on = reach(line, most - 1, Direction::On, guess_);
  guess_ = on;
  std::uint64_t back = 0;
  if (place.size != sampleSize) back = reach(line, sample, Direction::Back, 0);
  return SoundRun{.first = sample - back,
                  .count = back + on + 1,
                  .offset = place.offset - back * place.size,
                  .sampleSize = place.size,
                  .description = place.description};
}

}  // namespace movie

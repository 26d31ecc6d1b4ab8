#include "app/scan/PairMap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr double micros = 1e6;

std::int64_t inMicros(double seconds) {
  return std::llround(seconds * micros);
}

std::int64_t nearer(const std::optional<std::int64_t>& one, std::int64_t other, std::int64_t to) {
  return one && std::abs(*one - to) <= std::abs(other - to) ? *one : other;
}

}  // namespace

FrameStarts FrameStarts::of(const scan::FrameRow& row) {
  const std::size_t frames = row.shape().frames;
  std::vector<std::int64_t> starts;
  starts.reserve(frames + 1);
  for (std::size_t i = 0; i <= frames; ++i) starts.push_back(inMicros(row.timeOf(i)));
  return FrameStarts(std::move(starts));
}

std::int64_t FrameStarts::startOf(std::size_t frame) const {
  return micros_.empty() ? 0 : micros_[std::min(frame, frames())];
}

std::size_t FrameStarts::frameAt(std::int64_t time) const {
  // A playhead's unit may be coarser or finer than a microsecond: a frame that starts within one is on screen.
  const auto after = std::upper_bound(micros_.begin(), micros_.end(), time + 1);
  const auto frame = after == micros_.begin() ? 0 : static_cast<std::size_t>(after - micros_.begin()) - 1;
  return std::min(frame, std::max<std::size_t>(frames(), 1) - 1);
}

PairMap::PairMap(FrameStarts source, FrameStarts dest, Shown shown, std::vector<scan::MapPiece> pieces)
    : source_(std::move(source)), dest_(std::move(dest)), shown_(std::move(shown)), pieces_(std::move(pieces)) {
  showing_.reserve(shown_.source.size());
  for (std::size_t i = 0; i < shown_.source.size(); ++i) {
    if (shown_.source[i] < 0) continue;
    showing_.emplace_back(shown_.source[i], static_cast<std::uint32_t>(shown_.first + i));
  }
  std::sort(showing_.begin(), showing_.end());
}

bool PairMap::reaches(std::int64_t destTime) const {
  if (dest_.frames() == 0) return false;
  const std::size_t frame = dest_.frameAt(destTime);
  return frame >= shown_.first && frame < shown_.first + shown_.source.size();
}

std::optional<std::int64_t> PairMap::sourceOf(std::int64_t destTime) const {
  if (!reaches(destTime)) return std::nullopt;
  const std::int32_t source = shown_.source[dest_.frameAt(destTime) - shown_.first];
  if (source < 0) return std::nullopt;
  return source_.startOf(static_cast<std::size_t>(source));
}

std::optional<std::int64_t> PairMap::destOf(std::int64_t sourceTime, std::int64_t nearDestTime) const {
  if (source_.frames() == 0) return std::nullopt;
  const auto frame = static_cast<std::int32_t>(source_.frameAt(sourceTime));
  std::optional<std::int64_t> nearest;
  for (auto each = std::lower_bound(showing_.begin(), showing_.end(), std::pair(frame, std::uint32_t{0}));
       each != showing_.end() && each->first == frame; ++each) {
    nearest = nearer(nearest, dest_.startOf(each->second), nearDestTime);
  }
  return nearest ? nearest : destOnLine(source_.startOf(static_cast<std::size_t>(frame)), nearDestTime);
}

std::optional<std::int64_t> PairMap::destOnLine(std::int64_t sourceTime, std::int64_t nearDestTime) const {
  std::optional<std::int64_t> nearest;
  for (const scan::MapPiece& piece : pieces_) {
    if (piece.line.rate <= 0) continue;  // it goes through nothing
    const double time = (static_cast<double>(sourceTime) / micros - piece.line.offset) / piece.line.rate;
    const std::int64_t from = dest_.startOf(piece.dest.first), to = dest_.startOf(piece.dest.end);
    if (inMicros(time) < from || inMicros(time) >= to) continue;
    nearest = nearer(nearest, dest_.startOf(dest_.frameAt(inMicros(time))), nearDestTime);
  }
  return nearest;
}

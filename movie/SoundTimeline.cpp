#include "movie/SoundTimeline.h"

#include <algorithm>

#include "movie/atoms/MovieTime.h"

namespace movie {
namespace {

constexpr std::int64_t farthest = SoundTimeline::endless / 4;  // so that sums stay in range

/// Units of a clock as frames, to the nearest.
std::int64_t framesOf(std::uint64_t value, std::int32_t scale, int rate) {
  return std::min(timeScaled({static_cast<std::int64_t>(value), scale}, rate).value, farthest);
}

}  // namespace

SoundTimeline::SoundTimeline(const TrackInfo& track, std::int32_t movieTimeScale, int rate) {
  const std::int32_t movieScale = std::max(movieTimeScale, 1);
  const std::int32_t mediaScale = std::max(track.mediaTimeScale, 1);
  if (track.edits.empty()) {
    segments_.push_back({.start = 0, .end = endless, .mediaFrame = 0});
    return;
  }
  std::uint64_t position = 0;  // in the movie's time scale, so that rounding does not add up
  for (const EditListEntry& edit : track.edits) {
    Segment segment{.start = framesOf(position, movieScale, rate), .end = 0, .mediaFrame = std::nullopt};
    constexpr auto most = static_cast<std::uint64_t>(endless);
    position += std::min(edit.segmentDuration, most - std::min(position, most));
    segment.end = framesOf(position, movieScale, rate);
    if (edit.mediaTime >= 0 && edit.mediaRate == normalRate) {
      segment.mediaFrame = framesOf(static_cast<std::uint64_t>(edit.mediaTime), mediaScale, rate);
    }
    if (segment.end > segment.start) segments_.push_back(segment);
  }
  segments_.push_back({.start = framesOf(position, movieScale, rate), .end = endless, .mediaFrame = std::nullopt});
}

SoundPiece SoundTimeline::at(std::int64_t movieFrame) const {
  if (movieFrame < 0) return {.end = 0, .mediaFrame = std::nullopt};
  const auto found = std::find_if(segments_.begin(), segments_.end(),
                                  [movieFrame](const Segment& segment) { return movieFrame < segment.end; });
  if (found == segments_.end()) return {.end = endless, .mediaFrame = std::nullopt};
  SoundPiece piece{.end = found->end, .mediaFrame = found->mediaFrame};
  if (piece.mediaFrame) *piece.mediaFrame += movieFrame - found->start;
  return piece;
}

}  // namespace movie

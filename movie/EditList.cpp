#include "movie/EditList.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace movie {
namespace {

__extension__ using Int128 = __int128;

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t normalRate = 0x10000;

/// An exact instant: `value` / `scale` seconds, scale above 0.
struct Instant {
  Int128 value;
  std::int64_t scale;
};

bool operator<(const Instant& one, const Instant& other) {
  return one.value * other.scale < other.value * one.scale;
}

/// A stretch of the movie's time line that shows media. Start and end in the movie's time scale.
struct Segment {
  std::int64_t start = 0, end = endless;
  std::int64_t mediaTime = 0;
  std::int32_t rate = normalRate;
};

Int128 floorDivided(Int128 value, Int128 divisor) {
  const Int128 quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

std::int64_t saturated(Int128 value) {
  return static_cast<std::int64_t>(std::clamp<Int128>(value, std::numeric_limits<std::int64_t>::min(), endless));
}

bool isEmptyEdit(const EditListEntry& edit) {
  return edit.mediaTime < 0;
}

/// The segments with media, in order, each reaching back over the empty edits before it.
std::vector<Segment> segmentsOf(const TrackInfo& track, std::int32_t movieTimeScale) {
  if (movieTimeScale <= 0) return {Segment{.mediaTime = mediaStartTime(track)}};
  std::vector<Segment> segments;
  Int128 position = 0;
  for (const EditListEntry& edit : track.edits) {
    const std::int64_t start = saturated(position);
    position += edit.segmentDuration;
    if (isEmptyEdit(edit) || edit.segmentDuration == 0) continue;
    segments.push_back(
        {.start = start, .end = saturated(position), .mediaTime = edit.mediaTime, .rate = edit.mediaRate});
  }
  if (segments.empty()) return {Segment{.mediaTime = mediaStartTime(track)}};
  return segments;
}

/// A track's two time lines, and the way from one to the other.
class Timeline {
 public:
  Timeline(const TrackInfo& track, std::int32_t movieTimeScale)
      : movieScale_(std::max(movieTimeScale, 1)),
        mediaScale_(std::max(track.mediaTimeScale, 1)),
        segments_(segmentsOf(track, movieTimeScale)) {}

  std::int64_t mediaTimeAt(const Instant& time) const {
    const auto next = std::find_if(segments_.begin(), segments_.end(), [&](const Segment& segment) {
      return time < Instant{segment.end, movieScale_};
    });
    return next == segments_.end() ? lastMediaTimeOf(segments_.back()) : mediaTimeIn(*next, time);
  }

 private:
  /// The media time on screen at an instant before the segment's end; before its start, where it begins.
  std::int64_t mediaTimeIn(const Segment& segment, const Instant& time) const {
    const Instant start{segment.start, movieScale_};
    if (time < start || segment.rate <= 0) return segment.mediaTime;
    const Int128 into = time.value * start.scale - start.value * time.scale;
    const Int128 unit = Int128{time.scale} * start.scale;
    // Whole and fraction apart: the product of all four factors may need more than 127 bits.
    const Int128 ticks = into / unit * mediaScale_ + into % unit * mediaScale_ / unit;
    return saturated(segment.mediaTime + atRate(ticks, segment.rate));
  }

  /// The last media time that shows before the segment's end.
  std::int64_t lastMediaTimeOf(const Segment& segment) const {
    if (segment.rate <= 0) return segment.mediaTime;
    const Int128 length = Int128{segment.end} - segment.start;
    const Int128 ticks = atRate(-floorDivided(-length * mediaScale_, movieScale_), segment.rate);
    return saturated(segment.mediaTime + std::max<Int128>(ticks - 1, 0));
  }

  static Int128 atRate(Int128 ticks, std::int32_t rate) {
    return rate == normalRate ? ticks : floorDivided(Int128{saturated(ticks)} * rate, normalRate);
  }

  std::int64_t movieScale_, mediaScale_;
  std::vector<Segment> segments_;
};

}  // namespace

std::int64_t mediaStartTime(const TrackInfo& track) {
  const auto first = std::find_if_not(track.edits.begin(), track.edits.end(), isEmptyEdit);
  return first == track.edits.end() ? 0 : first->mediaTime;
}

std::optional<PresentedSample> sampleOnScreen(const TrackInfo& track, std::int32_t movieTimeScale,
                                              const SampleTable& samples, const MovieTime& time) {
  const Timeline timeline(track, movieTimeScale);
  const Instant given = time.scale > 0 ? Instant{std::max<std::int64_t>(time.value, 0), time.scale} : Instant{0, 1};
  const auto exact = samples.presentedAt(timeline.mediaTimeAt(given));
  if (!exact || time.scale <= 0 || time.value < 0) return exact;

  const bool lastsTwoUnits = Int128{exact->duration} * time.scale >= Int128{2} * track.mediaTimeScale;
  if (!lastsTwoUnits) return exact;
  return samples.presentedAt(timeline.mediaTimeAt({given.value + 1, given.scale}));
}

}  // namespace movie

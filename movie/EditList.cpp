#include "movie/EditList.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace movie {
namespace {

__extension__ using Int128 = __int128;

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t micro = 1000000;

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

/// A place on a track's time line: so many units of the media's time scale after the start of a segment.
struct Place {
  std::size_t segment = 0;
  Int128 ticks = 0;
};

/// A track's two time lines, and the way from one to the other.
class Timeline {
 public:
  Timeline(const TrackInfo& track, std::int32_t movieTimeScale)
      : movieScale_(std::max(movieTimeScale, 1)),
        mediaScale_(std::max(track.mediaTimeScale, 1)),
        segments_(segmentsOf(track, movieTimeScale)) {}

  std::int64_t mediaTimeAt(const Place& place) const {
    const Segment& segment = segments_[place.segment];
    if (segment.rate <= 0) return segment.mediaTime;
    return saturated(segment.mediaTime + atRate(place.ticks, segment.rate));
  }

  /// What is on screen at an instant: inside a segment, or where the next one begins, or where the last one ends.
  Place placeAt(const Instant& time) const {
    const auto next = std::find_if(segments_.begin(), segments_.end(), [&](const Segment& segment) {
      return time < Instant{segment.end, movieScale_};
    });
    if (next == segments_.end()) return lastPlaceIn(segments_.size() - 1);
    return {static_cast<std::size_t>(next - segments_.begin()), ticksInto(*next, time)};
  }

  /// When a place comes on screen. A segment's first shows from the end of the one before.
  Instant instantOf(const Place& place) const {
    const Segment& segment = segments_[place.segment];
    if (place.ticks <= 0) return {place.segment == 0 ? 0 : segments_[place.segment - 1].end, movieScale_};
    return {Int128{segment.start} * mediaScale_ + place.ticks * movieScale_, movieScale_ * mediaScale_};
  }

  /// The first place of a segment that shows a media time or a later one, none when the segment ends before.
  std::optional<Place> placeOf(std::size_t segment, std::int64_t mediaTime) const {
    const Segment& in = segments_[segment];
    const Int128 ahead = Int128{mediaTime} - in.mediaTime;
    if (ahead <= 0) return Place{segment, 0};
    if (in.rate <= 0) return std::nullopt;
    const Int128 ticks = in.rate == normalRate ? ahead : -floorDivided(-ahead * normalRate, in.rate);
    if (in.end != endless && ticks > lastPlaceIn(segment).ticks) return std::nullopt;
    return Place{segment, ticks};
  }

  std::optional<Place> firstPlaceAfter(std::size_t segment) const {
    if (segment + 1 >= segments_.size()) return std::nullopt;
    return Place{segment + 1, 0};
  }

  std::optional<Place> placeBefore(const Place& place) const {
    if (place.ticks > 0) return Place{place.segment, place.ticks - 1};
    if (place.segment == 0) return std::nullopt;
    return lastPlaceIn(place.segment - 1);
  }

  /// None for a segment that has the media's own length.
  std::optional<Instant> endOf(std::size_t segment) const {
    if (segments_[segment].end == endless) return std::nullopt;
    return Instant{segments_[segment].end, movieScale_};
  }

 private:
  Int128 ticksInto(const Segment& segment, const Instant& time) const {
    const Instant start{segment.start, movieScale_};
    if (time < start) return 0;
    const Int128 into = time.value * start.scale - start.value * time.scale;
    const Int128 unit = Int128{time.scale} * start.scale;
    // Whole and fraction apart: the product of all four factors may need more than 127 bits.
    return into / unit * mediaScale_ + into % unit * mediaScale_ / unit;
  }

  /// The last place that shows before the segment's end.
  Place lastPlaceIn(std::size_t segment) const {
    const Int128 length = Int128{segments_[segment].end} - segments_[segment].start;
    const Int128 ticks = -floorDivided(-length * mediaScale_, movieScale_);
    return {segment, std::max<Int128>(ticks - 1, 0)};
  }

  static Int128 atRate(Int128 ticks, std::int32_t rate) {
    return rate == normalRate ? ticks : floorDivided(Int128{saturated(ticks)} * rate, normalRate);
  }

  std::int64_t movieScale_, mediaScale_;
  std::vector<Segment> segments_;
};

/// A track's samples on its time line.
class Screen {
 public:
  Screen(const TrackInfo& track, std::int32_t movieTimeScale, const SampleTable& samples)
      : timeline_(track, movieTimeScale),
        samples_(samples),
        movieScale_(std::max(movieTimeScale, 1)),
        mediaScale_(track.mediaTimeScale) {}

  std::optional<PresentedSample> sampleAt(const Place& place) const {
    return samples_.presentedAt(timeline_.mediaTimeAt(place));
  }

  /// What a time stands for, known to its unit as it is.
  Place placeAt(const MovieTime& time) const {
    const Instant given = time.scale > 0 ? Instant{std::max<std::int64_t>(time.value, 0), time.scale} : Instant{0, 1};
    const Place exact = timeline_.placeAt(given);
    const auto sample = sampleAt(exact);
    if (!sample || time.scale <= 0 || time.value < 0) return exact;
    const bool lastsTwoUnits = Int128{sample->duration} * time.scale >= Int128{2} * mediaScale_;
    return lastsTwoUnits ? timeline_.placeAt({given.value + 1, given.scale}) : exact;
  }

  std::optional<Place> placeBefore(const Place& place) const { return timeline_.placeBefore(startOf(place)); }

  FrameSpan spanAt(const Place& place) const {
    const Place start = startOf(place);
    const Instant begin = timeline_.instantOf(start);
    const auto next = nextAfter(place);
    const Instant end = next ? timeline_.instantOf(*next) : endOf(place);
    return {.sample = *sampleAt(place),
            .start = timeOf(begin, start),
            .end = next ? timeOf(end, *next) : roundedUp(end, movieScale_),
            .startMicros = roundedUp(begin, micro).value,
            .endMicros = roundedUp(end, micro).value,
            .last = !next};
  }

 private:
  bool showsTheSame(const Place& place, std::uint64_t sample) const {
    const auto there = sampleAt(place);
    return there && there->index == sample;
  }

  Place startOf(const Place& place) const {
    const PresentedSample sample = *sampleAt(place);
    const Place first{place.segment, 0};
    if (showsTheSame(first, sample.index)) return first;
    const auto start = timeline_.placeOf(place.segment, sample.presentationTime);
    return start && start->ticks < place.ticks ? *start : place;
  }

  std::optional<Place> nextAfter(const Place& place) const {
    const PresentedSample sample = *sampleAt(place);
    const std::int64_t end = saturated(Int128{sample.presentationTime} + std::max<std::int64_t>(sample.duration, 1));
    const auto next = timeline_.placeOf(place.segment, end);
    if (next && next->ticks > place.ticks && !showsTheSame(*next, sample.index)) return next;
    return timeline_.firstPlaceAfter(place.segment);
  }

  /// Where the last frame of all ends.
  Instant endOf(const Place& place) const {
    if (const auto end = timeline_.endOf(place.segment)) return *end;
    const PresentedSample sample = *sampleAt(place);
    const std::int64_t end = saturated(Int128{sample.presentationTime} + sample.duration);
    const auto found = timeline_.placeOf(place.segment, end);
    return timeline_.instantOf(found && found->ticks > place.ticks ? *found : place);
  }

  static Int128 flooredIn(std::int32_t scale, const Instant& instant) {
    return floorDivided(instant.value * scale, instant.scale);
  }

  /// The time of an instant that the place there is found at again. Whole units down are tried before units up, since
  /// that is how times of frames are written.
  MovieTime timeOf(const Instant& instant, const Place& place) const {
    constexpr std::int32_t nano = 1000000000;
    const auto sample = sampleAt(place)->index;
    const Place wanted = startOf(place);
    for (const std::int32_t scale : {movieScale_, micro, nano}) {
      const Int128 down = flooredIn(scale, instant);
      for (const Int128 value : {down, down + 1}) {
        if (value > endless) break;
        const MovieTime time{.value = static_cast<std::int64_t>(value), .scale = scale};
        const Place found = placeAt(time);
        if (found.segment != wanted.segment || !showsTheSame(found, sample)) continue;
        return time;
      }
    }
    return roundedUp(instant, movieScale_);
  }

  static MovieTime roundedUp(const Instant& instant, std::int32_t scale) {
    return {.value = saturated(-flooredIn(scale, {-instant.value, instant.scale})), .scale = scale};
  }

  Timeline timeline_;
  const SampleTable& samples_;
  std::int32_t movieScale_, mediaScale_;
};

}  // namespace

std::int64_t mediaStartTime(const TrackInfo& track) {
  const auto first = std::find_if_not(track.edits.begin(), track.edits.end(), isEmptyEdit);
  return first == track.edits.end() ? 0 : first->mediaTime;
}

std::optional<PresentedSample> sampleOnScreen(const TrackInfo& track, std::int32_t movieTimeScale,
                                              const SampleTable& samples, const MovieTime& time) {
  const Screen screen(track, movieTimeScale, samples);
  return screen.sampleAt(screen.placeAt(time));
}

std::optional<FrameSpan> spanOnScreen(const TrackInfo& track, std::int32_t movieTimeScale, const SampleTable& samples,
                                      const MovieTime& time) {
  if (samples.sampleCount() == 0) return std::nullopt;
  const Screen screen(track, movieTimeScale, samples);
  return screen.spanAt(screen.placeAt(time));
}

std::optional<FrameSpan> spanBefore(const TrackInfo& track, std::int32_t movieTimeScale, const SampleTable& samples,
                                    const MovieTime& time) {
  if (samples.sampleCount() == 0) return std::nullopt;
  const Screen screen(track, movieTimeScale, samples);
  const auto before = screen.placeBefore(screen.placeAt(time));
  if (!before) return std::nullopt;
  return screen.spanAt(*before);
}

}  // namespace movie

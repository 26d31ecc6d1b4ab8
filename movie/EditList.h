#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/MovieFile.h"
#include "movie/atoms/MovieTime.h"

namespace movie {

/// The sample of a track that is on screen at a movie time; none only when the track has no samples.
///
/// - The edit list leads from the movie's time line to the media's; a rate of 0 or below holds its first picture.
/// - There is always a picture: a time before the beginning gives the first one, one past the end the last one, and
///   during an empty edit the next one shows already (after the last edit with media: its last one).
/// - A time is known to its unit only: a frame that starts up to one unit of `time.scale` after it is the one on
///   screen, provided that the frame before it lasts at least two such units. So a frame's own start finds that frame
///   although it was cut to whole units: frame 1 of 23.976 frames a second starts at 25.025/600 s, which is written
///   25/600.
///
/// Exact for all values: no floating point, no overflow.
std::optional<PresentedSample> sampleOnScreen(const TrackInfo& track, std::int32_t movieTimeScale,
                                              const SampleTable& samples, const MovieTime& time);

/// A frame's stay on screen. Start and end are movie times that sampleOnScreen() finds this frame and the one after it
/// at: in the movie's own time scale where that can tell the frames apart, else in a finer one. Ends meet starts: the
/// end of one span is the start of the next.
struct FrameSpan {
  PresentedSample sample;
  MovieTime start, end;
  /// The same exactly, in the first microsecond that is not before.
  std::int64_t startMicros = 0, endMicros = 0;
  bool last = false;  ///< nothing comes after it; it stays on screen past its end
};

/// The span around a movie time: of the sample that sampleOnScreen() gives. A frame that is cut by an edit ends with
/// it; one that is shown twice has two spans; a dwell is one.
std::optional<FrameSpan> spanOnScreen(const TrackInfo& track, std::int32_t movieTimeScale, const SampleTable& samples,
                                      const MovieTime& time);
/// The span before the one around a movie time; none when that one is the first.
std::optional<FrameSpan> spanBefore(const TrackInfo& track, std::int32_t movieTimeScale, const SampleTable& samples,
                                    const MovieTime& time);

/// The media time at which a track's presentation starts: of its first edit that has media, else 0.
std::int64_t mediaStartTime(const TrackInfo& track);

}  // namespace movie

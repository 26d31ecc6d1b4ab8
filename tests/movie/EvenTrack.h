#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "movie/EditList.h"

// What tests of edit lists are made of.

namespace movie::test {

inline constexpr std::int32_t normal = 0x10000;  ///< rate of an edit

/// A rate of frames: units of the media time scale that one lasts.
struct FrameRate {
  std::int32_t mediaScale;
  std::uint32_t frameDuration;
};

/// `frames` frames of `frameDuration` units, shown in decode order.
inline SampleTable evenFrames(std::uint64_t frames, std::uint32_t frameDuration) {
  return SampleTable({TimeRun{.count = frames, .duration = frameDuration}});
}

inline TrackInfo trackOf(std::int32_t mediaTimeScale, std::vector<EditListEntry> edits = {}) {
  TrackInfo track;
  track.mediaTimeScale = mediaTimeScale;
  track.edits = std::move(edits);
  return track;
}

inline MovieTime at(std::int64_t value, std::int32_t scale) {
  return {.value = value, .scale = scale};
}

}  // namespace movie::test

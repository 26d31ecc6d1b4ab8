#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/quicktime/ByteOrder.h"

namespace movie {

/// One sample as presented. Times in units of the media's time scale, on the media's own time line (before edit lists).
struct PresentedSample {
  std::uint64_t index = 0;             ///< 0-based, in decode order
  std::int64_t decodeTime = 0;
  std::int64_t presentationTime = 0;
  std::int64_t duration = 0;           ///< until the next presented sample; the last one's own duration
};

/// A run of samples that share duration and composition offset, as stts, ctts and trun give them.
struct TimeRun {
  std::uint64_t count = 0;
  std::int64_t duration = 0;
  std::int64_t compositionOffset = 0;
};

/// When the samples of a track are shown, and from which of them decoding can start. Built from stts, ctts, stss and stps,
/// or from the fragments' trun atoms. Immutable and free of threads' concerns once built.
/// Source: QTFF "Sample table atoms"; ISO/IEC 14496-12, 8.6.
class SampleTable {
 public:
  SampleTable() = default;
  /// `syncSamples` are 0-based decode indices, ascending; none means that every sample is one.
  SampleTable(std::vector<TimeRun> runs, std::optional<std::vector<std::uint64_t>> syncSamples);

  std::uint64_t sampleCount() const { return count_; }
  /// The sum of the samples' durations.
  std::int64_t duration() const { return duration_; }

  /// The sample on screen at a media time: the last one presented at or before it. A time before the first sample gives
  /// the first; none only when the table is empty.
  std::optional<PresentedSample> presentedAt(std::int64_t mediaTime) const;

  std::int64_t decodeTimeOf(std::uint64_t index) const;
  std::int64_t presentationTimeOf(std::uint64_t index) const;

  /// The last sync sample at or before a decode index; 0 when there is none.
  std::uint64_t syncSampleAtOrBefore(std::uint64_t index) const;

 private:
  std::vector<TimeRun> runs_;
  std::optional<std::vector<std::uint64_t>> sync_;
  std::uint64_t count_ = 0;
  std::int64_t duration_ = 0;
};

}  // namespace movie

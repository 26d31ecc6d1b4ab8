#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace movie {

/// One sample as presented. Times in units of the media's time scale, on the media's own time line (before edit lists).
struct PresentedSample {
  std::uint64_t index = 0;  ///< 0-based, in decode order
  std::int64_t decodeTime = 0;
  std::int64_t presentationTime = 0;
  std::int64_t duration = 0;  ///< until the next presented sample; the last one's own duration
};

/// A run of samples that share duration and composition offset, as stts, ctts and trun give them.
struct TimeRun {
  std::uint64_t count = 0;
  std::uint32_t duration = 0;
  std::int32_t compositionOffset = 0;
  /// The decode time of its first sample where it does not simply follow the run before it (tfdt).
  std::optional<std::int64_t> decodeStart = std::nullopt;
};

/// `count` samples from the 0-based decode index `first` on.
struct SampleRange {
  std::uint64_t first = 0;
  std::uint64_t count = 0;

  std::uint64_t end() const { return first + count; }
  friend bool operator==(const SampleRange&, const SampleRange&) = default;
};

/// Makes the last one longer where the new one goes on with it; a range also where it begins inside.
void appendRun(std::vector<TimeRun>& runs, const TimeRun& run);
void appendRange(std::vector<SampleRange>& ranges, const SampleRange& range);

/// When the samples of a track are shown, and from which of them decoding can start. Built from stts, ctts, stss and
/// stps, or from the fragments' trun atoms. Immutable and free of threads' concerns once built. Look-ups are O(log
/// runs) for any table whose runs do not overlap in presentation; samples are never expanded. Source: QTFF "Sample
/// table atoms"; ISO/IEC 14496-12, 8.6.
class SampleTable {
 public:
  /// Times beyond this are not represented: the samples from there on are left out.
  static constexpr std::int64_t maximumTime = std::int64_t{1} << 60;

  SampleTable() = default;
  /// `syncSamples` may come in any order and overlap; none means that every sample is one.
  explicit SampleTable(const std::vector<TimeRun>& runs,
                       std::optional<std::vector<SampleRange>> syncSamples = std::nullopt);

  std::uint64_t sampleCount() const { return count_; }
  /// Where the last sample ends on the decode time line, which begins at 0: the sum of the samples' durations and of
  /// any gaps between fragments.
  std::int64_t duration() const { return duration_; }

  /// The sample on screen at a media time: the last one presented at or before it; of several presented at one time the
  /// last in decode order. A time before the first sample gives the first; none only when the table is empty.
  std::optional<PresentedSample> presentedAt(std::int64_t mediaTime) const;

  /// An index past the end counts as the last one; 0 for an empty table.
  std::int64_t decodeTimeOf(std::uint64_t index) const;
  std::int64_t presentationTimeOf(std::uint64_t index) const;

  /// The last sync sample at or before a decode index; 0 when there is none.
  std::uint64_t syncSampleAtOrBefore(std::uint64_t index) const;

 private:
  struct Run {
    std::uint64_t firstSample = 0;
    std::int64_t start = 0;  ///< decode time
    std::uint32_t duration = 0;
    std::int32_t offset = 0;

    std::int64_t firstPresented() const { return start + offset; }
  };

  bool append(const TimeRun& run, std::int64_t& decodeTime);
  void orderByPresentation();
  void normaliseSync();
  std::size_t runOf(std::uint64_t index) const;
  std::uint64_t samplesIn(std::size_t run) const;
  std::int64_t lastPresented(std::size_t run) const;

  std::vector<Run> runs_;                         ///< in decode order
  std::vector<std::uint32_t> order_;              ///< runs by first presentation
  std::vector<std::int64_t> latest_;              ///< per place in order_: the latest presentation up to there
  std::optional<std::vector<SampleRange>> sync_;  ///< ascending, apart from each other
  std::uint64_t count_ = 0;
  std::int64_t duration_ = 0;
};

}  // namespace movie

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "diagnosis/Causes.h"
#include "diagnosis/Diagnosis.h"
#include "scan/MovieRow.h"
#include "scan/Segments.h"
#include "scan/TimeMap.h"
#include "scan/align/Start.h"
#include "scan/follow/Follow.h"

namespace scan {

/// A stretch of the destination that differs from the source in one way.
struct Segment {
  FrameRange dest;
  /// Of its frames: destination = source ^ exponent. None where none could be measured.
  std::optional<double> exponent;
  diagnosis::Interval interval;                            ///< of the exponent, about 95 %
  std::vector<diagnosis::Cause> causes;                    ///< never empty; the weightiest first
  std::optional<diagnosis::Recipe> recipe = std::nullopt;  ///< what the causes stand for, where that is known
  std::vector<diagnosis::Stratum> colors = {};             ///< of both sides, which the recipe was read from
  double confidence() const { return causes.front().confidence; }
};

/// Why frames that show the same were not measured.
enum class Unmeasured {
  Dark,     ///< black, or of one colour
  Clipped,  ///< nothing between black and white that is calm
};
struct UnmeasuredRange {
  FrameRange dest;
  Unmeasured why = Unmeasured::Dark;
};

struct WorstFrame {
  std::size_t frame = 0;  ///< of the destination
  double exponent = 1;
};

/// All that a scan finds. Frames are counted from the first of each movie.
struct ScanResult {
  Beginning::Result correspondence = Beginning::Result::NotFound;
  FrameRange scanned;  ///< of the destination: as far as it came
  bool stopped = false;
  std::optional<ReadFailure> failure;
  Matches matches;
  TimeMap map;
  diagnosis::Placement placement;
  diagnosis::Placement compared;  ///< the same without the edges: as frames were laid upon each other
  std::vector<Segment> segments;
  std::vector<UnmeasuredRange> unmeasured;  ///< of a second or more
  std::optional<WorstFrame> worst;
  std::size_t identicalFrames = 0;
  /// Of the whole: of the segment that weighs most where they differ. Nothing is found where isTold() is false.
  diagnosis::Finding finding;

  /// Whether it came far enough to tell anything.
  bool isTold() const { return !stopped || correspondence != Beginning::Result::NotFound; }
};

/// What a side says of its colours.
struct ScanTags {
  diagnosis::SideTags source, dest;
};

struct ScanOptions {
  std::optional<double> from = std::nullopt, to = std::nullopt;  ///< of the destination, in seconds; none: both ends
  std::size_t every = 1;  ///< every so many-th frame of the destination is compared, the first one in any case
  bool align = true;      ///< otherwise frames of equal times are compared, wherever they come from
  double tolerance = diagnosis::defaultTolerance;
};

/// How far a scan is.
struct ScanProgress {
  enum class Stage { Aligning, Comparing } stage = Stage::Aligning;
  std::size_t done = 0, frames = 0;  ///< of the destination
  std::size_t known = 0;             ///< of those done: they were kept from before
  double seconds = 0;                ///< of it that were gone through
  std::size_t unmatched = 0, identical = 0;
  std::optional<double> exponent = std::nullopt;  ///< of the latest frame that was measured
  const Matches* matches = nullptr;               ///< all frames so far, during the call only; none while aligning
};
/// Called every now and then on the thread that scans. True stops it: what was found until then is the result.
using OnProgress = std::function<bool(const ScanProgress&)>;

/// The frames of the destination that are to be scanned. It has frames.
FrameRange rangeOf(const FrameRow& dest, const ScanOptions& options);

/// Scans two rows of frames. The rows are read here and there first, then copies of them from the beginning to the end
/// on a thread each, beside the calling one. `keeper`: is told what is final, and gives what it knows of the same scan
/// from before; null for none.
ScanResult scanned(FrameRow& source, FrameRow& dest, const ScanTags& tags, const ScanOptions& options,
                   const OnProgress& onProgress, ScanKeeper* keeper = nullptr);

/// Two movies, ready to be scanned.
struct MoviePair {
  std::unique_ptr<MovieRow> source, dest;
  ScanTags tags() const { return {source->tags(), dest->tags()}; }
};
/// Error: one has no picture that could be had.
movie::Result<MoviePair> pairOf(const movie::Movie& source, const movie::Movie& dest);

}  // namespace scan

#pragma once

#include <QString>
#include <cstddef>
#include <optional>
#include <vector>

#include "app/scan/PairMap.h"
#include "scan/Scan.h"

/// Some frames of the destination that follow each other.
struct TimelineBin {
  int frames = 0, unmatched = 0, measured = 0;
  double logSum = 0, logLow = 0, logHigh = 0;  ///< of the exponents of those that were measured

  void add(const scan::FrameMatch& match);
  /// Of measured ones only.
  double mean() const { return logSum / measured; }
};

/// Times are seconds of the destination.
struct TimelineStretch {
  double from = 0, to = 0;
  friend bool operator==(const TimelineStretch&, const TimelineStretch&) = default;
};

/// A segment as it is shown.
struct TimelineSegment {
  TimelineStretch at;
  bool differs = false;
  QString word, sentence;  ///< for a band, and for whoever asks; in the user's language
};

/// Where nothing was measured, though it shows the same.
struct UnmeasuredStretch {
  TimelineStretch at;
  scan::Unmeasured why = scan::Unmeasured::Dark;
};

struct TimelineWorst {
  double at = 0, exponent = 1;
};

/// The destination from its beginning to its end, as far as it was scanned.
struct Timeline {
  double seconds = 0;  ///< all of it
  double done = 0;     ///< scanned up to here
  std::vector<TimelineBin> bins;
  std::vector<TimelineSegment> segments;
  std::vector<TimelineStretch> unmatched;
  std::vector<UnmeasuredStretch> unmeasured;
  std::vector<double> cuts;
  std::optional<TimelineWorst> worst;

  /// Where a bin begins; of the number of bins: the end.
  double startOf(std::size_t bin) const;
};

/// How many bins a timeline has: as many as a large screen has points for.
constexpr std::size_t timelineBins = 1200;

/// The bin that a time falls into.
std::size_t binAt(double time, double seconds);

/// Bins without a counterpart as stretches: what is known while a scan goes on.
std::vector<TimelineStretch> unmatchedBins(const Timeline& timeline);

/// What a scan found, without the words of its segments.
Timeline timelineOf(const scan::ScanResult& result, const FrameStarts& dest, std::vector<TimelineBin> bins);

#include "app/scan/Timeline.h"

#include <algorithm>
#include <cmath>

namespace {

double secondsAt(const FrameStarts& dest, std::size_t frame) {
  return static_cast<double>(dest.startOf(frame)) / 1e6;
}

TimelineStretch stretchOf(const FrameStarts& dest, const scan::FrameRange& range) {
  return {secondsAt(dest, range.first), secondsAt(dest, range.end)};
}

/// Where the source is cut: another piece begins, with nothing between.
std::vector<double> cutsOf(const scan::TimeMap& map, const FrameStarts& dest) {
  std::vector<double> cuts;
  cuts.reserve(map.pieces.size());
  for (std::size_t i = 1; i < map.pieces.size(); ++i) cuts.push_back(secondsAt(dest, map.pieces[i].dest.first));
  return cuts;
}

}  // namespace

void TimelineBin::add(const scan::FrameMatch& match) {
  ++frames;
  unmatched += match.isMatched() ? 0 : 1;
  if (!match.isMeasured()) return;
  const double value = match.logExponent;
  logLow = measured == 0 ? value : std::min(logLow, value);
  logHigh = measured == 0 ? value : std::max(logHigh, value);
  logSum += value;
  ++measured;
}

double Timeline::startOf(std::size_t bin) const {
  return bins.empty() ? 0 : seconds * static_cast<double>(bin) / static_cast<double>(bins.size());
}

std::size_t binAt(double time, double seconds) {
  if (seconds <= 0 || time <= 0) return 0;
  return std::min(timelineBins - 1, static_cast<std::size_t>(time / seconds * static_cast<double>(timelineBins)));
}

std::vector<TimelineStretch> unmatchedBins(const Timeline& timeline) {
  std::vector<TimelineStretch> stretches;
  for (std::size_t i = 0; i < timeline.bins.size(); ++i) {
    const TimelineBin& bin = timeline.bins[i];
    const bool isWithout = bin.frames > 0 && 2 * bin.unmatched > bin.frames;
    // Of few frames not every bin has one: it is what the one before it is.
    const bool goesOn = bin.frames == 0 && timeline.startOf(i) < timeline.done && !stretches.empty() &&
                        stretches.back().to == timeline.startOf(i);
    if (!isWithout && !goesOn) continue;
    const TimelineStretch here{timeline.startOf(i), timeline.startOf(i + 1)};
    if (!stretches.empty() && stretches.back().to == here.from) {
      stretches.back().to = here.to;
    } else {
      stretches.push_back(here);
    }
  }
  return stretches;
}

Timeline timelineOf(const scan::ScanResult& result, const FrameStarts& dest, std::vector<TimelineBin> bins) {
  Timeline timeline;
  timeline.seconds = secondsAt(dest, dest.frames());
  timeline.done = secondsAt(dest, result.scanned.end);
  timeline.bins = std::move(bins);
  timeline.segments.reserve(result.segments.size());
  for (const scan::Segment& segment : result.segments) {
    using diagnosis::CauseKind;
    const CauseKind kind = segment.causes.front().kind;
    const bool differs = kind != CauseKind::Identical && kind != CauseKind::Same && kind != CauseKind::Unreadable;
    timeline.segments.push_back({stretchOf(dest, segment.dest), differs, {}, {}});
  }
  timeline.unmatched.reserve(result.map.unmatched.size());
  for (const scan::FrameRange& range : result.map.unmatched) timeline.unmatched.push_back(stretchOf(dest, range));
  timeline.unmeasured.reserve(result.unmeasured.size());
  for (const scan::UnmeasuredRange& range : result.unmeasured) {
    timeline.unmeasured.push_back({stretchOf(dest, range.dest), range.why});
  }
  timeline.cuts = cutsOf(result.map, dest);
  constexpr double hardly = 0.01;
  if (result.worst && std::abs(std::log(result.worst->exponent)) > hardly) {
    timeline.worst = TimelineWorst{secondsAt(dest, result.worst->frame), result.worst->exponent};
  }
  return timeline;
}

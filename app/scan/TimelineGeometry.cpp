#include "app/scan/TimelineGeometry.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

bool isIn(const TimelineStretch& stretch, double time) {
  return time >= stretch.from && time < stretch.to;
}

}  // namespace

TimelineRooms roomsIn(const QSizeF& size, double line, double number) {
  constexpr double edge = 1.5, between = 3, aroundText = 6;
  const double left = number + aroundText, width = std::max(1.0, size.width() - left - edge);
  const double bandHeight = line + between, top = edge + bandHeight + between;
  const QRectF plot(left, top, width, std::max(1.0, size.height() - top - edge - line / 2));
  return {{left, edge, width, bandHeight}, plot, {0, top, number, plot.height()}};
}

double reachOf(const Timeline& timeline) {
  double farthest = timeline.worst ? std::abs(std::log(timeline.worst->exponent)) : 0;
  for (const TimelineBin& bin : timeline.bins) {
    if (bin.measured > 0) farthest = std::max(farthest, std::abs(bin.mean()));
  }
  constexpr double steps[] = {1.1, 1.25, 1.5, 2, 3, 5, 10};
  const auto enough = std::find_if(std::begin(steps), std::prev(std::end(steps)), [&](double step) {
    constexpr double roomAbove = 1.15;
    return roomAbove * farthest <= std::log(step);
  });
  return *enough;
}

double TimelineGeometry::xOf(double time) const {
  return seconds_ > 0 ? plot_.left() + plot_.width() * std::clamp(time / seconds_, 0.0, 1.0) : plot_.left();
}

double TimelineGeometry::timeAt(double x) const {
  return seconds_ * std::clamp((x - plot_.left()) / plot_.width(), 0.0, 1.0);
}

double TimelineGeometry::yOf(double logExponent) const {
  const double share = std::clamp(logExponent / std::log(reach_), -1.0, 1.0);
  return plot_.center().y() - share * plot_.height() / 2;
}

QRectF TimelineGeometry::columnOf(const TimelineStretch& stretch) const {
  constexpr double least = 3;
  const double from = xOf(stretch.from), width = std::max(least, xOf(stretch.to) - from);
  return {std::min(from, plot_.right() - width), plot_.top(), width, plot_.height()};
}

TimelinePlace placeAt(const Timeline& timeline, double time) {
  TimelinePlace place;
  place.isScanned = time < timeline.done;
  for (std::size_t i = 0; i < timeline.segments.size(); ++i) {
    if (!isIn(timeline.segments[i].at, time)) continue;
    place.segment = &timeline.segments[i];
    place.number = i + 1;
  }
  for (const TimelineStretch& each : timeline.unmatched) {
    if (isIn(each, time)) place.unmatched = &each;
  }
  for (const UnmeasuredStretch& each : timeline.unmeasured) {
    if (isIn(each.at, time)) place.unmeasured = &each;
  }
  return place;
}

std::vector<double> boundariesOf(const Timeline& timeline) {
  std::vector<double> times{0};
  const auto add = [&](const TimelineStretch& stretch) { times.insert(times.end(), {stretch.from, stretch.to}); };
  for (const TimelineSegment& each : timeline.segments) add(each.at);
  for (const TimelineStretch& each : timeline.unmatched) add(each);
  for (const UnmeasuredStretch& each : timeline.unmeasured) add(each.at);
  times.insert(times.end(), timeline.cuts.begin(), timeline.cuts.end());
  std::sort(times.begin(), times.end());
  times.erase(std::unique(times.begin(), times.end()), times.end());
  // Where the movie ends nothing begins.
  while (!times.empty() && times.back() > 0 && times.back() >= timeline.seconds) times.pop_back();
  return times;
}

std::optional<double> boundaryAfter(const Timeline& timeline, double time, double least) {
  for (const double each : boundariesOf(timeline)) {
    if (each > time + least) return each;
  }
  return std::nullopt;
}

std::optional<double> boundaryBefore(const Timeline& timeline, double time, double least) {
  std::optional<double> before;
  for (const double each : boundariesOf(timeline)) {
    if (each < time - least) before = each;
  }
  return before;
}

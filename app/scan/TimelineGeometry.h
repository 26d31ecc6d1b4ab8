#pragma once

#include <QRectF>
#include <optional>
#include <vector>

#include "app/scan/Timeline.h"

/// Where the parts of a timeline stand in a picture.
struct TimelineRooms {
  QRectF bands;  ///< of the segments' words
  QRectF plot;   ///< of the curve
  QRectF scale;  ///< of the numbers beside it
};
/// `line`: the height of a line of text; `number`: the width of a number. The lowest number stands half below the plot.
TimelineRooms roomsIn(const QSizeF& size, double line, double number);

/// Exponents are shown from one over this to this.
double reachOf(const Timeline& timeline);

/// Times and exponents in a plot. Exponents stand by their logarithms, 1.00 in the middle, higher ones above.
class TimelineGeometry {
 public:
  TimelineGeometry(const QRectF& plot, double seconds, double reach) : plot_(plot), seconds_(seconds), reach_(reach) {}

  double xOf(double time) const;
  /// Of a place within the plot or beside it: held at both ends.
  double timeAt(double x) const;
  /// Held at both ends.
  double yOf(double logExponent) const;
  /// A stretch as wide as it is, but never so narrow that it cannot be seen.
  QRectF columnOf(const TimelineStretch& stretch) const;

 private:
  QRectF plot_;
  double seconds_, reach_;
};

/// What a time lies in.
struct TimelinePlace {
  const TimelineSegment* segment = nullptr;
  std::size_t number = 0;  ///< of the segment, from 1
  const TimelineStretch* unmatched = nullptr;
  const UnmeasuredStretch* unmeasured = nullptr;
  bool isScanned = false;
};
TimelinePlace placeAt(const Timeline& timeline, double time);

/// Where something begins or ends: the beginning of the movie, segments, stretches, cuts. Ascending, none twice.
std::vector<double> boundariesOf(const Timeline& timeline);
/// The next one after a time, or before it; none where there is no more. One that is nearer than `least` is this one.
std::optional<double> boundaryAfter(const Timeline& timeline, double time, double least);
std::optional<double> boundaryBefore(const Timeline& timeline, double time, double least);

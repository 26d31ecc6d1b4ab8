#pragma once

#include <QCoreApplication>
#include <QPainter>
#include <QPalette>

#include "app/scan/Timeline.h"
#include "app/scan/TimelineGeometry.h"

/// How a timeline is painted.
struct TimelineLook {
  TimelineRooms rooms;
  QPalette palette;
  bool holds = true, hasFocus = false;
};

/// Paints a timeline. Nothing is told by colour alone: stretches differ by their patterns, segments by their words and
/// frames, places by their shapes.
class TimelinePainting {
  Q_DECLARE_TR_FUNCTIONS(TimelinePainting)

 public:
  TimelinePainting(QPainter& painter, TimelineLook look, const Timeline& timeline);

  void paint(double playhead);
  /// That the scale beside the plot shows.
  static QString widestNumber();

 private:
  void paintGround();
  void paintStretches();
  void paintWords(const TimelineStretch& stretch, const QString& words);
  void paintScale();
  void paintCuts();
  void paintCurve();
  void paintSegments();
  void paintWorst();
  void paintPlayhead(double playhead);
  void paintSpread(const QColor& color);
  QColor faint(float share) const;

  QPainter& painter_;
  TimelineLook look_;
  const Timeline& timeline_;
  double reach_;
  TimelineGeometry geometry_;
  QColor line_;
};

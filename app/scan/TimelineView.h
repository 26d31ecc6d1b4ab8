#pragma once

#include <QWidget>

#include "app/scan/ScanWords.h"
#include "app/scan/Timeline.h"
#include "app/scan/TimelineGeometry.h"

/// The exponent over the destination's time, with segments, cuts, stretches without a counterpart and unmeasured ones,
/// the worst frame, and where the playhead is. A click chooses a place, Left and Right the next one where something
/// begins or ends, Home and End the ends, Return the place of the playhead.
class TimelineView : public QWidget {
  Q_OBJECT

 public:
  explicit TimelineView(QWidget* parent = nullptr);

  void setTimeline(const Timeline& timeline);
  const Timeline& timeline() const { return timeline_; }
  /// Faint where it holds no longer.
  void setHolds(bool holds);
  /// Seconds of the destination.
  void setPlayhead(double seconds);
  double playhead() const { return playhead_; }
  void setTimeText(TimeText text) { text_ = std::move(text); }

  /// Where a time stands in the widget.
  double xOf(double time) const { return placing().xOf(time); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 signals:
  void placeChosen(double seconds);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  TimelineRooms rooms() const;
  TimelineGeometry placing() const;
  std::optional<double> placeOf(int key) const;
  void describe();

  Timeline timeline_;
  TimeText text_ = [](double seconds) { return QString::number(seconds); };
  double playhead_ = 0;
  bool holds_ = true;
};

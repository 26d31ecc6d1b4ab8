#pragma once

#include <QSlider>

/// A horizontal slider whose handle jumps to where it is clicked and follows the hand from there.
class Scrubber : public QSlider {
  Q_OBJECT

 public:
  explicit Scrubber(QWidget* parent = nullptr);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  int valueAt(int x) const;
};

#pragma once

#include <QWidget>
#include <vector>

#include "diagnosis/ToneCurve.h"

/// The tone curve as a small picture: source to the right, destination upwards, both in codes of 8 bits; on the dotted
/// line both are the same, and the frame within is video range.
class CurvePicture : public QWidget {
  Q_OBJECT

 public:
  explicit CurvePicture(QWidget* parent = nullptr);
  void setCurve(std::vector<diagnosis::CurvePoint> curve);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::vector<diagnosis::CurvePoint> curve_;
};

#include "app/widgets/Scrubber.h"

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSlider>

namespace {

constexpr int finest = 100000;  // finer than any screen

}  // namespace

Scrubber::Scrubber(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setRange(0, finest);
  setFocusPolicy(Qt::TabFocus);
}

int Scrubber::valueAt(int x) const {
  QStyleOptionSlider option;
  initStyleOption(&option);
  const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
  const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
  const int room = groove.width() - handle.width();
  return QStyle::sliderValueFromPosition(minimum(), maximum(), x - groove.x() - handle.width() / 2, room,
                                         option.upsideDown);
}

void Scrubber::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  setSliderDown(true);
  setValue(valueAt(qRound(event->position().x())));
  event->accept();
}

void Scrubber::mouseMoveEvent(QMouseEvent* event) {
  if (isSliderDown()) setValue(valueAt(qRound(event->position().x())));
}

void Scrubber::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) setSliderDown(false);
}

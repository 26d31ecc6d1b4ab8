#include "app/widgets/OneLineLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "app/widgets/PlainToolTip.h"

OneLineLabel::OneLineLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

bool OneLineLabel::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QLabel::event(event);
  const bool hasRoom = fontMetrics().horizontalAdvance(text()) <= width();
  QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), hasRoom ? QString() : plainToolTip(text()), this);
  return true;
}

void OneLineLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}

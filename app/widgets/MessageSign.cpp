#include "app/widgets/MessageSign.h"

#include <QLineF>
#include <QList>
#include <QPainter>
#include <QPainterPath>

namespace {

// All are drawn in a square of side 1.

QPainterPath shapeOf(MessageKind kind) {
  QPainterPath path;
  switch (kind) {
    case MessageKind::Information:
    case MessageKind::Success:
      path.addEllipse(QRectF(0, 0, 1, 1));
      break;
    case MessageKind::Warning:
      path.addPolygon(QPolygonF({{0.5, 0.02}, {1.02, 0.98}, {-0.02, 0.98}}));
      break;
    case MessageKind::Failure:
      path.addPolygon(
          QPolygonF({{0.29, 0}, {0.71, 0}, {1, 0.29}, {1, 0.71}, {0.71, 1}, {0.29, 1}, {0, 0.71}, {0, 0.29}}));
      break;
  }
  path.closeSubpath();
  return path;
}

/// Points are short lines, which the ends of the pen make round.
QList<QLineF> markOf(MessageKind kind) {
  switch (kind) {
    case MessageKind::Information:
      return {{0.5, 0.26, 0.5, 0.27}, {0.5, 0.48, 0.5, 0.76}};
    case MessageKind::Success:
      return {{0.27, 0.52, 0.44, 0.69}, {0.44, 0.69, 0.74, 0.33}};
    case MessageKind::Warning:
      return {{0.5, 0.37, 0.5, 0.64}, {0.5, 0.82, 0.5, 0.83}};
    case MessageKind::Failure:
      break;
  }
  return {{0.31, 0.31, 0.69, 0.69}, {0.69, 0.31, 0.31, 0.69}};
}

}  // namespace

MessageSign::MessageSign(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QColor MessageSign::colorOf(MessageKind kind, bool onDark) {
  switch (kind) {
    case MessageKind::Information:
      return onDark ? QColor(120, 180, 250) : QColor(25, 95, 175);
    case MessageKind::Success:
      return onDark ? QColor(110, 205, 125) : QColor(25, 120, 50);
    case MessageKind::Warning:
      return onDark ? QColor(240, 190, 80) : QColor(165, 95, 0);
    case MessageKind::Failure:
      break;
  }
  return onDark ? QColor(255, 130, 120) : QColor(190, 25, 25);
}

void MessageSign::setKind(std::optional<MessageKind> kind) {
  kind_ = kind;
  update();
}

QSize MessageSign::sizeHint() const {
  const int side = fontMetrics().height();
  return {side, side};
}

void MessageSign::paintEvent(QPaintEvent* /*event*/) {
  if (!kind_) return;
  const QColor ground = palette().color(QPalette::Window);
  constexpr int middle = 128;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double side = qMin(width(), height()) - 1;
  painter.translate((width() - side) / 2, (height() - side) / 2);
  painter.scale(side, side);
  painter.fillPath(shapeOf(*kind_), colorOf(*kind_, ground.lightness() < middle));
  constexpr double thickness = 0.12;
  painter.setPen(QPen(ground, thickness, Qt::SolidLine, Qt::RoundCap));
  painter.drawLines(markOf(*kind_));
}

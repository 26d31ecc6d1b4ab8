#include "app/widgets/ApplicationIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

// Drawn in a square of side 1.

void drawFrame(QPainter& painter) {
  QLinearGradient steel(0, 0.05, 0, 0.95);
  steel.setColorAt(0, QColor(58, 68, 84));
  steel.setColorAt(1, QColor(30, 36, 46));
  painter.setPen(Qt::NoPen);
  painter.setBrush(steel);
  painter.drawRoundedRect(QRectF(0.05, 0.05, 0.9, 0.9), 0.19, 0.19);
}

/// Two halves of one grey ramp: as it should be, and as a wrong gamma shows it.
void drawHalves(QPainter& painter) {
  const QRectF disc(0.2, 0.2, 0.6, 0.6);
  QLinearGradient right(0, disc.top(), 0, disc.bottom()), wrong = right;
  right.setColorAt(0, QColor(255, 236, 196));
  right.setColorAt(1, QColor(240, 168, 60));
  wrong.setColorAt(0, QColor(188, 146, 84));
  wrong.setColorAt(1, QColor(110, 62, 18));
  painter.setBrush(right);
  painter.drawPie(disc, 90 * 16, 180 * 16);
  painter.setBrush(wrong);
  painter.drawPie(disc, -90 * 16, 180 * 16);
  painter.setPen(QPen(QColor(255, 255, 255, 230), 0.028, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(QPointF(0.5, 0.14), QPointF(0.5, 0.86));
}

}  // namespace

void drawApplicationIcon(QPainter& painter, int side) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(side, side);
  drawFrame(painter);
  drawHalves(painter);
}

QImage applicationIconImage(int side) {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawApplicationIcon(painter, side);
  return image;
}

QIcon applicationIcon() {
  QIcon icon;
  for (const int side : {16, 24, 32, 48, 64, 128, 256}) icon.addPixmap(QPixmap::fromImage(applicationIconImage(side)));
  return icon;
}

#include "app/verdict/CurvePicture.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <utility>

namespace {

constexpr double highestCode = 255, black = 16, white = 235;

QPointF inPicture(const QRectF& room, double source, double dest) {
  return {room.left() + room.width() * source / highestCode, room.bottom() - room.height() * dest / highestCode};
}

QPainterPath pathOf(const QRectF& room, const std::vector<diagnosis::CurvePoint>& curve) {
  QPainterPath path;
  for (const diagnosis::CurvePoint& point : curve) {
    const QPointF place =
        inPicture(room, std::clamp(point.source, 0.0, highestCode), std::clamp(point.dest, 0.0, highestCode));
    path.elementCount() == 0 ? path.moveTo(place) : path.lineTo(place);
  }
  return path;
}

}  // namespace

CurvePicture::CurvePicture(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("curvePicture"));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setAccessibleName(tr("Tone curve"));
  setToolTip(
      tr("The destination's brightness (upwards) for each brightness of the source (to the right).\n"
         "On the dotted line both are the same."));
}

void CurvePicture::setCurve(std::vector<diagnosis::CurvePoint> curve) {
  curve_ = std::move(curve);
  update();
}

QSize CurvePicture::sizeHint() const {
  constexpr int lines = 6;
  const int side = lines * fontMetrics().lineSpacing();
  return {side, side};
}

void CurvePicture::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF room = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  const QColor line = palette().color(QPalette::Text);
  constexpr float faintness = 0.35F;
  QColor faint = line;
  faint.setAlphaF(faintness * line.alphaF());
  painter.fillRect(room, palette().color(QPalette::Base));
  painter.setPen(QPen(faint, 1));
  painter.drawRect(room);
  painter.drawRect(QRectF(inPicture(room, black, white), inPicture(room, white, black)));
  painter.setPen(QPen(line, 1, Qt::DotLine));
  painter.drawLine(inPicture(room, 0, 0), inPicture(room, highestCode, highestCode));
  constexpr double thickness = 2;
  painter.setPen(QPen(palette().color(QPalette::Highlight), thickness, Qt::SolidLine, Qt::RoundCap));
  painter.drawPath(pathOf(room, curve_));
}

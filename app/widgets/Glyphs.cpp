#include "app/widgets/Glyphs.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionToolButton>
#include <QStylePainter>

#include "app/messages/WhyNot.h"

namespace {

// All are drawn in a square of side 1.

void addTriangle(QPainterPath& path, double left, double right) {
  constexpr double top = 0.15, bottom = 0.85;
  path.moveTo(left, top);
  path.lineTo(right, (top + bottom) / 2);
  path.lineTo(left, bottom);
  path.closeSubpath();
}

void addSpeaker(QPainterPath& path) {
  path.moveTo(0.05, 0.36);
  path.lineTo(0.24, 0.36);
  path.lineTo(0.5, 0.14);
  path.lineTo(0.5, 0.86);
  path.lineTo(0.24, 0.64);
  path.lineTo(0.05, 0.64);
  path.closeSubpath();
}

/// An open arc around the speaker's mouth, as a band.
void addWave(QPainterPath& path, double radius) {
  QPainterPath arc;
  const QRectF circle(0.5 - radius, 0.5 - radius, 2 * radius, 2 * radius);
  arc.arcMoveTo(circle, -45);
  arc.arcTo(circle, -45, 90);
  QPainterPathStroker stroker;
  stroker.setWidth(0.09);
  stroker.setCapStyle(Qt::RoundCap);
  path.addPath(stroker.createStroke(arc));
}

QPainterPath pathOf(Glyph glyph) {
  QPainterPath path;
  switch (glyph) {
    case Glyph::Play:
      addTriangle(path, 0.2, 0.85);
      break;
    case Glyph::Pause:
      path.addRect(QRectF(0.2, 0.15, 0.2, 0.7));
      path.addRect(QRectF(0.6, 0.15, 0.2, 0.7));
      break;
    case Glyph::StepForward:
      addTriangle(path, 0.15, 0.65);
      path.addRect(QRectF(0.7, 0.15, 0.13, 0.7));
      break;
    case Glyph::StepBack:
      addTriangle(path, 0.85, 0.35);
      path.addRect(QRectF(0.17, 0.15, 0.13, 0.7));
      break;
    case Glyph::Sound:
      addSpeaker(path);
      addWave(path, 0.22);
      addWave(path, 0.4);
      break;
    case Glyph::Silence:
      addSpeaker(path);
      break;
  }
  return path;
}

}  // namespace

GlyphButton::GlyphButton(Glyph glyph, const QString& name, const QString& keys, QWidget* parent)
    : QToolButton(parent), glyph_(glyph) {
  setAutoRaise(true);
  setFocusPolicy(Qt::TabFocus);
  setGlyph(glyph, name, keys);
}

void GlyphButton::setGlyph(Glyph glyph, const QString& name, const QString& keys) {
  glyph_ = glyph;
  keys_ = keys;
  setAccessibleName(name);
  showToolTip();
  update();
}

void GlyphButton::setWhyNot(const QString& why) {
  whyNot_ = why;
  showToolTip();
}

void GlyphButton::showToolTip() {
  const QString name = accessibleName();
  setToolTip(WhyNot::inToolTip(keys_.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, keys_), whyNot_));
}

QSize GlyphButton::sizeHint() const {
  const int side = qRound(fontMetrics().height() * 1.6);
  return {side, side};
}

void GlyphButton::paintEvent(QPaintEvent* /*event*/) {
  QStylePainter painter(this);
  QStyleOptionToolButton option;
  initStyleOption(&option);
  painter.drawComplexControl(QStyle::CC_ToolButton, option);
  if (hasFocus()) {
    QStyleOptionFocusRect focus;
    focus.QStyleOption::operator=(option);
    focus.rect = rect().adjusted(2, 2, -2, -2);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
  }
  const double side = fontMetrics().height() * 0.95;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate((width() - side) / 2, (height() - side) / 2);
  painter.scale(side, side);
  const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  painter.fillPath(pathOf(glyph_), palette().color(group, QPalette::ButtonText));
}

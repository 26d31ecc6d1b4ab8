#include "app/scan/TimelinePainting.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <utility>

#include "app/widgets/MessageSign.h"

namespace {

QString inScale(double exponent) {
  return QLocale().toString(exponent, 'f', 2);
}

bool isOnDark(const QPalette& palette) {
  constexpr int middle = 128;
  return palette.color(QPalette::Window).lightness() < middle;
}

}  // namespace

TimelinePainting::TimelinePainting(QPainter& painter, TimelineLook look, const Timeline& timeline)
    : painter_(painter),
      look_(std::move(look)),
      timeline_(timeline),
      reach_(reachOf(timeline)),
      geometry_(look_.rooms.plot, timeline.seconds, reach_),
      line_(look_.palette.color(QPalette::Text)) {
  painter_.setRenderHint(QPainter::Antialiasing);
}

QString TimelinePainting::widestNumber() {
  constexpr double widest = 10;
  return inScale(widest);
}

QColor TimelinePainting::faint(float share) const {
  QColor color = line_;
  color.setAlphaF(share);
  return color;
}

void TimelinePainting::paint(double playhead) {
  constexpr double past = 0.45;
  if (!look_.holds) painter_.setOpacity(past);
  paintGround();
  paintStretches();
  paintScale();
  paintCuts();
  paintCurve();
  paintSegments();
  paintWorst();
  painter_.setOpacity(1);
  paintPlayhead(playhead);
}

/// What has not been scanned has no ground.
void TimelinePainting::paintGround() {
  constexpr float edge = 0.4F;
  const QRectF& plot = look_.rooms.plot;
  if (timeline_.done > 0) {
    painter_.fillRect(QRectF(plot.topLeft(), QPointF(geometry_.xOf(timeline_.done), plot.bottom())),
                      look_.palette.color(QPalette::Base));
  }
  const QColor focus = look_.palette.color(QPalette::Highlight);
  painter_.setPen(look_.hasFocus ? QPen(focus, 2) : QPen(faint(edge), 1));
  painter_.setBrush(Qt::NoBrush);
  painter_.drawRect(plot);
}

/// Hatched: no counterpart. Dotted: not measured.
void TimelinePainting::paintStretches() {
  constexpr float hatch = 0.55F, dots = 0.5F;
  painter_.setPen(Qt::NoPen);
  for (const TimelineStretch& each : timeline_.unmatched) {
    painter_.fillRect(geometry_.columnOf(each), QBrush(faint(hatch), Qt::BDiagPattern));
    paintWords(each, tr("no counterpart"));
  }
  for (const UnmeasuredStretch& each : timeline_.unmeasured) {
    painter_.fillRect(geometry_.columnOf(each.at), QBrush(faint(dots), Qt::Dense6Pattern));
    paintWords(each.at, tr("not measured"));
  }
}

/// On a ground of their own at the foot of a stretch, where there is room for all of them.
void TimelinePainting::paintWords(const TimelineStretch& stretch, const QString& words) {
  constexpr double around = 4;
  const QFontMetricsF metrics(painter_.font());
  const QRectF column = geometry_.columnOf(stretch);
  QRectF ground(0, 0, metrics.horizontalAdvance(words) + 2 * around, metrics.height());
  if (ground.width() > column.width() - 2 || 2 * ground.height() > column.height()) return;
  ground.moveCenter(column.center());
  ground.moveBottom(column.bottom() - 2);
  painter_.fillRect(ground, look_.palette.color(QPalette::Base));
  painter_.setPen(line_);
  painter_.drawText(ground, Qt::AlignCenter, words);
  painter_.setPen(Qt::NoPen);
}

void TimelinePainting::paintScale() {
  constexpr float soft = 0.75F;
  const QRectF &plot = look_.rooms.plot, &scale = look_.rooms.scale;
  const double height = QFontMetricsF(painter_.font()).height();
  painter_.setPen(QPen(faint(soft), 1, Qt::DashLine));
  painter_.drawLine(QPointF(plot.left(), plot.center().y()), QPointF(plot.right(), plot.center().y()));
  painter_.setPen(look_.palette.color(QPalette::WindowText));
  const auto write = [&](double exponent) {
    const double top = geometry_.yOf(std::log(exponent)) - height / 2;
    painter_.drawText(QRectF(scale.left(), top, scale.width(), height), Qt::AlignRight | Qt::AlignVCenter,
                      inScale(exponent));
  };
  write(1);
  if (plot.height() < 2 * height) return;
  write(reach_);
  write(1 / reach_);
}

/// A line with a wedge at each end.
void TimelinePainting::paintCuts() {
  constexpr double half = 4;
  const QRectF& plot = look_.rooms.plot;
  for (const double cut : timeline_.cuts) {
    const double x = geometry_.xOf(cut);
    painter_.setPen(QPen(line_, 1, Qt::DotLine));
    painter_.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(line_);
    painter_.drawPolygon(QPolygonF({{x - half, plot.top()}, {x + half, plot.top()}, {x, plot.top() + 1.5 * half}}));
    painter_.drawPolygon(
        QPolygonF({{x - half, plot.bottom()}, {x + half, plot.bottom()}, {x, plot.bottom() - 1.5 * half}}));
  }
}

/// From the lowest to the highest frame of each bin.
void TimelinePainting::paintSpread(const QColor& color) {
  painter_.setPen(Qt::NoPen);
  for (std::size_t i = 0; i < timeline_.bins.size(); ++i) {
    const TimelineBin& bin = timeline_.bins[i];
    if (bin.measured == 0) continue;
    const double from = geometry_.xOf(timeline_.startOf(i)), to = geometry_.xOf(timeline_.startOf(i + 1));
    const double top = geometry_.yOf(bin.logHigh), bottom = geometry_.yOf(bin.logLow);
    painter_.fillRect(QRectF(from, top, std::max(1.0, to - from), bottom - top), color);
  }
}

/// Broken off where nothing was measured for longer than frames are apart.
void TimelinePainting::paintCurve() {
  constexpr float spread = 0.35F;
  constexpr double thickness = 2;
  const QColor color = look_.palette.color(QPalette::Highlight);
  QColor soft = color;
  soft.setAlphaF(spread);
  paintSpread(soft);
  QPainterPath path;
  bool isOpen = false;
  for (std::size_t i = 0; i < timeline_.bins.size(); ++i) {
    const TimelineBin& bin = timeline_.bins[i];
    if (bin.measured == 0) {
      isOpen = isOpen && bin.frames == 0;
      continue;
    }
    const double y = geometry_.yOf(bin.mean());
    const QPointF from(geometry_.xOf(timeline_.startOf(i)), y), to(geometry_.xOf(timeline_.startOf(i + 1)), y);
    isOpen ? path.lineTo(from) : path.moveTo(from);
    path.lineTo(to);
    isOpen = true;
  }
  painter_.setBrush(Qt::NoBrush);
  painter_.setPen(QPen(color, thickness, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter_.drawPath(path);
}

/// Bands with their words: what differs has the colour of a failure and a bar below.
void TimelinePainting::paintSegments() {
  constexpr float ground = 0.22F;
  constexpr double bar = 3, besides = 4;
  const QFontMetricsF metrics(painter_.font());
  const QRectF& bands = look_.rooms.bands;
  for (const TimelineSegment& segment : timeline_.segments) {
    const QRectF column = geometry_.columnOf(segment.at);
    const QRectF band(column.left() + 0.5, bands.top(), std::max(2.0, column.width() - 1), bands.height());
    const MessageKind kind = segment.differs ? MessageKind::Failure : MessageKind::Success;
    QColor color = MessageSign::colorOf(kind, isOnDark(look_.palette));
    const QColor full = color;
    color.setAlphaF(ground);
    painter_.fillRect(band, color);
    if (segment.differs) painter_.fillRect(QRectF(band.left(), band.bottom() - bar, band.width(), bar), full);
    const QRectF room = band.adjusted(besides, 0, -besides, 0);
    const QString words = metrics.elidedText(segment.word, Qt::ElideRight, room.width());
    constexpr qsizetype tooFew = 3;
    painter_.setPen(look_.palette.color(QPalette::WindowText));
    if (words.size() > tooFew) painter_.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, words);
  }
}

/// A diamond on the curve.
void TimelinePainting::paintWorst() {
  if (!timeline_.worst) return;
  constexpr double half = 5;
  const QPointF at(geometry_.xOf(timeline_.worst->at), geometry_.yOf(std::log(timeline_.worst->exponent)));
  painter_.setPen(QPen(look_.palette.color(QPalette::Base), 1));
  painter_.setBrush(MessageSign::colorOf(MessageKind::Failure, isOnDark(look_.palette)));
  painter_.drawPolygon(
      QPolygonF({at + QPointF(0, -half), at + QPointF(half, 0), at + QPointF(0, half), at + QPointF(-half, 0)}));
}

/// A line through all, with a head above the plot.
void TimelinePainting::paintPlayhead(double playhead) {
  constexpr double half = 4, thickness = 1.5;
  const QRectF& plot = look_.rooms.plot;
  const QColor color = look_.palette.color(QPalette::WindowText);
  const double x = geometry_.xOf(playhead);
  painter_.setPen(QPen(color, thickness));
  painter_.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(color);
  painter_.drawPolygon(
      QPolygonF({{x - half, plot.top() - half}, {x + half, plot.top() - half}, {x, plot.top() + half}}));
}

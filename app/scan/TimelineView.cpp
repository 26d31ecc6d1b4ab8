#include "app/scan/TimelineView.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>
#include <utility>

#include "app/scan/TimelinePainting.h"
#include "app/widgets/PlainToolTip.h"

namespace {

bool isOurs(const QKeyEvent& event) {
  if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;
  switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return true;
    default:
      return false;
  }
}

}  // namespace

TimelineView::TimelineView(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("timeline"));
  setAccessibleName(tr("Timeline of the scan"));
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  setCursor(Qt::PointingHandCursor);
}

void TimelineView::setTimeline(const Timeline& timeline) {
  timeline_ = timeline;
  describe();
  update();
}

void TimelineView::setHolds(bool holds) {
  if (std::exchange(holds_, holds) != holds) update();
}

void TimelineView::setPlayhead(double seconds) {
  if (std::exchange(playhead_, seconds) != seconds) update();
}

QSize TimelineView::sizeHint() const {
  constexpr int lines = 6, wide = 480;
  return {wide, lines * fontMetrics().lineSpacing()};
}

QSize TimelineView::minimumSizeHint() const {
  constexpr int lines = 4, narrow = 240;
  return {narrow, lines * fontMetrics().lineSpacing()};
}

TimelineRooms TimelineView::rooms() const {
  return roomsIn(size(), fontMetrics().lineSpacing(),
                 fontMetrics().horizontalAdvance(TimelinePainting::widestNumber()));
}

TimelineGeometry TimelineView::placing() const {
  return {rooms().plot, timeline_.seconds, reachOf(timeline_)};
}

void TimelineView::describe() {
  const QString summary = ScanWords::summary(timeline_, text_);
  if (summary != accessibleDescription()) setAccessibleDescription(summary);
}

void TimelineView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  TimelinePainting(painter, {.rooms = rooms(), .palette = palette(), .holds = holds_, .hasFocus = hasFocus()},
                   timeline_)
      .paint(playhead_);
}

/// The window has other uses for these keys.
bool TimelineView::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && isOurs(*static_cast<QKeyEvent*>(event))) {
    event->accept();
    return true;
  }
  if (event->type() == QEvent::ToolTip) {
    const auto* const help = static_cast<QHelpEvent*>(event);
    const QString place = ScanWords::place(timeline_, placing().timeAt(help->pos().x()), text_);
    const QString legend = tr("Above the line the destination is darker, below it lighter.");
    QToolTip::showText(help->globalPos(), plainToolTip(place.isEmpty() ? legend : place + u'\n' + legend), this);
    return true;
  }
  return QWidget::event(event);
}

void TimelineView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || timeline_.seconds <= 0) return event->ignore();
  emit placeChosen(placing().timeAt(event->position().x()));
}

void TimelineView::mouseMoveEvent(QMouseEvent* event) {
  if ((event->buttons() & Qt::LeftButton) == 0 || timeline_.seconds <= 0) return event->ignore();
  emit placeChosen(placing().timeAt(event->position().x()));
}

std::optional<double> TimelineView::placeOf(int key) const {
  // A playhead may stand within the frame that begins there.
  constexpr double least = 0.001;
  switch (key) {
    case Qt::Key_Left:
      return boundaryBefore(timeline_, playhead_, least);
    case Qt::Key_Right:
      return boundaryAfter(timeline_, playhead_, least);
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return timeline_.seconds;
    default:
      return playhead_;
  }
}

void TimelineView::keyPressEvent(QKeyEvent* event) {
  if (!isOurs(*event) || timeline_.seconds <= 0) return QWidget::keyPressEvent(event);
  if (const auto place = placeOf(event->key())) emit placeChosen(*place);
}

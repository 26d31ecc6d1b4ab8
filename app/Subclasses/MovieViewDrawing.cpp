#include <QMouseEvent>
#include <QPainter>
#include <QTextOption>

#include "app/Subclasses/MovieShape.h"
#include "app/Subclasses/QVMovieView.h"

namespace {

constexpr int focusWidth = 2;
const QColor ground(18, 18, 18);
const QColor words(170, 170, 170);

}  // namespace

/// Where the picture lies: all of it, in the movie's shape, in the middle.
QRect QVMovieView::pictureRect() const {
  if (!movie_) return {};
  const QSizeF shape = shapeOf(movie_->content());
  if (shape.isEmpty()) return {};
  const QSize fitted = shape.scaled(size(), Qt::KeepAspectRatio).toSize().expandedTo({1, 1});
  return {QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted};
}

QSize QVMovieView::pictureSize() const {
  return (QSizeF(pictureRect().size()) * devicePixelRatioF()).toSize();
}

void QVMovieView::setDragged(bool dragged) {
  dragged_ = dragged;
  update();
}

void QVMovieView::paintEvent(QPaintEvent* /*event*/) {
  askForPictures();  // the screen may be another, with other device pixels
  QPainter painter(this);
  painter.fillRect(rect(), ground);
  if (!picture_.isNull()) {
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(pictureRect(), picture_);
  }
  const QString text = message();
  if (!text.isEmpty()) {
    painter.setPen(words);
    const int margin = fontMetrics().height();
    QTextOption folded(Qt::AlignCenter);
    folded.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    painter.drawText(QRectF(rect()).adjusted(margin, margin, -margin, -margin), text, folded);
  }
  if (dragged_ || hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), dragged_ ? 2 * focusWidth : focusWidth));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
  }
}

void QVMovieView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  askForPictures();
}

void QVMovieView::mousePressEvent(QMouseEvent* event) {
  setFocus(Qt::MouseFocusReason);
  event->accept();
}

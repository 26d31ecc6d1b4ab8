#include "app/Subclasses/QVQTWindow.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>
#include <utility>

namespace {

bool isText(const QWidget* widget) {
  return qobject_cast<const QLineEdit*>(widget) != nullptr || qobject_cast<const QTextEdit*>(widget) != nullptr;
}

/// Whether the widget would use the key itself.
bool claims(QWidget* widget, const QKeyEvent& event) {
  QKeyEvent asked(QEvent::ShortcutOverride, event.key(), event.modifiers(), event.text(), event.isAutoRepeat());
  asked.ignore();
  static_cast<QObject*>(widget)->event(&asked);
  return asked.isAccepted();
}

/// moveForward: and moveBackward: of a text. False for any other key.
bool moveCursor(QWidget* text, int key) {
  const bool forward = key == Qt::Key_Right;
  if (!forward && key != Qt::Key_Left) return false;
  if (auto* line = qobject_cast<QLineEdit*>(text)) {
    forward ? line->cursorForward(false) : line->cursorBackward(false);
    return true;
  }
  auto* const edit = qobject_cast<QTextEdit*>(text);
  if (edit != nullptr) edit->moveCursor(forward ? QTextCursor::Right : QTextCursor::Left);
  return edit != nullptr;
}

/// What a control without text does with a key that the window has a use for too.
bool usesItself(const QWidget& widget, const QKeyEvent& event) {
  if (event.modifiers() != Qt::NoModifier) return false;
  if (qobject_cast<const QAbstractButton*>(&widget) != nullptr) return event.key() == Qt::Key_Space;
  const auto* const slider = qobject_cast<const QAbstractSlider*>(&widget);
  if (slider == nullptr || slider->singleStep() == 0) return false;
  switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
      return true;
    default:
      return false;
  }
}

}  // namespace

QVQTWindow::QVQTWindow(QWidget* parent) : QMainWindow(parent) {
  qApp->installEventFilter(this);
}

void QVQTWindow::setDefaultButton(QPushButton* button) {
  defaultButton_ = button;
  button->setDefault(true);
}

bool QVQTWindow::performKeyEquivalent(QKeyEvent& event) {
  QWidget* const firstResponder = focusWidget();
  if (isText(firstResponder)) {
    if (claims(firstResponder, event)) return true;
    if (moveCursor(firstResponder, event.key())) {
      handledKey_ = event.key();
      return true;
    }
  } else if (firstResponder != nullptr && usesItself(*firstResponder, event)) {
    return true;
  }
  return false;
}

/// Sees each key before the control in focus and the shortcuts do.
bool QVQTWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress) return false;
  auto* const widget = qobject_cast<QWidget*>(watched);
  if (widget == nullptr || widget != focusWidget() || widget->window() != this) return false;
  auto& key = static_cast<QKeyEvent&>(*event);
  if (event->type() == QEvent::KeyPress) {
    pressedInText_ = isText(widget);
    return std::exchange(handledKey_, 0) == key.key();
  }
  handledKey_ = 0;
  if (!performKeyEquivalent(key)) return false;
  key.accept();
  return true;
}

void QVQTWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange || isFullScreen() == wasFullScreen_) return;
  wasFullScreen_ = isFullScreen();
  emit fullScreenDidChange(wasFullScreen_);
}

void QVQTWindow::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  // A text that took Return may have handed the focus on by now.
  if (std::exchange(pressedInText_, false) || !isReturn) return QMainWindow::keyPressEvent(event);
  auto* const focused = qobject_cast<QAbstractButton*>(focusWidget());
  QAbstractButton* const pressed = focused != nullptr ? focused : defaultButton_;
  if (pressed != nullptr) pressed->click();
}

void QVQTWindow::selectNextKeyView(const QWidget* /*sender*/) {
  focusNextChild();
}

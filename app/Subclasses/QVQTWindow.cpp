#include "app/Subclasses/QVQTWindow.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <utility>

namespace {

bool isText(const QWidget* widget) {
  return qobject_cast<const QLineEdit*>(widget) != nullptr || qobject_cast<const QTextEdit*>(widget) != nullptr ||
         qobject_cast<const QPlainTextEdit*>(widget) != nullptr;
}

/// Whether the widget would use the key itself.
bool claims(QWidget* widget, const QKeyEvent& event) {
  QKeyEvent asked(QEvent::ShortcutOverride, event.key(), event.modifiers(), event.text(), event.isAutoRepeat());
  asked.ignore();
  static_cast<QObject*>(widget)->event(&asked);
  return asked.isAccepted();
}

/// moveForward: and moveBackward:
bool moveCursor(QWidget* text, int key) {
  const bool forward = key == Qt::Key_Right;
  if (auto* line = qobject_cast<QLineEdit*>(text)) {
    forward ? line->cursorForward(false) : line->cursorBackward(false);
    return true;
  }
  const auto operation = forward ? QTextCursor::Right : QTextCursor::Left;
  if (auto* edit = qobject_cast<QTextEdit*>(text)) {
    edit->moveCursor(operation);
    return true;
  }
  if (auto* plain = qobject_cast<QPlainTextEdit*>(text)) {
    plain->moveCursor(operation);
    return true;
  }
  return false;
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

// performKeyEquivalent:
bool QVQTWindow::performKeyEquivalent(QKeyEvent& event) {
  QWidget* const firstResponder = focusWidget();
  if (isText(firstResponder) && claims(firstResponder, event)) {
    QKeyEvent press(QEvent::KeyPress, event.key(), event.modifiers(), event.text(), event.isAutoRepeat());
    static_cast<QObject*>(firstResponder)->event(&press);
    return true;
  }
  return moveInTextBeingEdited(event) || performActionOf(event);
}

bool QVQTWindow::moveInTextBeingEdited(const QKeyEvent& event) {
  const bool arrow = event.key() == Qt::Key_Right || event.key() == Qt::Key_Left;
  return arrow && isText(focusWidget()) && moveCursor(focusWidget(), event.key());
}

/// The inherited part: the window's own keys.
bool QVQTWindow::performActionOf(const QKeyEvent& event) {
  const QKeySequence pressed(event.keyCombination());
  for (QAction* action : actions()) {
    if (!action->isEnabled() || !action->shortcuts().contains(pressed)) continue;
    action->trigger();
    return true;
  }
  return false;
}

/// Sees the keys of the control in focus before the shortcuts do: a text keeps its arrows, a button its space bar, a
/// slider its arrows.
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
  if (isText(widget)) {
    if (claims(widget, key) || !moveInTextBeingEdited(key)) return false;
    handledKey_ = key.key();
  } else if (!usesItself(*widget, key)) {
    return false;
  }
  key.accept();
  return true;
}

void QVQTWindow::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  // A text that took Return may have handed the focus on by now.
  if (std::exchange(pressedInText_, false) || !isReturn) return QMainWindow::keyPressEvent(event);
  auto* const focused = qobject_cast<QAbstractButton*>(focusWidget());
  QAbstractButton* const pressed = focused != nullptr ? focused : defaultButton_;
  if (pressed != nullptr) pressed->click();
}

// selectNextKeyView:
void QVQTWindow::selectNextKeyView(QWidget* sender) {
  for (QWidget* next = sender->nextInFocusChain(); next != sender; next = next->nextInFocusChain()) {
    if ((next->focusPolicy() & Qt::TabFocus) == 0 || !next->isEnabled() || !next->isVisibleTo(this)) continue;
    return next->setFocus(Qt::TabFocusReason);
  }
}

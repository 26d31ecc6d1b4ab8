#include "app/widgets/PathField.h"

#include <QFocusEvent>

PathField::PathField(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
    setToolTip(text);
    if (!hasFocus()) showEnd();
  });
}

void PathField::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // A menu needs the selection, and gives the focus back.
  const bool toMenu = event->reason() == Qt::PopupFocusReason || event->reason() == Qt::MenuBarFocusReason;
  if (!toMenu) showEnd();
}

void PathField::resizeEvent(QResizeEvent* event) {
  QLineEdit::resizeEvent(event);
  if (!hasFocus()) showEnd();
}

void PathField::showEnd() {
  end(false);
}

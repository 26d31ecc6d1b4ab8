#include "app/widgets/PathField.h"

#include "app/widgets/MenuFocus.h"
#include "app/widgets/PlainToolTip.h"

PathField::PathField(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
    setToolTip(plainToolTip(text));
    if (!hasFocus()) showEnd();
  });
}

void PathField::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  if (!goesToMenu(*event)) showEnd();
}

void PathField::resizeEvent(QResizeEvent* event) {
  QLineEdit::resizeEvent(event);
  if (!hasFocus()) showEnd();
}

void PathField::showEnd() {
  end(false);
}

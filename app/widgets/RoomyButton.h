#pragma once

#include <QPushButton>

/// A push button with room at the sides of its text: styles leave a long one hardly any.
inline QPushButton* roomyButton(const QString& text) {
  constexpr int room = 24;
  auto* const button = new QPushButton(text);
  button->setMinimumWidth(qMax(button->sizeHint().width(), button->fontMetrics().horizontalAdvance(text) + room));
  return button;
}

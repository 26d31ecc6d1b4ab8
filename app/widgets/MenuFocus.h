#pragma once

#include <QFocusEvent>

/// Whether the focus goes to a menu, which needs the selection and gives the focus back.
inline bool goesToMenu(const QFocusEvent& event) {
  return event.reason() == Qt::PopupFocusReason || event.reason() == Qt::MenuBarFocusReason;
}

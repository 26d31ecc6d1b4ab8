#pragma once

#include <QString>
#include <QTextDocument>

/// A tool tip that shows a text as it is, also where Qt would take something in it for markup.
inline QString plainToolTip(const QString& text) {
  return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

#pragma once

#include <QByteArray>
#include <QString>
#include <ostream>

// What a failed expectation shows of Qt's texts.

inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
  *out << '"' << bytes.toStdString() << '"';
}
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

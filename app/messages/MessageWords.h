#pragma once

#include <QCoreApplication>
#include <QString>
#include <chrono>

enum class MovieSide { Source, Destination };

/// What stands in the places of sentences.
class MessageWords final {
  Q_DECLARE_TR_FUNCTIONS(MessageWords)

 public:
  MessageWords() = delete;
  /// Somebody else's words without line breaks and the like, the middle left out where they are overlong.
  static QString oneLine(QString text);
  /// A file's name without its folder, so; the path where it ends in no name.
  static QString nameOf(const QString& path);
  /// A stretch of time as somebody waited for it: "less than 0.01 s", "0.02 s", "3 min 5 s".
  static QString spanOf(std::chrono::milliseconds span);
};

#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>

#include "movie/atoms/MovieError.h"

/// What the movie layer says of a frame that cannot be had, in the user's language. The layer knows no languages: its
/// reasons are English clauses, which the log and the command show as they are. Here is a table of those that the
/// window can come to show, as patterns; what is not in it (of libav, of the system) stays as it is.
/// tools/check_translations.py holds the table and the layer's sources together.
class MovieReasons final {
  Q_DECLARE_TR_FUNCTIONS(MovieReasons)

 public:
  MovieReasons() = delete;
  /// One sentence with a full stop, as MovieError::message(). Main thread only.
  static QString sentenceOf(const movie::MovieError& error);
  /// A clause, and the clauses in it.
  static QString clauseOf(const QString& reason);
};

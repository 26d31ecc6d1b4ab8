#pragma once

#include <QCoreApplication>
#include <QString>

#include "movie/atoms/MovieError.h"

/// What the movie layer says of a movie or a frame that cannot be had, in the user's language. The layer knows no
/// languages: its list of reasons is English, which the log and the command show as it is, and stands in the
/// translations row by row.
class MovieReasons final {
  Q_DECLARE_TR_FUNCTIONS(MovieReasons)

 public:
  MovieReasons() = delete;
  /// One sentence with a full stop, as MovieError::message().
  static QString sentenceOf(const movie::MovieError& error);
  /// The reason alone, to stand after a colon; the atom too, when one is to blame.
  static QString clauseOf(const movie::MovieError& error);
};

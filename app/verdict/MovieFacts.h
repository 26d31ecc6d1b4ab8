#pragma once

#include <QCoreApplication>
#include <QList>

#include "app/verdict/Verdict.h"
#include "movie/Movie.h"

/// A movie at the moment that was compared.
struct MovieMoment {
  const movie::Movie& movie;
  movie::MovieTime time;
};

/// Two movies side by side: file, timecode, codec, size, rate, range, gamma, colour, profile. Differing is what reads
/// differently, but for the colors: what counts there is what it means.
class MovieFacts final {
  Q_DECLARE_TR_FUNCTIONS(MovieFacts)

 public:
  MovieFacts() = delete;
  /// `tags` are those of the finding; where no pictures were had, the movies' own descriptions are told, and no ranges.
  static QList<Fact> of(const MovieMoment& source, const MovieMoment& dest, const diagnosis::Finding& finding);

 private:
  struct Side;
  static Side sideOf(const MovieMoment& moment, const diagnosis::SideTags* tags);
  static QString rangeOf(const diagnosis::SideTags& tags);
  static QString colorTip(const diagnosis::SideTags& tags);
};

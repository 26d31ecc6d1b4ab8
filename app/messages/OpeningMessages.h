#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include "app/messages/Message.h"
#include "app/messages/MessageWords.h"
#include "movie/atoms/MovieError.h"

/// What is to be known of a movie that was opened.
struct OpenedMovie {
  bool hasPictures = true;
  bool endsInMiddle = false;  ///< its last pictures are missing
};

/// What came of opening movies. Paths are full ones; sentences show the names.
class OpeningMessages final {
  Q_DECLARE_TR_FUNCTIONS(OpeningMessages)

 public:
  OpeningMessages() = delete;

  static Message opened(MovieSide side, const QString& path, const OpenedMovie& movie);
  static Message refused(MovieSide side, const QString& path, const movie::MovieError& error);
  /// The same for the place where its pictures would be.
  static QString refusedInView(const QString& path, const movie::MovieError& error);
  /// Opened, but nothing plays it: `reason` is the system's.
  static Message notShown(MovieSide side, const QString& reason);
  /// No file was named for the side.
  static Message emptied(MovieSide side);
  /// What was edited in memory went with the movie.
  static Message changesLost(const QString& path);
  /// More files came than have a place. Nothing to say where they have one.
  static Message othersLeftOut(qsizetype opened, qsizetype all);
  /// Files were dropped whose names no path can be made of.
  static Message namesUnreadable();

  /// A recent pair was chosen of which these paths lead nowhere.
  static Message pairIsGone(const QStringList& missing);
  static Message pairsForgotten();

 private:
  static QString whyNotOpened(const movie::MovieError& error);
};

#pragma once

#include <QCoreApplication>
#include <QString>
#include <chrono>

#include "app/messages/Message.h"
#include "app/messages/MessageWords.h"
#include "app/messages/WhyNot.h"
#include "movie/atoms/MovieError.h"

/// What came of a scan, and of going to a place that it has found.
class ScanMessages final {
  Q_DECLARE_TR_FUNCTIONS(ScanMessages)

 public:
  ScanMessages() = delete;
  static Message impossible(const WindowState& state);        ///< for lack of a movie, or of its pictures
  static Message unreadable(const movie::MovieError& error);  ///< before anything was compared
  static Message failed(const QString& reason);               ///< the system's
  static Message scanned(const QString& sourcePath, const QString& destPath, std::chrono::milliseconds took);
  static Message cancelled(bool isAnythingFound);
  /// A side could not be read from there on.
  static Message brokeOff(MovieSide side, const QString& timecode, const movie::MovieError& error);
  static Message givenUp();  ///< a movie of the pair went away

  // Of the destination's picture, which was looked for in the source.
  static Message noPlace();   ///< it was not found
  static Message anyPlace();  ///< it may be at any

  static Message noCounterpart(const QString& timecode);  ///< of the destination, which went there alone
  static Message notInDest(const QString& timecode);      ///< of the source; nothing went anywhere
  static Message notReached(const QString& timecode);     ///< by the scan; so, too
};

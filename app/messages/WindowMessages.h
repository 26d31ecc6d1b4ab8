#pragma once

#include <QCoreApplication>
#include <QString>

#include "app/messages/Message.h"

/// The title, and what does not come of movies.
class WindowMessages final {
  Q_DECLARE_TR_FUNCTIONS(WindowMessages)

 public:
  WindowMessages() = delete;
  /// With the names of both files, of one, or of none for empty paths, and Qt's place for the mark of unsaved changes.
  static QString title(const QString& sourcePath, const QString& destPath);
  /// A pair in a menu, without what a menu would take for a mnemonic.
  static QString pairInMenu(const QString& sourcePath, const QString& destPath);
  static QString pairInTip(const QString& sourcePath, const QString& destPath);  ///< with the folders

  static Message noMovieToMove();
  static Message timeOutside(const QString& timecode);  ///< of the movie, which goes as near to it as it can
  static Message fullScreen();
  static Message manualMissing();
  static Message notOpened(const QString& what);  ///< a page or a file that no program was found for
  static Message updaterMissing();
  static Message gatheringCancelled();
  static Message logsNotGathered();
  static Message logNotOpened();
  static Message settingsNotWritten();  ///< what was to be remembered or forgotten is not
};

#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <chrono>

#include "app/messages/Message.h"
#include "app/messages/MessageWords.h"
#include "movie/atoms/MovieError.h"
#include "movie/save/MetadataSave.h"

/// A copy that stands.
struct SavedCopy {
  QString path;
  qint64 bytes = 0;
  std::chrono::milliseconds took{};
  bool outranCancelling = false;      ///< complete before it could be cancelled
  bool leavesUnsavedChanges = false;  ///< of the destination itself, which has another file
};

/// What came of a save and of a copy.
class SaveMessages final {
  Q_DECLARE_TR_FUNCTIONS(SaveMessages)

 public:
  using Span = std::chrono::milliseconds;
  SaveMessages() = delete;

  static Message saved(const QString& path, Span took, const movie::SaveOutcome& outcome);
  /// Not begun. A copy is asked for instead.
  static Message refused(const QString& path, const movie::MovieError& error);
  static Message failed(const QString& path, const movie::MovieError& error);
  /// Nobody named a place for a copy.
  static Message nothingSaved();

  static Message copied(const SavedCopy& copy);
  /// `leftAsItWas`: the folder holds what it held before.
  static Message copyFailed(const QString& path, const movie::MovieError& error, bool leftAsItWas);
  static Message nothingToCopy();
  /// The copy took the place of a side's file.
  static Message goesOn(MovieSide side);
  static Message doesNotGoOn(MovieSide side, const movie::MovieError& error);

 private:
  static QStringList notesOn(const movie::SaveOutcome& outcome);
};

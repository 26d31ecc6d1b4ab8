#include "app/messages/SaveMessages.h"

#include <QFile>
#include <QLocale>

#include "app/messages/MovieReasons.h"

namespace {

/// The reason, with the name of the file to blame where that is another than the one that was to be written.
QString reasonOf(const movie::MovieError& error, const QString& path) {
  QString reason = MovieReasons::clauseOf(error);
  const QString blamed = QFile::decodeName(QByteArray::fromStdString(error.file));
  if (blamed.isEmpty() || blamed == path) return reason;
  //: %1: another file than the one before. %2: what is wrong with it, a clause
  return SaveMessages::tr("\"%1\": %2").arg(MessageWords::nameOf(blamed), reason);
}

}  // namespace

Message SaveMessages::saved(const QString& path, Span took, const movie::SaveOutcome& outcome) {
  const QString name = MessageWords::nameOf(path);
  if (outcome.uncertain) {
    return {MessageKind::Warning,
            tr("It is uncertain whether the save of \"%1\" counts. Load it again and check.").arg(name)};
  }
  if (outcome.place == movie::SavePlace::Unchanged) {
    return {MessageKind::Information,
            tr("\"%1\" has no unsaved changes. The movie on the disk is as it was.").arg(name)};
  }
  //: %1: a file. %2: a time
  QStringList sentences{
      tr("Saved \"%1\" in %2. The movie on the disk has the new metadata.").arg(name, MessageWords::spanOf(took))};
  sentences << notesOn(outcome);
  return {sentences.size() > 1 ? MessageKind::Warning : MessageKind::Success, sentences.join(u' ')};
}

/// The notes of a save that stands. They themselves are for the log, which knows no languages.
QStringList SaveMessages::notesOn(const movie::SaveOutcome& outcome) {
  QStringList notes;
  if (outcome.mediaNowPrecedeMovie) {
    notes << tr("Over a network it no longer plays before it is loaded as a whole; a copy does.");
  }
  if (outcome.names > 1) notes << tr("It has %1 names, and was changed under all of them.").arg(outcome.names);
  if (outcome.notes.size() > static_cast<std::size_t>(notes.size())) notes << tr("The log tells more of it.");
  return notes;
}

Message SaveMessages::refused(const QString& path, const movie::MovieError& error) {
  if (error.is(movie::Reason::NoMovieLoaded)) return nothingToCopy();
  //: %1: a file. %2: why, a clause
  return {MessageKind::Warning, tr("\"%1\" cannot be saved in place: %2. Save a copy instead.")
                                    .arg(MessageWords::nameOf(path), reasonOf(error, path))};
}

Message SaveMessages::failed(const QString& path, const movie::MovieError& error) {
  //: %1: a file. %2: why, a clause
  return {MessageKind::Failure, tr("\"%1\" was not saved: %2. The movie on the disk is as it was.")
                                    .arg(MessageWords::nameOf(path), reasonOf(error, path))};
}

Message SaveMessages::nothingSaved() {
  return {MessageKind::Information, tr("Nothing was saved.")};
}

Message SaveMessages::copied(const SavedCopy& copy) {
  const QString name = MessageWords::nameOf(copy.path);
  const QString size = QLocale().formattedDataSize(copy.bytes, 1, QLocale::DataSizeSIFormat);
  //: %1: a file. %2: its size. %3: a time
  QString text = tr("Saved a copy, \"%1\" (%2), in %3.").arg(name, size, MessageWords::spanOf(copy.took));
  if (copy.outranCancelling) text += u' ' + tr("It was complete before it could be cancelled.");
  if (copy.leavesUnsavedChanges) text += u' ' + tr("The destination's own file has not been changed.");
  return {MessageKind::Success, text};
}

Message SaveMessages::copyFailed(const QString& path, const movie::MovieError& error, bool leftAsItWas) {
  if (error.is(movie::Reason::NoMovieToWrite)) return nothingToCopy();
  const QString name = MessageWords::nameOf(path);
  if (error.is(movie::Reason::Cancelled)) {
    return {MessageKind::Information, tr("The copy \"%1\" was cancelled. Nothing was left behind.").arg(name)};
  }
  if (!leftAsItWas || error.is(movie::Reason::NameUncertain)) {
    //: %1: a file. %2: what is wrong with it, a clause
    return {MessageKind::Warning, tr("The copy \"%1\" may have failed: %2.").arg(name, reasonOf(error, path))};
  }
  return {MessageKind::Failure,
          tr("The copy \"%1\" was not saved: %2. Nothing was left behind.").arg(name, reasonOf(error, path))};
}

Message SaveMessages::nothingToCopy() {
  return {MessageKind::Failure, tr("Nothing was saved: there is no destination.")};
}

Message SaveMessages::goesOn(MovieSide side) {
  return {MessageKind::Success, side == MovieSide::Source ? tr("The source goes on with the new file.")
                                                          : tr("The destination goes on with the new file.")};
}

Message SaveMessages::doesNotGoOn(MovieSide side, const movie::MovieError& error) {
  //: %1: why, a clause
  const QString text = side == MovieSide::Source ? tr("The source's new file cannot be opened: %1.")
                                                 : tr("The destination's new file cannot be opened: %1.");
  return {MessageKind::Warning, text.arg(MovieReasons::clauseOf(error))};
}

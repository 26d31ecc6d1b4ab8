#include "app/messages/OpeningMessages.h"

#include "app/messages/MovieReasons.h"

Message OpeningMessages::opened(MovieSide side, const QString& path, const OpenedMovie& movie) {
  const QString text =
      side == MovieSide::Source ? tr("Opened \"%1\" as the source.") : tr("Opened \"%1\" as the destination.");
  const QString opened = text.arg(MessageWords::nameOf(path));
  QString remark;
  if (movie.endsInMiddle) remark = tr("It ends in the middle: its last pictures are missing.");
  if (!movie.hasPictures) remark = tr("It has no pictures.");
  if (remark.isEmpty()) return {MessageKind::Information, opened};
  return {MessageKind::Warning, opened + u' ' + remark};
}

/// Where the movie layer tells of atoms, somebody who picked the wrong file is told of files.
QString OpeningMessages::whyNotOpened(const movie::MovieError& error) {
  using movie::Reason;
  if (error.is(Reason::NotMovie) || error.is(Reason::NoMovieAmongFirst))
    return tr("it is not a QuickTime or MP4 movie");
  if (error.is(Reason::NoMovieAtom)) return tr("it is not a QuickTime or MP4 movie, or was never finished");
  if (error.is(Reason::MoviePastEnd)) return tr("it ends in the middle");
  if (error.is(Reason::NoMovieBeforeDamage)) return tr("it ends in the middle, or is damaged");
  return MovieReasons::clauseOf(error);
}

Message OpeningMessages::refused(MovieSide side, const QString& path, const movie::MovieError& error) {
  //: %1: a file. %2: why, a clause
  const QString text = side == MovieSide::Source ? tr("\"%1\" cannot be opened as the source: %2.")
                                                 : tr("\"%1\" cannot be opened as the destination: %2.");
  return {MessageKind::Failure, text.arg(MessageWords::nameOf(path), whyNotOpened(error))};
}

QString OpeningMessages::refusedInView(const QString& path, const movie::MovieError& error) {
  return tr("\"%1\" cannot be opened:\n%2.").arg(MessageWords::nameOf(path), whyNotOpened(error));
}

Message OpeningMessages::notShown(MovieSide side, const QString& reason) {
  //: %1: what the system says
  const QString text =
      side == MovieSide::Source ? tr("The source cannot be shown: %1.") : tr("The destination cannot be shown: %1.");
  return {MessageKind::Failure, text.arg(reason)};
}

Message OpeningMessages::emptied(MovieSide side) {
  return {MessageKind::Information,
          side == MovieSide::Source ? tr("There is no source now.") : tr("There is no destination now.")};
}

Message OpeningMessages::changesLost(const QString& path) {
  return {MessageKind::Warning,
          tr("The changes of \"%1\" were not saved, and are gone.").arg(MessageWords::nameOf(path))};
}

Message OpeningMessages::othersLeftOut(qsizetype opened, qsizetype all) {
  if (opened >= all) return {};
  //: %1: how many files there were
  const QString text =
      opened == 1 ? tr("Of %1 files only the first was opened.") : tr("Of %1 files only the first two were opened.");
  return {MessageKind::Warning, text.arg(all)};
}

Message OpeningMessages::namesUnreadable() {
  return {MessageKind::Failure, tr("Nothing was opened: the file's name is not in UTF-8.")};
}

Message OpeningMessages::pairIsGone(const QStringList& missing) {
  if (missing.size() == 1)
    return {MessageKind::Failure, tr("The pair was not opened: there is no \"%1\".").arg(missing[0])};
  return {MessageKind::Failure,
          tr("The pair was not opened: there is neither \"%1\" nor \"%2\".").arg(missing.value(0), missing.value(1))};
}

Message OpeningMessages::pairsForgotten() {
  return {MessageKind::Information, tr("The recent pairs are forgotten.")};
}

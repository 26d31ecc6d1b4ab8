#include "app/messages/WindowMessages.h"

#include "app/messages/MessageWords.h"

QString WindowMessages::title(const QString& sourcePath, const QString& destPath) {
  const auto name = [](const QString& path) {
    return MessageWords::nameOf(path).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
  };
  QString application = QStringLiteral("Lumacheck");
  if (sourcePath.isEmpty() && destPath.isEmpty()) return application;
  //: A title. %1: the source's name. %2: the application
  if (destPath.isEmpty()) return tr("%1 – %2").arg(name(sourcePath), application);
  //: A title. %1: the destination's name. %2: the application. [*] stays: the mark of unsaved changes stands there
  if (sourcePath.isEmpty()) return tr("→ %1[*] – %2").arg(name(destPath), application);
  //: A title. %1: the source's name. %2: the destination's. %3: the application. [*] as above
  return tr("%1 → %2[*] – %3").arg(name(sourcePath), name(destPath), application);
}

QString WindowMessages::pairInMenu(const QString& sourcePath, const QString& destPath) {
  const auto name = [](const QString& path) {
    return MessageWords::nameOf(path).replace(QStringLiteral("&"), QStringLiteral("&&"));
  };
  //: A pair of movies. %1: the source's name. %2: the destination's
  return tr("%1 → %2").arg(name(sourcePath), name(destPath));
}

QString WindowMessages::pairInTip(const QString& sourcePath, const QString& destPath) {
  //: %1 and %2: paths
  return tr("Source: %1\nDestination: %2").arg(sourcePath, destPath);
}

Message WindowMessages::noMovieToMove() {
  return {MessageKind::Failure, tr("There is no movie there to go to a timecode.")};
}

Message WindowMessages::timeOutside(const QString& timecode) {
  return {MessageKind::Warning, tr("The movie does not reach to %1. This is where it begins or ends.").arg(timecode)};
}

Message WindowMessages::fullScreen() {
  return {MessageKind::Information, tr("Esc leaves full screen.")};
}

Message WindowMessages::manualMissing() {
  return {MessageKind::Failure, tr("The user manual is not installed.")};
}

Message WindowMessages::notOpened(const QString& what) {
  //: %1: the address of a page, or a file
  return {MessageKind::Failure, tr("There is no program that opens %1.").arg(what)};
}

Message WindowMessages::updaterMissing() {
  return {MessageKind::Failure, tr("No updater is installed that could look for a newer version.")};
}

Message WindowMessages::gatheringCancelled() {
  return {MessageKind::Information, tr("The gathering of logs was cancelled.")};
}

Message WindowMessages::logsNotGathered() {
  return {MessageKind::Failure, tr("The logs were not gathered.")};
}

Message WindowMessages::logNotOpened() {
  return {MessageKind::Failure, tr("The log was not opened.")};
}

Message WindowMessages::settingsNotWritten() {
  return {MessageKind::Warning, tr("The settings cannot be written, and stay as they were.")};
}

#include "app/messages/ScanMessages.h"

#include "app/messages/MovieReasons.h"

Message ScanMessages::impossible(const WindowState& state) {
  //: %1: why, a sentence
  return {MessageKind::Failure, tr("Nothing was scanned. %1").arg(WhyNot::check(state))};
}

Message ScanMessages::unreadable(const movie::MovieError& error) {
  return {MessageKind::Failure, tr("Nothing was scanned. %1").arg(MovieReasons::sentenceOf(error))};
}

Message ScanMessages::failed(const QString& reason) {
  //: %1: what the system says
  return {MessageKind::Failure, tr("Nothing was scanned: %1.").arg(reason)};
}

Message ScanMessages::scanned(const QString& sourcePath, const QString& destPath, std::chrono::milliseconds took) {
  //: %1 and %2: files. %3: a span of time
  return {MessageKind::Information,
          tr("Scanned \"%1\" and \"%2\" in %3.")
              .arg(MessageWords::nameOf(sourcePath), MessageWords::nameOf(destPath), MessageWords::spanOf(took))};
}

Message ScanMessages::cancelled(bool isAnythingFound) {
  return {MessageKind::Information, isAnythingFound ? tr("The scan was cancelled. The timeline shows what was found "
                                                         "until then.")
                                                    : tr("The scan was cancelled before anything was found.")};
}

Message ScanMessages::brokeOff(MovieSide side, const QString& timecode, const movie::MovieError& error) {
  //: %1: a timecode. %2: why, a sentence
  const QString text = side == MovieSide::Source ? tr("The source cannot be read from %1 on. %2")
                                                 : tr("The destination cannot be read from %1 on. %2");
  return {MessageKind::Warning, text.arg(timecode, MovieReasons::sentenceOf(error))};
}

Message ScanMessages::givenUp() {
  return {MessageKind::Information, tr("The scan was given up.")};
}

Message ScanMessages::noPlace() {
  return {MessageKind::Warning, tr("The destination's picture was not found in the source within 10 seconds.")};
}

Message ScanMessages::anyPlace() {
  return {MessageKind::Warning, tr("The pictures do not move: where in the source this one is cannot be told.")};
}

Message ScanMessages::noCounterpart(const QString& timecode) {
  //: %1: a timecode
  return {MessageKind::Warning,
          tr("The destination shows nothing of the source at %1. Only the destination went there.").arg(timecode)};
}

Message ScanMessages::notInDest(const QString& timecode) {
  //: %1: a timecode
  return {MessageKind::Warning, tr("The destination does not show what the source shows at %1.").arg(timecode)};
}

Message ScanMessages::notReached(const QString& timecode) {
  //: %1: a timecode
  return {MessageKind::Information, tr("The scan has not been at %1. Only the destination went there.").arg(timecode)};
}

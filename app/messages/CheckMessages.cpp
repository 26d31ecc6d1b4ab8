#include "app/messages/CheckMessages.h"

#include "app/messages/MessageWords.h"
#include "app/messages/MovieReasons.h"

Message CheckMessages::checked(const WindowState& state, const CheckedFrame& source, const CheckedFrame& dest,
                               const check::CheckOutcome& outcome) {
  const QString sourceName = MessageWords::nameOf(source.path), destName = MessageWords::nameOf(dest.path);
  if (const QString why = WhyNot::check(state); !why.isEmpty()) {
    //: %1: why, a sentence
    return {MessageKind::Failure, tr("No frames were compared. %1").arg(why)};
  }
  //: %1: a file. %2: a timecode. %3: why, a clause
  const QString missing = tr("No frames were compared. \"%1\" gives no picture at %2: %3.");
  if (outcome.sourceFrameError) {
    return {MessageKind::Failure,
            missing.arg(sourceName, source.timecode, MovieReasons::clauseOf(*outcome.sourceFrameError))};
  }
  if (outcome.destFrameError) {
    return {MessageKind::Failure,
            missing.arg(destName, dest.timecode, MovieReasons::clauseOf(*outcome.destFrameError))};
  }
  if (outcome.tooDark) {
    return {MessageKind::Warning, tr("No frames were compared. \"%1\" is too dark at %2: go to a brighter picture.")
                                      .arg(sourceName, source.timecode)};
  }
  //: %1 and %3: files. %2 and %4: timecodes
  return {MessageKind::Information,
          tr("Compared \"%1\" at %2 with \"%3\" at %4.").arg(sourceName, source.timecode, destName, dest.timecode)};
}

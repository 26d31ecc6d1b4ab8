// The check button and the report.

#include <QScopeGuard>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/timecode/QVQuickTime.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/messages/CheckMessages.h"
#include "check/GammaCheck.h"

namespace {

movie::MovieTime timeShownIn(const QVMovieView& view) {
  const auto shown = view.movie();
  return shown ? shown->currentTime() : movie::MovieTime{};
}

CheckedFrame frameOf(const std::shared_ptr<PlayableMovie>& movie, const movie::MovieTime& time) {
  if (!movie) return {};
  return {.path = movie->path(), .timecode = QVQuickTime::timecodeAtTime(time, &movie->content())};
}

}  // namespace

void LumacheckAppDelegate::checkOnThread() {
  const auto content = [](const MovieSlot& movie) { return movie ? movie->content().copy() : movie::Movie::movie(); };
  const auto source = content(sourceQTMov()), dest = content(destQTMov());
  check::Playheads at;
  const auto stop = [this, &at] {
    for (const MovieSlot& display : {sourceQTDisplayMov(), destQTDisplayMov()}) {
      if (display) display->stop();
    }
    at = {timeShownIn(*source_.controls.movieView), timeShownIn(*dest_.controls.movieView)};
    return at;
  };
  tell({});
  check::CheckOutcome outcome;
  {
    showChecking(true);
    const auto checked = qScopeGuard([this] { showChecking(false); });
    PairMoment moment = momentNow();
    outcome = check::runGammaCheck({*source, *dest, {}, stop}, console_);
    moment.source.time = at.source;
    moment.dest.time = at.dest;
    setVerdict(*source, *dest, moment, outcome);
  }
  tell(CheckMessages::checked(state(), frameOf(sourceQTMov(), at.source), frameOf(destQTMov(), at.dest), outcome));
  if (!outcome.tooDark) return;
  QVAlert::alertSheetWithMessageText(check::tooDarkMessageText, check::tooDarkInformativeText, window_);
}

void LumacheckAppDelegate::outputText(const QString& text, bool error, bool bold) {
  if (error) return bold ? console_.outputBoldErrorText(text) : console_.outputErrorText(text);
  bold ? console_.outputBoldText(text) : console_.outputText(text);
}

// The check button and the report.

#include "SharedFiles/alerts/QVAlert.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "check/GammaCheck.h"

namespace {

movie::MovieTime timeShownIn(const QVMovieView& view) {
  const auto shown = view.movie();
  return shown ? shown->currentTime() : movie::MovieTime{};
}

}  // namespace

void LumacheckAppDelegate::checkOnThread() {
  const auto content = [](const MovieSlot& movie) { return movie ? movie->content().copy() : movie::Movie::movie(); };
  const auto source = content(sourceQTMov()), dest = content(destQTMov());
  const auto stop = [this] {
    for (const MovieSlot& display : {sourceQTDisplayMov(), destQTDisplayMov()}) {
      if (display) display->stop();
    }
    return check::Playheads{timeShownIn(*source_.controls.movieView), timeShownIn(*dest_.controls.movieView)};
  };
  const check::CheckOutcome outcome = check::runGammaCheck({*source, *dest, {}, stop}, console_);
  if (!outcome.tooDark) return;
  QVAlert::alertSheetWithMessageText(check::tooDarkMessageText, check::tooDarkInformativeText, window_);
}

void LumacheckAppDelegate::outputText(const QString& text, bool error, bool bold) {
  if (error) return bold ? console_.outputBoldErrorText(text) : console_.outputErrorText(text);
  bold ? console_.outputBoldText(text) : console_.outputText(text);
}

// The check button and the report.

#include "SharedFiles/alerts/QVAlert.h"
#include "app/LumacheckAppDelegate.h"
#include "app/Subclasses/QVMovieView.h"
#include "app/Subclasses/QVQTWindow.h"
#include "check/GammaCheck.h"

namespace {

movie::MovieTime timeShownIn(const QVMovieView& view) {
  const auto shown = view.movie();
  return shown ? shown->currentTime() : movie::MovieTime{};
}

}  // namespace

// checkAction:
void LumacheckAppDelegate::checkAction() {
  checkOnThread();
}

// checkOnThread
void LumacheckAppDelegate::checkOnThread() {
  const auto content = [](const MovieSlot& movie) { return movie ? movie->content().copy() : movie::Movie::movie(); };
  const auto source = content(sourceQTMov()), dest = content(destQTMov());
  const auto stop = [this] {
    for (const MovieSlot& display : {sourceQTDisplayMov(), destQTDisplayMov()}) {
      if (display) display->stop();
    }
    return check::Playheads{timeShownIn(*source_.movieView), timeShownIn(*dest_.movieView)};
  };
  const check::CheckOutcome outcome = check::runGammaCheck({*source, *dest, {}, stop}, console_);
  if (!outcome.tooDark) return;
  QVAlert::alertSheetWithMessageText(check::tooDarkMessageText, check::tooDarkInformativeText, window_);
}

// clearTextView
void LumacheckAppDelegate::clearTextView() {
  console_.clearTextView();
}

// outputText:
void LumacheckAppDelegate::outputText(const QString& text) {
  outputText(text, false, false);
}

// outputBoldText:
void LumacheckAppDelegate::outputBoldText(const QString& text) {
  outputText(text, false, true);
}

// outputErrorText:
void LumacheckAppDelegate::outputErrorText(const QString& text) {
  outputText(text, true, false);
}

// outputBoldErrorText:
void LumacheckAppDelegate::outputBoldErrorText(const QString& text) {
  outputText(text, true, true);
}

// outputText:error:bold:
void LumacheckAppDelegate::outputText(const QString& text, bool error, bool bold) {
  if (error) return bold ? console_.outputBoldErrorText(text) : console_.outputErrorText(text);
  bold ? console_.outputBoldText(text) : console_.outputText(text);
}

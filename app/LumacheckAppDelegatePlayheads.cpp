// The link between the playheads, and the timecode fields.

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/Subclasses/QVMovieView.h"
#include "app/Subclasses/QVQTWindow.h"

namespace {

movie::MovieTime durationOf(const QVMovieView& view) {
  const auto shown = view.movie();
  return shown ? shown->duration() : movie::MovieTime{};
}

const movie::Movie* contentOf(const std::shared_ptr<PlayableMovie>& movie) {
  return movie ? &movie->content() : nullptr;
}

}  // namespace

// updateLink
void LumacheckAppDelegate::updateLink() {
  const movie::MovieTime sourceDuration = durationOf(*source_.movieView);
  const movie::MovieTime destDuration = movie::timeScaled(durationOf(*dest_.movieView), sourceDuration.scale);
  const bool equal = movie::compareTimes(destDuration, sourceDuration) == 0;
  linkBtn_->setEnabled(equal);
  linkBtn_->setChecked(equal);
  interface_.menus.link->setEnabled(equal);
  linkLabel_->setEnabled(equal);  // textColor or disabledControlTextColor, as the theme has them
}

void LumacheckAppDelegate::observeTime(const MovieSlot& movie) {
  if (!movie) return;
  connect(movie.get(), &PlayableMovie::timeDidChange, this, &LumacheckAppDelegate::movieTimeChanged,
          Qt::UniqueConnection);
}

void LumacheckAppDelegate::stopObservingTime(const MovieSlot& movie) {
  if (movie) disconnect(movie.get(), &PlayableMovie::timeDidChange, this, &LumacheckAppDelegate::movieTimeChanged);
}

// movieTimeChanged:
void LumacheckAppDelegate::movieTimeChanged(PlayableMovie* movie) {
  if (linkBtn_->isChecked() && !disableSync_) {
    const bool fromSource = movie == sourceQTDisplayMov().get();
    disableSync_ = true;
    const auto leader = (fromSource ? source_ : dest_).movieView->movie();
    const auto follower = (fromSource ? dest_ : source_).movieView->movie();
    const movie::MovieTime time = leader ? leader->currentTime() : movie::MovieTime{};
    if (follower) follower->setCurrentTime(time);
    disableSync_ = false;
  }
  updateTimecode();
}

// updateTimecode
void LumacheckAppDelegate::updateTimecode() {
  showTimecode(source_);
  showTimecode(dest_);
}

void LumacheckAppDelegate::showTimecode(const Side& side) {
  if (isTextFieldInFocus(side.timecodeText)) return;
  const MovieSlot display = slot(side.display);
  const movie::MovieTime time = display ? display->currentTime() : movie::MovieTime{};
  side.timecodeText->setText(QVQuickTime::timecodeAtTime(time, contentOf(display)));
}

// isTextFieldInFocus:
bool LumacheckAppDelegate::isTextFieldInFocus(QLineEdit* field) const {
  return field->window()->focusWidget() == field;
}

// changeTimecode:
void LumacheckAppDelegate::changeTimecode(QLineEdit* sender) {
  const Side& changed = sender == dest_.timecodeText ? dest_ : source_;
  const QString typed = changed.timecodeText->text();
  if (typed.isEmpty()) return;
  const MovieSlot display = slot(changed.display);
  const QString timecode = QVQuickTime::completedTimecode(typed, contentOf(display));
  if (display) display->setCurrentTime(QVQuickTime::qtTimeFromTimecode(timecode, contentOf(display)));
  window_->selectNextKeyView(resultsView_);
  updateTimecode();  // of the field too, which was being edited until now
}

// The link between the playheads, and the timecode fields.

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/messages/WindowMessages.h"

namespace {

movie::MovieTime durationOf(const QVMovieView& view) {
  const auto shown = view.movie();
  return shown ? shown->duration() : movie::MovieTime{};
}

const movie::Movie* contentOf(const std::shared_ptr<PlayableMovie>& movie) {
  return movie ? &movie->content() : nullptr;
}

}  // namespace

void LumacheckAppDelegate::updateLink() {
  const movie::MovieTime sourceDuration = durationOf(*source_.controls.movieView);
  const movie::MovieTime destDuration = movie::timeScaled(durationOf(*dest_.controls.movieView), sourceDuration.scale);
  const bool equal = movie::compareTimes(destDuration, sourceDuration) == 0;
  setLinkPossible(equal);
}

void LumacheckAppDelegate::setLinkPossible(bool possible) {
  interface_.linkBtn->setEnabled(possible);
  interface_.linkBtn->setChecked(possible);
  interface_.menus.link->setEnabled(possible);
  interface_.linkLabel->setEnabled(possible);  // textColor or disabledControlTextColor, as the theme has them
}

void LumacheckAppDelegate::observeTime(const MovieSlot& movie) {
  if (!movie) return;
  connect(movie.get(), &PlayableMovie::timeDidChange, this, &LumacheckAppDelegate::movieTimeChanged,
          Qt::UniqueConnection);
}

void LumacheckAppDelegate::stopObservingTime(const MovieSlot& movie) {
  if (movie) disconnect(movie.get(), &PlayableMovie::timeDidChange, this, &LumacheckAppDelegate::movieTimeChanged);
}

void LumacheckAppDelegate::movieTimeChanged(PlayableMovie* movie) {
  if (interface_.linkBtn->isChecked() && !disableSync_) {
    const bool fromSource = movie == sourceQTDisplayMov().get();
    disableSync_ = true;
    const auto leader = (fromSource ? source_ : dest_).controls.movieView->movie();
    const auto follower = (fromSource ? dest_ : source_).controls.movieView->movie();
    const auto time = leader && follower ? timeToFollow(fromSource, *leader, *follower) : movie::MovieTime{};
    if (follower && time) follower->setCurrentTime(*time);
    disableSync_ = false;
  }
  updateTimecode();
}

void LumacheckAppDelegate::updateTimecode() {
  showTimecode(source_);
  showTimecode(dest_);
}

void LumacheckAppDelegate::showTimecode(const Side& side) {
  if (isTextFieldInFocus(side.controls.timecodeText)) return;
  const MovieSlot display = slot(side.display);
  const movie::MovieTime time = display ? display->currentTime() : movie::MovieTime{};
  side.controls.timecodeText->setText(QVQuickTime::timecodeAtTime(time, contentOf(display)));
}

bool LumacheckAppDelegate::isTextFieldInFocus(QLineEdit* field) const {
  return field->window()->focusWidget() == field;
}

void LumacheckAppDelegate::changeTimecode(QLineEdit* sender) {
  const Side& changed = sender == dest_.controls.timecodeText ? dest_ : source_;
  const QString typed = changed.controls.timecodeText->text();
  if (typed.isEmpty()) return;
  const MovieSlot display = slot(changed.display);
  const QString timecode = QVQuickTime::completedTimecode(typed, contentOf(display));
  const movie::MovieTime time = QVQuickTime::qtTimeFromTimecode(timecode, contentOf(display));
  if (display) display->setCurrentTime(time);
  window_->selectNextKeyView(interface_.resultsView);
  updateTimecode();  // of the field too, which was being edited until now
  const bool isEmpty = !display || !display->content().file();
  if (isEmpty) return tell(WindowMessages::noMovieToMove());
  const bool isReached = movie::compareTimes(display->timeWithin(time), time) == 0;  // it may play on meanwhile
  tell(isReached ? Message() : WindowMessages::timeOutside(timecode));
}

#include "app/widgets/TransportBar.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QSignalBlocker>
#include <initializer_list>

#include "app/Subclasses/QVMovieView.h"
#include "app/messages/WhyNot.h"
#include "app/widgets/Scrubber.h"

namespace {

constexpr int volumeSteps = 100;

/// As Qt calls the key in the user's language, here as in the list of keys.
QString keyName(Qt::Key key) {
  return QKeySequence(key).toString(QKeySequence::NativeText);
}

}  // namespace

TransportBar::TransportBar(QVMovieView* view, const QString& side, QWidget* parent)
    : QWidget(parent),
      stepBackButton(new GlyphButton(Glyph::StepBack, tr("%1: one frame back").arg(side), keyName(Qt::Key_Left), this)),
      playButton(new GlyphButton(Glyph::Play, tr("%1: play").arg(side), keyName(Qt::Key_Space), this)),
      stepForwardButton(
          new GlyphButton(Glyph::StepForward, tr("%1: one frame forward").arg(side), keyName(Qt::Key_Right), this)),
      scrubber(new Scrubber(this)),
      muteButton(new GlyphButton(Glyph::Sound, tr("%1: sound off").arg(side), QString(), this)),
      volumeSlider(new Scrubber(this)),
      view_(view),
      side_(side) {
  scrubber->setAccessibleName(tr("%1: position").arg(side));
  scrubber->setSingleStep(0);  // its arrows step frames, as everywhere in the window
  volumeSlider->setAccessibleName(tr("%1: volume").arg(side));
  volumeSlider->setToolTip(tr("Volume"));
  volumeSlider->setRange(0, volumeSteps);
  volumeSlider->setSingleStep(volumeSteps / 20);
  layOut();
  wire();
  showPlayback();
}

void TransportBar::layOut() {
  row_ = new QHBoxLayout(this);
  row_->setContentsMargins(0, 0, 0, 0);
  row_->setSpacing(2);
  for (QWidget* button : {stepBackButton, playButton, stepForwardButton}) row_->addWidget(button);
  row_->addSpacing(6);
  row_->addWidget(scrubber, 1);
  row_->addSpacing(6);
  row_->addWidget(muteButton);
  volumeSlider->setFixedWidth(4 * fontMetrics().height());
  row_->addWidget(volumeSlider);
  row_->addSpacing(6);
}

void TransportBar::addWidget(QWidget* widget) {
  row_->addWidget(widget);
}

bool TransportBar::eventFilter(QObject* /*watched*/, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) view_->setFocus(Qt::MouseFocusReason);
  return false;
}

void TransportBar::wire() {
  for (QWidget* control : std::initializer_list<QWidget*>{stepBackButton, playButton, stepForwardButton, scrubber,
                                                          muteButton, volumeSlider}) {
    control->installEventFilter(this);
  }
  connect(stepBackButton, &QToolButton::clicked, view_, [this] { view_->stepFrames(-1); });
  connect(stepForwardButton, &QToolButton::clicked, view_, [this] { view_->stepFrames(1); });
  connect(playButton, &QToolButton::clicked, view_, &QVMovieView::togglePlaying);
  connect(scrubber, &QSlider::sliderPressed, this, &TransportBar::holdScrubber);
  connect(scrubber, &QSlider::sliderReleased, this, &TransportBar::releaseScrubber);
  connect(scrubber, &QSlider::valueChanged, view_,
          [this](int value) { view_->scrubTo(static_cast<double>(value) / scrubber->maximum()); });
  connect(muteButton, &QToolButton::clicked, this, &TransportBar::toggleMute);
  connect(volumeSlider, &QSlider::valueChanged, view_,
          [this](int value) { view_->setVolume(static_cast<double>(value) / volumeSteps); });
  connect(view_, &QVMovieView::playbackDidChange, this, &TransportBar::showPlayback);
}

void TransportBar::holdScrubber() {
  heldRate_ = view_->movie() ? view_->movie()->rate() : 0;
  view_->play(0);
}

void TransportBar::releaseScrubber() {
  if (heldRate_ != 0) view_->play(heldRate_);
  heldRate_ = 0;
}

void TransportBar::toggleMute() {
  if (view_->volume() == 0) return view_->setVolume(volumeBefore_);
  volumeBefore_ = view_->volume();
  view_->setVolume(0);
}

void TransportBar::showPlayable(bool isPlayable) {
  const QString whyNot = WhyNot::play(isPlayable);
  for (GlyphButton* button : {stepBackButton, playButton, stepForwardButton}) {
    button->setEnabled(isPlayable);
    button->setWhyNot(whyNot);
  }
  scrubber->setEnabled(isPlayable);
  scrubber->setToolTip(whyNot);
}

/// For every picture while the movie plays.
void TransportBar::showPlayback() {
  const auto movie = view_->movie();
  const bool playable = movie && movie->duration().value > 0;
  const bool plays = movie && movie->rate() != 0;
  if (playable != scrubber->isEnabledTo(this)) showPlayable(playable);
  if (plays != (playButton->glyph() == Glyph::Pause)) {
    playButton->setGlyph(plays ? Glyph::Pause : Glyph::Play, (plays ? tr("%1: pause") : tr("%1: play")).arg(side_),
                         keyName(Qt::Key_Space));
  }
  const bool silent = view_->volume() == 0;
  if (silent != (muteButton->glyph() == Glyph::Silence)) {
    muteButton->setGlyph(silent ? Glyph::Silence : Glyph::Sound,
                         (silent ? tr("%1: sound on") : tr("%1: sound off")).arg(side_), QString());
  }
  const QSignalBlocker quietScrubber(scrubber), quietVolume(volumeSlider);
  if (!scrubber->isSliderDown()) scrubber->setValue(qRound(view_->position() * scrubber->maximum()));
  volumeSlider->setValue(qRound(view_->volume() * volumeSteps));
}

#pragma once

#include <QWidget>

#include "app/widgets/Glyphs.h"

class QHBoxLayout;
class QSlider;
class QVMovieView;

/// The controls under a movie view: frame steps, play and pause, the scrubber, the volume. It drives the view and shows
/// what the view does.
class TransportBar : public QWidget {
  Q_OBJECT

 public:
  /// `side` is the movie's name in what screen readers say.
  TransportBar(QVMovieView* view, const QString& side, QWidget* parent = nullptr);

  void addWidget(QWidget* widget);  ///< at the far right

  GlyphButton* const stepBackButton;
  GlyphButton* const playButton;
  GlyphButton* const stepForwardButton;
  QSlider* const scrubber;
  GlyphButton* const muteButton;
  QSlider* const volumeSlider;

 protected:
  /// A control that is clicked takes no focus itself: the movie gets it, for the keys to act on.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void layOut();
  void wire();
  void holdScrubber();
  void releaseScrubber();
  void toggleMute();
  void showPlayable(bool isPlayable);
  void showPlayback();

  QVMovieView* view_;
  QString side_;  ///< its name, as the controls are told by
  QHBoxLayout* row_ = nullptr;
  double heldRate_ = 0;      ///< what the hand on the scrubber interrupted
  double volumeBefore_ = 1;  ///< muting
};

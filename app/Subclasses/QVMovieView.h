#pragma once

#include <QImage>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <vector>

#include "app/Subclasses/PlayableMovie.h"
#include "app/player/MoviePlayer.h"
#include "app/player/SoundPlayer.h"

class QMimeData;

/// Shows a movie and plays it: pictures are decoded and rendered on a thread of the player's, at the size of the view
/// in device pixels and under the movie's own colours, so that a difference in tags is seen. Takes files that are
/// dropped on it. Keeps a black ground in every theme.
class QVMovieView : public QWidget {
  Q_OBJECT

 public:
  /// Without an output the movies play in silence.
  explicit QVMovieView(std::unique_ptr<player::SoundOutput> output = nullptr, QWidget* parent = nullptr);
  ~QVMovieView() override;

  /// What the view says while it has nothing to show.
  void setHint(const QString& hint);
  /// Which file was refused last and why, told above the hint until another is loaded here; empty for none.
  void setRefusal(const QString& refusal);
  /// Text over the ground: hint and refusal, or why there is no picture; empty while there is one.
  QString message() const;

  /// setMovie: null for none. Throws QVPlatformException when the movie cannot be played here.
  virtual void setMovie(std::shared_ptr<PlayableMovie> movie);
  std::shared_ptr<PlayableMovie> movie() const { return movie_; }

  /// performDragOperation: tells of the file names, if there are any; NO in every case, since the loading happens
  /// elsewhere.
  bool performDragOperation(const QMimeData& dragged);

  // What the transport does.
  void play(double rate);
  void togglePlaying();
  void stepFrames(int frames);    ///< stops playing first
  void stepSeconds(int seconds);  ///< stops playing first
  void gotoBeginning();
  void gotoEnd();  ///< the last frame
  /// Where in the movie the playhead is, 0 to 1 for the last frame, and back.
  double position() const;
  void scrubTo(double position);

  /// 0 to 1.
  void setVolume(double volume);
  double volume() const { return volume_; }

  /// The picture on screen, in device pixels; null while there is none.
  const QImage& picture() const { return picture_; }
  player::PlayingStatistics statistics() const { return player_->statistics(); }

  QSize sizeHint() const override { return {480, 270}; }
  QSize minimumSizeHint() const override { return {240, 135}; }

 signals:
  /// QVMovieViewFilesDropped: full paths in the order of the drag.
  void filesDropped(QVMovieView* view, const QStringList& files);
  /// The movie, its time or its rate is another than before.
  void playbackDidChange();
  /// Another picture is on screen.
  void pictureDidChange();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  /// Reaches the view from the player's thread by way of the main thread, as long as there is a view.
  struct Doorbell;

  QRect pictureRect() const;
  QSize pictureSize() const;  ///< in device pixels
  void askForPictures();
  void followTime();
  void followRate();
  void refresh();
  void showFrame(const std::shared_ptr<const player::ShownFrame>& frame);
  void playSound();
  void keepSoundInStep(const movie::MovieTime& now);
  void scheduleRefresh();
  bool canPlay() const;
  void setDragged(bool dragged);

  std::shared_ptr<Doorbell> doorbell_;
  std::unique_ptr<player::MoviePlayer> player_;
  std::unique_ptr<player::SoundPlayer> sound_;  ///< null without an output
  std::shared_ptr<PlayableMovie> movie_;
  std::shared_ptr<const player::ShownFrame> frame_;  ///< what picture_ shows
  QImage picture_;
  QSize asked_;                      ///< the size that pictures were asked for in
  movie::MovieTime lastFrameStart_;  ///< of the movie
  QTimer refreshTimer_;
  QString hint_, refusal_, problem_;
  double volume_ = 1;
  bool dragged_ = false;
};

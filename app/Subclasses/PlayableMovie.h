#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include "movie/Movie.h"

/// A movie as the window holds it: shared by slot and view, with a playhead that tells when it moves and a rate that
/// the view which shows the movie carries out. Main thread only.
class PlayableMovie : public QObject {
  Q_OBJECT

 public:
  explicit PlayableMovie(std::unique_ptr<movie::Movie> content);

  /// canInitWithFile: why the file's content is no movie, whatever its name; none where it is one.
  static std::optional<movie::MovieError> refusalOf(const QString& path);
  /// movieWithFile:error: null when the file cannot be opened.
  static std::shared_ptr<PlayableMovie> movieWithFile(const QString& path);
  /// movie: an empty one.
  static std::shared_ptr<PlayableMovie> movie();
  std::shared_ptr<PlayableMovie> copy() const;

  /// Opens the file at the movie's path anew, without the edits made in memory. The playhead stays, as far as the movie
  /// reaches, and tells nothing; a view that shows the movie has to be given it again. After an error the movie goes on
  /// as it was.
  movie::Result<void> reopen();

  movie::Movie& content() { return *content_; }
  const movie::Movie& content() const { return *content_; }
  QString path() const;  ///< empty for an empty movie

  void gotoBeginning();
  movie::MovieTime currentTime() const { return content_->currentTime(); }
  /// The time as it stands; one outside the movie is its beginning or its end.
  movie::MovieTime timeWithin(const movie::MovieTime& time) const;
  void setCurrentTime(const movie::MovieTime& time);  ///< that time
  movie::MovieTime duration() const { return content_->duration(); }

  bool isEditable() const { return editable_; }  ///< QTMovieEditableAttribute
  void setEditable(bool editable) { editable_ = editable; }
  bool hasVideo() const;  ///< QTMovieHasVideoAttribute: at least one video track
  /// Whether the file was cut, so that its last pictures are missing.
  bool endsInMiddle() const;

  /// setIdling: a movie without idle time does not play.
  void setIdling(bool idling) { idling_ = idling; }
  bool isIdling() const { return idling_; }

  /// 1 plays, 0 is still, below 0 plays backwards.
  double rate() const { return rate_; }
  void setRate(double rate);
  void stop() { setRate(0); }

  /// For the view that shows the movie: what its playing did.
  void playheadMoved(const movie::MovieTime& time);
  void playingEnded();

 signals:
  /// QTMovieTimeDidChangeNotification: after the playhead moved, by whomever.
  void timeDidChange(PlayableMovie* movie);
  void timeWasSet();  ///< by setCurrentTime or gotoBeginning; before timeDidChange
  void rateDidChange();

 private:
  std::unique_ptr<movie::Movie> content_;
  bool editable_ = false, idling_ = true;
  double rate_ = 0;
};

#include "app/Subclasses/QVMovieView.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <optional>
#include <system_error>
#include <utility>

#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "app/Subclasses/MovieShape.h"
#include "app/messages/MovieReasons.h"

struct QVMovieView::Doorbell {
  QVMovieView* view = nullptr;  ///< main thread only
  std::atomic<bool> rung = false;

  static void ring(const std::shared_ptr<Doorbell>& bell) {
    if (bell->rung.exchange(true)) return;
    MainThread::perform([bell] {
      bell->rung = false;
      if (bell->view != nullptr) bell->view->refresh();
    });
  }
};

namespace {

using SharedFrame = std::shared_ptr<const player::ShownFrame>;

/// The frame's samples as an image, without a copy: every copy of the image keeps the frame.
QImage imageOf(const SharedFrame& frame) {
  const movie::RgbFrame& shown = frame->image;
  if (shown.samples.empty()) return {};
  auto kept = std::make_unique<SharedFrame>(frame);
  const auto letGo = [](void* held) { std::unique_ptr<SharedFrame>(static_cast<SharedFrame*>(held)).reset(); };
  return {shown.samples.data(),  shown.width, shown.height,  qsizetype{3} * shown.width,
          QImage::Format_RGB888, letGo,       kept.release()};
}

/// Whether a drag carries names of files on this machine (NSFilenamesPboardType).
bool hasFileNames(const QMimeData& dragged) {
  const QList<QUrl> urls = dragged.urls();
  return std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
}

/// The full paths, in the order of the drag. A name that is not UTF-8 is left out with a line in the log.
QStringList fileNamesOf(const QMimeData& dragged) {
  QStringList files;
  for (const QUrl& url : dragged.urls()) {
    if (!url.isLocalFile()) continue;
    const QByteArray name = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (const auto path = fileNameAsText(name.toStdString())) files << *path;
  }
  return files;
}

}  // namespace

QVMovieView::QVMovieView(std::unique_ptr<player::SoundOutput> output, QWidget* parent)
    : QWidget(parent), doorbell_(std::make_shared<Doorbell>()) {
  if (output) sound_ = std::make_unique<player::SoundPlayer>(std::move(output));
  doorbell_->view = this;
  player_ = std::make_unique<player::MoviePlayer>(
      player::MoviePlayer::Environment{.frameArrived = [bell = doorbell_] { Doorbell::ring(bell); }});
  refreshTimer_.setSingleShot(true);
  refreshTimer_.setTimerType(Qt::PreciseTimer);
  connect(&refreshTimer_, &QTimer::timeout, this, &QVMovieView::refresh);
  setAcceptDrops(true);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

QVMovieView::~QVMovieView() {
  doorbell_->view = nullptr;
  if (movie_) disconnect(movie_.get(), nullptr, this, nullptr);
}

void QVMovieView::setHint(const QString& hint) {
  hint_ = hint;
  update();
}

void QVMovieView::setRefusal(const QString& refusal) {
  refusal_ = refusal;
  setAccessibleDescription(refusal);
  update();
}

QString QVMovieView::message() const {
  if (!movie_ || !movie_->content().file()) return refusal_.isEmpty() ? hint_ : refusal_ + "\n\n" + hint_;
  if (!movie_->hasVideo()) return tr("This movie has no pictures.");
  return problem_;
}

void QVMovieView::setMovie(std::shared_ptr<PlayableMovie> movie) {
  if (movie_) {
    movie_->stop();
    disconnect(movie_.get(), nullptr, this, nullptr);
  }
  movie_ = nullptr;
  frame_ = nullptr;
  picture_ = QImage();
  problem_.clear();
  asked_ = {};
  refreshTimer_.stop();
  try {
    player_->setMovie(movie ? movie->content().copy() : nullptr);
    if (sound_) sound_->setMovie(movie ? movie->content().copy() : nullptr);
  } catch (const std::system_error& error) {
    throw QVPlatformException(QString::fromLocal8Bit(error.what()));
  }
  movie_ = std::move(movie);
  lastFrameStart_ = movie_ ? frameStart(movie_->content(), movie_->duration()) : movie::MovieTime{};
  if (movie_) {
    connect(movie_.get(), &PlayableMovie::timeWasSet, this, &QVMovieView::followTime);
    connect(movie_.get(), &PlayableMovie::rateDidChange, this, &QVMovieView::followRate);
  }
  askForPictures();
  refresh();
  emit playbackDidChange();
  update();
}

bool QVMovieView::canPlay() const {
  return movie_ && movie_->duration().value > 0;
}

void QVMovieView::followTime() {
  player_->setTime(movie_->currentTime());
  playSound();
  refresh();
  emit playbackDidChange();
}

void QVMovieView::followRate() {
  player_->setRate(movie_->rate());
  playSound();
  if (movie_->rate() == 0) movie_->playheadMoved(frameStart(movie_->content(), player_->time()));
  refresh();
  emit playbackDidChange();
}

/// Sound belongs to play at its normal speed.
void QVMovieView::playSound() {
  if (!sound_) return;
  movie_->rate() == 1 ? sound_->start(player_->time()) : sound_->stop();
}

/// Pictures follow the system's clock, and so the sound has to.
void QVMovieView::keepSoundInStep(const movie::MovieTime& now) {
  if (!sound_ || movie_->rate() != 1) return;
  const std::optional<double> ahead = sound_->ahead(now);
  if (ahead && std::abs(*ahead) > player::SoundPlayer::toleratedDrift) sound_->start(now);
}

void QVMovieView::play(double rate) {
  if (canPlay()) movie_->setRate(rate);
}

void QVMovieView::togglePlaying() {
  if (!canPlay()) return;
  if (movie_->rate() != 0) return movie_->stop();
  if (movie::compareTimes(movie_->currentTime(), lastFrameStart_) >= 0) movie_->gotoBeginning();
  movie_->setRate(1);
}

void QVMovieView::stepFrames(int frames) {
  if (!canPlay()) return;
  movie_->stop();
  const auto moved = frameAway(movie_->content(), movie_->currentTime(), frames);
  if (movie::compareTimes(moved, movie_->currentTime()) != 0) movie_->setCurrentTime(moved);
}

void QVMovieView::stepSeconds(int seconds) {
  if (!canPlay()) return;
  movie_->stop();
  movie_->setCurrentTime(secondsAway(movie_->content(), movie_->currentTime(), seconds));
}

void QVMovieView::gotoBeginning() {
  if (movie_) movie_->gotoBeginning();
}

void QVMovieView::gotoEnd() {
  if (canPlay()) movie_->setCurrentTime(lastFrameStart_);
}

double QVMovieView::position() const {
  if (!canPlay()) return 0;
  const double all = movie::secondsOf(lastFrameStart_);
  return all > 0 ? std::clamp(movie::secondsOf(movie_->currentTime()) / all, 0.0, 1.0) : 0;
}

void QVMovieView::scrubTo(double position) {
  if (!canPlay()) return;
  const movie::MovieTime all = lastFrameStart_;
  const auto value = static_cast<std::int64_t>(static_cast<double>(all.value) * std::clamp(position, 0.0, 1.0));
  movie_->setCurrentTime(frameStart(movie_->content(), {.value = value, .scale = all.scale}));
}

void QVMovieView::setVolume(double volume) {
  volume_ = std::clamp(volume, 0.0, 1.0);
  if (sound_) sound_->setVolume(volume_);
  emit playbackDidChange();
}

void QVMovieView::askForPictures() {
  const QSize size = pictureSize();
  if (size.isEmpty() || size == asked_) return;
  asked_ = size;
  player_->setPictureSize(size.width(), size.height());
}

/// Takes over where playing has come to, and the picture for it.
void QVMovieView::refresh() {
  if (!movie_) return;
  const std::shared_ptr<PlayableMovie> kept = movie_;  // observers may load another
  if (kept->rate() != 0) {
    const movie::MovieTime now = player_->time();
    const bool ended = player_->rate() == 0;
    if (!ended) keepSoundInStep(now);
    showFrame(player_->frame());
    kept->playheadMoved(now);
    if (kept == movie_ && ended) kept->playingEnded();
    if (kept == movie_) emit playbackDidChange();
  } else {
    showFrame(player_->frame());
  }
  if (kept == movie_) scheduleRefresh();
}

void QVMovieView::showFrame(const std::shared_ptr<const player::ShownFrame>& frame) {
  if (!frame || frame == frame_) return;
  frame_ = frame;
  problem_ =
      frame->error ? tr("This frame cannot be shown: %1").arg(MovieReasons::sentenceOf(*frame->error)) : QString();
  picture_ = imageOf(frame);
  update();
  emit pictureDidChange();
}

void QVMovieView::scheduleRefresh() {
  if (movie_->rate() == 0) return refreshTimer_.stop();
  using std::chrono::milliseconds;
  const auto wait = std::chrono::ceil<milliseconds>(player_->nextChange() - player::MoviePlayer::Clock::now());
  refreshTimer_.start(std::clamp(wait, milliseconds(1), milliseconds(100)));
}

bool QVMovieView::performDragOperation(const QMimeData& dragged) {
  if (!hasFileNames(dragged)) return false;
  emit filesDropped(this, fileNamesOf(dragged));
  return false;
}

void QVMovieView::dragEnterEvent(QDragEnterEvent* event) {
  if (!hasFileNames(*event->mimeData())) return;
  setDragged(true);
  event->acceptProposedAction();
}

void QVMovieView::dragMoveEvent(QDragMoveEvent* event) {
  event->acceptProposedAction();
}

void QVMovieView::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
  setDragged(false);
}

void QVMovieView::dropEvent(QDropEvent* event) {
  setDragged(false);
  event->setAccepted(performDragOperation(*event->mimeData()));
}

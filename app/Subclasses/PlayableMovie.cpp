#include "app/Subclasses/PlayableMovie.h"

#include <QFile>
#include <utility>
#include <vector>

PlayableMovie::PlayableMovie(std::unique_ptr<movie::Movie> content) : content_(std::move(content)) {}

std::optional<movie::MovieError> PlayableMovie::refusalOf(const QString& path) {
  auto opened = movie::Movie::movieWithFile(QFile::encodeName(path).toStdString());
  return opened ? std::nullopt : std::optional(std::move(opened.error()));
}

std::shared_ptr<PlayableMovie> PlayableMovie::movieWithFile(const QString& path) {
  auto opened = movie::Movie::movieWithFile(QFile::encodeName(path).toStdString());
  return opened ? std::make_shared<PlayableMovie>(std::move(*opened)) : nullptr;
}

std::shared_ptr<PlayableMovie> PlayableMovie::movie() {
  return std::make_shared<PlayableMovie>(movie::Movie::movie());
}

std::shared_ptr<PlayableMovie> PlayableMovie::copy() const {
  auto copied = std::make_shared<PlayableMovie>(content_->copy());
  copied->setIdling(idling_);
  return copied;
}

movie::Result<void> PlayableMovie::reopen() {
  TRY(auto opened, movie::Movie::movieWithFile(content_->path()));
  const movie::MovieTime time = currentTime();
  content_ = std::move(opened);
  content_->setCurrentTime(timeWithin(time));
  return {};
}

QString PlayableMovie::path() const {
  return QFile::decodeName(QByteArray::fromStdString(content_->path()));
}

void PlayableMovie::gotoBeginning() {
  content_->gotoBeginning();
  emit timeWasSet();
  emit timeDidChange(this);
}

movie::MovieTime PlayableMovie::timeWithin(const movie::MovieTime& time) const {
  if (time.value < 0) return {.value = 0, .scale = time.scale};
  const movie::MovieTime end = duration();
  return movie::compareTimes(time, end) > 0 ? end : time;
}

void PlayableMovie::setCurrentTime(const movie::MovieTime& time) {
  content_->setCurrentTime(timeWithin(time));
  emit timeWasSet();
  emit timeDidChange(this);
}

bool PlayableMovie::hasVideo() const {
  return !std::as_const(*content_).tracksOfMediaType(movie::videoMedia).empty();
}

bool PlayableMovie::endsInMiddle() const {
  if (!content_->file()) return false;
  const std::vector<movie::TrackInfo>& tracks = content_->file()->tracks();
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    if (tracks[i].mediaType != movie::videoMedia || tracks[i].sampleCount == 0) continue;
    const auto last = content_->file()->locateSample(i, tracks[i].sampleCount - 1);
    return !last && last.error().is(movie::Reason::SamplePastEnd);
  }
  return false;
}

void PlayableMovie::setRate(double rate) {
  const double allowed = idling_ ? rate : 0;
  if (allowed == rate_) return;
  rate_ = allowed;
  emit rateDidChange();
}

void PlayableMovie::playheadMoved(const movie::MovieTime& time) {
  content_->setCurrentTime(time);
  emit timeDidChange(this);
}

void PlayableMovie::playingEnded() {
  if (rate_ == 0) return;
  rate_ = 0;
  emit rateDidChange();
}

#include "scan/MovieRow.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "movie/EditList.h"
#include "movie/render/Orientation.h"

namespace scan {
namespace {

constexpr std::int32_t micro = 1'000'000;

movie::MovieTime inMicros(std::int64_t micros) {
  return {.value = micros, .scale = micro};
}

std::size_t firstVideoTrack(const movie::MovieFile& file) {
  const std::vector<movie::TrackInfo>& tracks = file.tracks();
  const auto video = std::find_if(tracks.begin(), tracks.end(),
                                  [](const movie::TrackInfo& track) { return track.mediaType == movie::videoMedia; });
  return static_cast<std::size_t>(video - tracks.begin());
}

/// When the first picture begins of itself: after an empty edit, and after what no sample is of.
std::int64_t firstMicros(const movie::TrackInfo& track, std::int32_t timeScale, const movie::FrameSpan& first) {
  double units = 0;
  for (const movie::EditListEntry& edit : track.edits) {
    if (edit.mediaTime >= 0) break;
    units += static_cast<double>(edit.segmentDuration);
  }
  const auto late = static_cast<double>(first.sample.presentationTime - movie::mediaStartTime(track));
  const double seconds = units / std::max(1, timeScale) + std::max(0.0, late) / std::max(1, track.mediaTimeScale);
  return static_cast<std::int64_t>(std::ceil(seconds * micro));
}

/// Width over height of the clean aperture, turned as it is shown.
double aspectOf(const movie::ImageDescription& description, const movie::TrackInfo& track) {
  const auto aperture = description.cleanAperture();
  double width = aperture ? aperture->width : description.width();
  double height = aperture ? aperture->height : description.height();
  if (movie::orientationOf(track.matrix).transposed) std::swap(width, height);
  return width > 0 && height > 0 ? width / height : 1.0;
}

}  // namespace

movie::Result<std::unique_ptr<MovieRow>> MovieRow::of(const movie::Movie& movie) {
  std::unique_ptr<MovieRow> row(new MovieRow);
  row->movie_ = movie.copy();
  TRY(const auto picture, row->movie_->pictureAtTime({.value = 0, .scale = micro}, thumbnailWidth, thumbnailHeight));
  const movie::Track& track = *std::as_const(*row->movie_).tracksOfMediaType(movie::videoMedia).front();
  const auto description = track.media().imageDescription(1);
  row->aspect_ = aspectOf(*description, track.info());
  row->tags_ = diagnosis::tagsOf(*description, picture);
  row->readFrames();
  return row;
}

void MovieRow::readFrames() {
  // Of an edit list that shows one sample over and over there is no end otherwise.
  constexpr std::size_t mostFrames = 20'000'000;
  std::optional<movie::FrameSpan> span = movie_->frameSpanAt({.value = 0, .scale = movie_->timeScale()});
  while (span && starts_.size() < mostFrames) {
    if (movie_->decodingStartOf(*span) == span->start) sync_.push_back(starts_.size());
    starts_.push_back(span->startMicros);
    if (span->last) break;
    const std::optional<movie::FrameSpan> next = movie_->frameSpanAt(span->end);
    if (!next || next->startMicros <= span->startMicros) break;
    span = next;
  }
  starts_.push_back(span ? std::max(span->endMicros, span->startMicros + 1) : 0);
  if (starts_.size() < 2) return;
  // It is on screen from the beginning: a frame that long would be none of the source's.
  const movie::TrackInfo& track = movie_->file()->tracks()[firstVideoTrack(*movie_->file())];
  const std::int64_t first = firstMicros(track, movie_->timeScale(), *movie_->frameSpanAt(inMicros(0)));
  starts_.front() = std::clamp(first, starts_.front(), starts_[1] - 1);
}

movie::MovieTime MovieRow::movieTimeOf(std::size_t frame) const {
  const std::size_t count = starts_.size() - 1;
  const std::optional<movie::FrameSpan> span =
      movie_->frameSpanAt(inMicros(starts_[std::min(frame, count > 0 ? count - 1 : 0)]));
  if (!span) return {.value = 0, .scale = movie_->timeScale()};
  if (frame == 0 && starts_.front() > span->startMicros) return inMicros(starts_.front());
  return frame < count ? span->start : span->end;
}

std::unique_ptr<FrameRow> MovieRow::copy() const {
  std::unique_ptr<MovieRow> row(new MovieRow);
  row->movie_ = movie_->copy();
  row->starts_ = starts_;
  row->sync_ = sync_;
  row->aspect_ = aspect_;
  row->tags_ = tags_;
  row->matrix_ = matrix_;
  return row;
}

RowShape MovieRow::shape() const {
  return {starts_.size() - 1, static_cast<double>(starts_.back() - starts_.front()) / micro, aspect_};
}

double MovieRow::timeOf(std::size_t frame) const {
  return static_cast<double>(starts_[std::min(frame, starts_.size() - 1)]) / micro;
}

movie::Result<Thumbnail> MovieRow::thumbnail(std::size_t frame) {
  const auto span = movie_->frameSpanAt(inMicros(starts_[std::min(frame, starts_.size() - 1)]));
  if (!span) return movie::failed(movie_->path(), movie::Reason::NoVideoSamples);
  // In place of a sample that a movie which was cut off has no more, the decoder would show the one before.
  const movie::MovieFile& file = *movie_->file();
  TRY((file.locateSample(firstVideoTrack(file), span->sample.index)));
  movie::PlayedFrameRequest request{.width = thumbnailWidth, .height = thumbnailHeight};
  request.digested = true;
  TRY(const auto picture, movie_->playedPicture(*span, request));
  if (!picture) return movie::failed(movie_->path(), movie::Reason::NoPicture);
  return Thumbnail{diagnosis::signalOf(*picture, tags_, matrix_), picture->digest};
}

}  // namespace scan

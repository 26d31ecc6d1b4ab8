#include "movie/Movie.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <sys/stat.h>

#include "movie/atoms/MovieEdit.h"
#include "movie/decode/DecoderModule.h"
#include "movie/render/FrameRenderer.h"
#include "movie/render/Orientation.h"

namespace movie {
namespace {

std::int64_t signedDuration(std::uint64_t duration) {
  constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(std::min(duration, longest));
}

/// The clean aperture as a crop of the picture; empty without one.
PictureCrop cropOf(const ImageDescription& description) {
  const auto aperture = description.cleanAperture();
  if (!aperture) return {};
  return {.left = (description.width() - aperture->width) / 2 + aperture->horizontalOffset,
          .top = (description.height() - aperture->height) / 2 + aperture->verticalOffset,
          .width = aperture->width,
          .height = aperture->height};
}

PictureRequest requestFor(const PresentedSample& sample, const ImageDescription& description,
                          const Orientation& orientation, int width, int height) {
  if (orientation.transposed) std::swap(width, height);
  return {.sample = sample, .crop = cropOf(description), .width = width, .height = height};
}

/// Whether the name leads to the file that a movie has open.
bool leadsTo(const std::string& path, const MovieFile& file) {
  struct stat named {};
  return ::stat(path.c_str(), &named) == 0 && named.st_dev == file.stamp().device && named.st_ino == file.stamp().inode;
}

}  // namespace

MovieTime Media::duration() const {
  return {.value = signedDuration(info_->mediaDuration), .scale = info_->mediaTimeScale};
}

std::optional<Bytes> Media::sampleDescription(std::size_t index) const {
  if (index == 0 || index > sampleDescriptionCount()) return std::nullopt;
  if (index <= edited_.size() && edited_[index - 1]) return edited_[index - 1];
  return info_->sampleDescriptions[index - 1];
}

std::optional<ImageDescription> Media::imageDescription(std::size_t index) const {
  auto bytes = type() == videoMedia ? sampleDescription(index) : std::nullopt;
  if (!bytes) return std::nullopt;
  return ImageDescription(std::move(*bytes));
}

bool Media::setSampleDescription(std::size_t index, const ImageDescription& description) {
  if (index == 0 || index > sampleDescriptionCount()) return false;
  if (edited_.size() < index) edited_.resize(index);
  edited_[index - 1] = description.bytes();
  return true;
}

bool Movie::canInitWithFile(const std::string& path) {
  return MovieFile::open(path).has_value();
}

Result<std::unique_ptr<Movie>> Movie::movieWithFile(const std::string& path) {
  TRY(auto file, MovieFile::open(path));
  std::unique_ptr<Movie> movie(new Movie);
  movie->file_ = std::move(file);
  const auto& infos = movie->file_->tracks();
  for (std::size_t i = 0; i < infos.size(); ++i)
    movie->tracks_.push_back(std::unique_ptr<Track>(new Track(infos[i], i)));
  movie->gotoBeginning();
  return movie;
}

std::unique_ptr<Movie> Movie::movie() {
  return std::unique_ptr<Movie>(new Movie);
}

Movie::~Movie() = default;

std::unique_ptr<Movie> Movie::copy() const {
  std::unique_ptr<Movie> copied(new Movie);
  copied->file_ = file_;
  for (const auto& track : tracks_) copied->tracks_.push_back(std::make_unique<Track>(*track));
  copied->currentTime_ = currentTime_;
  return copied;
}

const std::string& Movie::path() const {
  static const std::string none;
  return file_ ? file_->path() : none;
}

bool Movie::standsAtItsPath() const {
  return file_ && leadsTo(file_->path(), *file_);
}

std::vector<SampleDescriptionEdit> Movie::edits() const {
  std::vector<SampleDescriptionEdit> edits;
  for (const auto& track : tracks_) {
    for (std::size_t i = 0; i < track->media().sampleDescriptionCount(); ++i) {
      Bytes entry = *track->media().sampleDescription(i + 1);
      if (entry != track->info().sampleDescriptions[i]) edits.push_back({track->index_, i, std::move(entry)});
    }
  }
  return edits;
}

Result<void> Movie::canUpdateMovieFile() const {
  if (!file_) return failure(Reason::NoMovieToSave);
  return canUpdate(*file_, edits());
}

Result<SaveOutcome> Movie::updateMovieFile() {
  if (!file_) return failure(Reason::NoMovieToSave);
  auto outcome = saveMetadata(*file_, edits());
  if (!outcome || outcome->place == SavePlace::Unchanged) return outcome;
  const FileStamp saved = file_->stamp();
  if (auto reopened = reopen(); !reopened) {
    outcome->notes.push_back("The file was saved but does not open again. " + reopened.error().message());
  } else if (saved.device != file_->stamp().device || saved.inode != file_->stamp().inode) {
    outcome->notes.push_back("Another file took the name of the movie while it was saved, and is the one open now.");
  } else if (!outcome->uncertain) {
    for (const auto& track : tracks_) track->forgetEdits();
  }
  outcome->uncertain = outcome->uncertain || hasUnsavedChanges();
  return outcome;
}

Result<void> Movie::writeToFile(const std::string& path, const CopyProgress& progress) {
  if (!file_) return failure(Reason::NoMovieToWrite);
  TRY(const auto movieAtom, inFile(this->path(), editedMovieAtom(file_->movieAtom(), edits())));
  const bool own = leadsTo(path, *file_);
  auto status = writeFlattenedCopy(*file_, movieAtom, path, progress);
  if (!own || leadsTo(path, *file_)) return status;
  auto reopened = reopen();
  return status ? reopened : status;
}

Result<void> Movie::reopen() {
  TRY(auto file, MovieFile::open(path()));
  if (file->tracks().size() != tracks_.size()) return failure(Reason::OtherTracksNow);
  decoder_.reset();
  file_ = std::move(file);
  for (const auto& track : tracks_) track->rebind(file_->tracks()[track->index_]);
  return {};
}

void Movie::gotoBeginning() {
  currentTime_ = {.value = 0, .scale = timeScale()};
}

MovieTime Movie::duration() const {
  return {.value = file_ ? signedDuration(file_->duration()) : 0, .scale = timeScale()};
}

std::int32_t Movie::timeScale() const {
  return file_ ? file_->timeScale() : 0;
}

std::vector<Track*> Movie::tracksOfMediaType(FourCC mediaType) {
  std::vector<Track*> found;
  for (const auto& track : tracks_) {
    if (track->mediaType() == mediaType) found.push_back(track.get());
  }
  return found;
}

std::vector<const Track*> Movie::tracksOfMediaType(FourCC mediaType) const {
  std::vector<const Track*> found;
  for (const auto& track : tracks_) {
    if (track->mediaType() == mediaType) found.push_back(track.get());
  }
  return found;
}

const Track* Movie::firstTrack(FourCC mediaType) const {
  const auto found = tracksOfMediaType(mediaType);
  return found.empty() ? nullptr : found.front();
}

std::optional<TimecodeStart> Movie::timecodeStart() const {
  constexpr std::size_t flagsOffset = 20, leastSize = 33;
  const Track* const track = firstTrack(timecodeMedia);
  const auto description = track ? track->media().sampleDescription(1) : std::nullopt;
  if (!description || description->size() < leastSize) return std::nullopt;
  TimecodeStart start{.frameNumber = 0, .flags = read32(*description, flagsOffset)};
  const auto sample = file_->sampleTable(track->index_).presentedAt(0);
  const auto bytes = sample ? file_->readSample(track->index_, sample->index, 4) : Result<Bytes>(Bytes{});
  if (bytes && bytes->size() >= 4) start.frameNumber = static_cast<std::int32_t>(read32(*bytes, 0));
  return start;
}

Result<MovieDecoder*> Movie::decoder(std::size_t track) {
  if (decoder_ && decoderTrack_ == track) return decoder_.get();
  TRY(const auto backend, decoderBackend());
  TRY(auto made, backend->makeDecoder(file_, track));
  decoder_ = std::move(made);
  decoderTrack_ = track;
  return decoder_.get();
}

Result<Picture> Movie::pictureAt(const Track& track, const PictureRequest& request) {
  TRY(const auto source, decoder(track.index_));
  return source->picture(request);
}

tl::unexpected<MovieError> Movie::failure(Reason why) const {
  return failed(path(), why);
}

/// Not yet turned.
Result<Picture> Movie::pictureOnScreen(const MovieTime& time, int width, int height) {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return failure(Reason::NoVideoTrack);
  const auto description = track->media().imageDescription(1);
  if (!description) return failure(Reason::NoImageDescription);
  const auto sample = sampleOnScreen(track->info(), timeScale(), file_->sampleTable(track->index_), time);
  if (!sample) return failure(Reason::NoVideoSamples);
  return pictureAt(*track, requestFor(*sample, *description, orientationOf(track->info().matrix), width, height));
}

Result<Picture> Movie::pictureAtTime(const MovieTime& time, int width, int height) {
  TRY(auto picture, pictureOnScreen(time, width, height));
  return oriented(std::move(picture), orientationOf(firstTrack(videoMedia)->info().matrix));
}

Result<RgbFrame> Movie::frameImageAtTime(const MovieTime& time, const FrameImageRequest& request) {
  TRY(const auto picture, pictureOnScreen(time, request.width, request.height));
  const Track* const track = firstTrack(videoMedia);
  const ColorSet colors = colorSetOf(*track->media().imageDescription(1));
  return oriented(request.style == FrameStyle::Measurement ? renderMeasurementFrame(picture, colors.nclc)
                                                           : renderDisplayFrame(picture, colors),
                  orientationOf(track->info().matrix));
}

PictureRange Movie::codedRange() {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return PictureRange::Unspecified;
  const auto sample =
      sampleOnScreen(track->info(), timeScale(), file_->sampleTable(track->index_), {.value = 0, .scale = timeScale()});
  if (!sample) return PictureRange::Unspecified;
  constexpr int side = 16;  // any size tells
  const auto picture = pictureAt(*track, {.sample = *sample, .crop = {}, .width = side, .height = side});
  return picture ? picture->range : PictureRange::Unspecified;
}

std::optional<FrameSpan> Movie::frameSpanAt(const MovieTime& time) const {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return std::nullopt;
  return spanOnScreen(track->info(), timeScale(), file_->sampleTable(track->index_), time);
}

std::optional<FrameSpan> Movie::frameSpanBefore(const MovieTime& time) const {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return std::nullopt;
  return spanBefore(track->info(), timeScale(), file_->sampleTable(track->index_), time);
}

std::optional<FrameSpan> Movie::frameSpanAfter(const MovieTime& time) const {
  const auto here = frameSpanAt(time);
  return here && !here->last ? frameSpanAt(here->end) : std::nullopt;
}

MovieTime Movie::decodingStartOf(const FrameSpan& span) const {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return span.start;
  const SampleTable& samples = file_->sampleTable(track->index_);
  const std::int64_t sync = samples.presentationTimeOf(samples.syncSampleAtOrBefore(span.sample.index));
  const std::int64_t back = span.sample.presentationTime - sync;
  if (back <= 0) return span.start;
  const double units = std::ceil(static_cast<double>(back) * span.start.scale / track->info().mediaTimeScale);
  const auto most = static_cast<double>(span.start.value);
  return {.value = span.start.value - static_cast<std::int64_t>(std::min(units, most)), .scale = span.start.scale};
}

/// Not yet turned.
Result<std::optional<Picture>> Movie::pictureInRow(const FrameSpan& span, const PlayedFrameRequest& request) {
  const Track* const track = firstTrack(videoMedia);
  if (!track) return failure(Reason::NoVideoTrack);
  const auto description = track->media().imageDescription(1);
  if (!description) return failure(Reason::NoImageDescription);
  TRY(const auto source, decoder(track->index_));

  const Orientation orientation = orientationOf(track->info().matrix);
  RowRequest asked{.picture = requestFor(span.sample, *description, orientation, request.width, request.height),
                   .nextTime = {},
                   .givenUp = request.givenUp};
  asked.picture.digested = request.digested;
  if (request.next) asked.nextTime = request.next->sample.presentationTime;
  return source->pictureInRow(asked);
}

Result<std::optional<RgbFrame>> Movie::playedFrame(const FrameSpan& span, const PlayedFrameRequest& request) {
  TRY(const auto picture, pictureInRow(span, request));
  if (!picture) return std::nullopt;
  const Track& track = *firstTrack(videoMedia);
  const ColorSet colors = colorSetOf(*track.media().imageDescription(1));
  return oriented(renderDisplayFrame(*picture, colors), orientationOf(track.info().matrix));
}

Result<std::optional<Picture>> Movie::playedPicture(const FrameSpan& span, const PlayedFrameRequest& request) {
  TRY(auto picture, pictureInRow(span, request));
  if (!picture) return std::nullopt;
  return oriented(std::move(*picture), orientationOf(firstTrack(videoMedia)->info().matrix));
}

}  // namespace movie

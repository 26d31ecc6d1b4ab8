#include "movie/decode/ffmpeg/DecodingTrack.h"

#include <algorithm>
#include <span>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {
namespace {

constexpr int longestReorder = 16;  // pictures, in every standard there is

}  // namespace

Result<std::unique_ptr<DecodingTrack>> DecodingTrack::make(std::shared_ptr<const MovieFile> file, std::size_t track) {
  const auto failure = [&file](Reason why) { return failed(file->path(), why); };
  if (track >= file->tracks().size()) return failure(Reason::NoSuchTrack);
  const TrackInfo& info = file->tracks()[track];
  if (info.mediaType != videoMedia) return failure(Reason::NoPictures);
  if (info.sampleDescriptions.empty()) return failure(Reason::NoImageDescription);
  return std::unique_ptr<DecodingTrack>(new DecodingTrack(std::move(file), track));
}

DecodingTrack::DecodingTrack(std::shared_ptr<const MovieFile> file, std::size_t track)
    : file_(std::move(file)), track_(track), table_(file_->sampleTable(track)) {}

tl::unexpected<MovieError> DecodingTrack::failure(Clause why) const {
  return failed(file_->path(), std::move(why));
}

Result<bool> DecodingTrack::useDescriptionOf(std::uint64_t sample) {
  const DescriptionRun run = file_->descriptionRunOf(track_, sample);
  const TrackInfo& info = file_->tracks()[track_];
  if (info.isExternal(run.description)) return failure(Reason::SamplesElsewhere);
  firstSample_ = run.first;
  if (decoder_ != nullptr && description_ == run.description) return false;
  decoder_.reset();
  auto made = SampleDecoder::make(file_->majorBrand(), ImageDescription(info.sampleDescriptions[run.description]));
  if (!made) return failure(made.error());
  decoder_ = std::move(*made);
  description_ = run.description;
  return true;
}

bool DecodingTrack::inDescriptionInUse(std::uint64_t sample) const {
  if (file_->tracks()[track_].sampleDescriptions.size() == 1) return true;
  return file_->descriptionRunOf(track_, sample).first == firstSample_;
}

std::uint64_t DecodingTrack::startAtOrBefore(std::uint64_t from, const PresentedSample& target) const {
  if (decoder_->intraOnly()) return from;
  std::uint64_t start = table_.syncSampleAtOrBefore(from);
  while (start > firstSample_ && target.presentationTime < table_.presentationTimeOf(start)) {
    start = table_.syncSampleAtOrBefore(start - 1);
  }
  return std::max(start, firstSample_);
}

std::vector<std::uint64_t> DecodingTrack::startsFor(const PresentedSample& target) const {
  std::vector<std::uint64_t> starts{startAtOrBefore(target.index, target)};
  for (std::uint64_t back = 1; starts.back() > firstSample_; back *= 2) {
    starts.push_back(startAtOrBefore(starts.back() - std::min(back, starts.back() - firstSample_), target));
  }
  return starts;
}

int DecodingTrack::reorderDepthAt(std::uint64_t sample, std::int64_t presentationTime) const {
  int depth = 0;
  constexpr std::uint64_t window = 64;
  for (std::uint64_t i = sample - std::min(sample - firstSample_, window); i < sample; ++i) {
    if (table_.presentationTimeOf(i) > presentationTime) ++depth;
  }
  return std::min(depth, longestReorder);
}

Result<std::size_t> DecodingTrack::readPacket(std::uint64_t sample) {
  const Clause name = verbatim(std::to_string(sample));
  const auto unreadable = [&](Clause why) { return failure({Reason::SampleUnreadable, {name, std::move(why)}}); };
  const auto place = file_->locateSample(track_, sample);
  if (!place) return unreadable(place.error().why);
  if (place->size == 0) return 0;
  if (place->size > decoder_->sampleLimit()) return failure({Reason::SampleTooLarge, {name}});
  const auto size = static_cast<std::size_t>(place->size);
  AVPacket* const packet = decoder_->packet(size, static_cast<std::int64_t>(sample));
  if (packet == nullptr) return failure({Reason::NoMemoryForSample, {name}});
  const auto got = file_->read(place->offset, std::span(packet->data, size));
  if (!got) return unreadable(got.error().why);
  if (*got < size) return unreadable(Reason::BecameShorter);
  return size;
}

}  // namespace movie

#include "movie/decode/ffmpeg/FfmpegDecoder.h"

#include <algorithm>
#include <span>
#include <utility>

#include "movie/decode/ffmpeg/FramePicture.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {
namespace {

constexpr int longestReorder = 16;  // pictures, in every standard there is

}  // namespace

/// One run of the decoder from a sample up to the target and to the end of what it then holds.
struct FfmpegDecoder::Attempt {
  std::uint64_t first = 0;
  PresentedSample target;
  LibavPointer<AVFrame> exact;    ///< the target's own frame
  LibavPointer<AVFrame> nearest;  ///< else what is on screen at its time: the last before it, else the first after it
  std::int64_t nearestTime = 0;   ///< when that one is presented
  bool startIsKey = false;        ///< the first sample gave a frame that needs no other
  int error = 0;                  ///< libav's, of the target's own packet
};

Result<std::unique_ptr<MovieDecoder>> FfmpegDecoder::make(std::shared_ptr<const MovieFile> file, std::size_t track) {
  const auto failure = [&file](const std::string& reason) {
    return tl::make_unexpected(MovieError{file->path(), {}, 0, reason});
  };
  if (track >= file->tracks().size()) return failure("there is no such track");
  const TrackInfo& info = file->tracks()[track];
  if (info.mediaType != videoMedia) return failure("the track holds no pictures");
  if (info.sampleDescriptions.empty()) return failure("the video track has no image description");
  return std::unique_ptr<MovieDecoder>(new FfmpegDecoder(std::move(file), track));
}

FfmpegDecoder::FfmpegDecoder(std::shared_ptr<const MovieFile> file, std::size_t track)
    : file_(std::move(file)), track_(track), table_(file_->sampleTable(track)) {}

tl::unexpected<MovieError> FfmpegDecoder::failure(const std::string& reason) const {
  return tl::make_unexpected(MovieError{file_->path(), {}, 0, reason});
}

Result<Picture> FfmpegDecoder::picture(const PictureRequest& request) {
  if (request.sample.index >= table_.sampleCount()) return failure("there is no such sample");
  if (auto ready = useDescriptionOf(request.sample.index); !ready) return tl::make_unexpected(ready.error());
  auto frame = frameOf(request.sample);
  if (!frame) return tl::make_unexpected(frame.error());
  auto picture = pictureOfFrame(**frame, decoder_->frameOrigin(), request);
  if (!picture) return failure("the frame cannot be used: " + picture.error());
  return std::move(*picture);
}

/// The decoder of another description is given up: it may hold many pictures, and would have to be restarted anyway.
Result<void> FfmpegDecoder::useDescriptionOf(std::uint64_t sample) {
  const DescriptionRun run = file_->descriptionRunOf(track_, sample);
  const TrackInfo& info = file_->tracks()[track_];
  if (info.isExternal(run.description)) {
    return failure("the samples lie in another file, and such references are not followed");
  }
  firstSample_ = run.first;
  if (decoder_ != nullptr && description_ == run.description) return {};
  decoder_.reset();
  auto made = SampleDecoder::make(file_->majorBrand(), ImageDescription(info.sampleDescriptions[run.description]));
  if (!made) return failure(made.error());
  decoder_ = std::move(*made);
  description_ = run.description;
  return {};
}

/// The last sample at or before `from` that the tables call a fit start for the target. A picture shown before the sync
/// sample that it follows may need what lies before that one. Never a sample of another description, which another
/// decoder is for.
std::uint64_t FfmpegDecoder::startAtOrBefore(std::uint64_t from, const PresentedSample& target) const {
  if (decoder_->intraOnly()) return from;
  std::uint64_t start = table_.syncSampleAtOrBefore(from);
  while (start > firstSample_ && target.presentationTime < table_.presentationTimeOf(start)) {
    start = table_.syncSampleAtOrBefore(start - 1);
  }
  return std::max(start, firstSample_);
}

/// Where to start decoding from, the most promising first, the first sample of the description's run last.
std::vector<std::uint64_t> FfmpegDecoder::startsFor(const PresentedSample& target) const {
  std::vector<std::uint64_t> starts{startAtOrBefore(target.index, target)};
  for (std::uint64_t back = 1; starts.back() > firstSample_; back *= 2) {
    starts.push_back(startAtOrBefore(starts.back() - std::min(back, starts.back() - firstSample_), target));
  }
  return starts;
}

/// How many of the samples decoded before the target are presented after it.
int FfmpegDecoder::reorderDepthAt(const PresentedSample& target) const {
  int depth = 0;
  constexpr std::uint64_t window = 64;
  for (std::uint64_t i = target.index - std::min(target.index - firstSample_, window); i < target.index; ++i) {
    if (table_.presentationTimeOf(i) > target.presentationTime) ++depth;
  }
  return std::min(depth, longestReorder);
}

Result<LibavPointer<AVFrame>> FfmpegDecoder::frameOf(const PresentedSample& target) {
  for (const std::uint64_t start : startsFor(target)) {
    auto attempt = decodeFrom(start, target);
    if (!attempt) return tl::make_unexpected(attempt.error());
    const bool last = start == firstSample_ || decoder_->intraOnly();
    if (attempt->exact != nullptr) {
      const AVFrame& frame = *attempt->exact;
      const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
      if (last || (sound && (attempt->startIsKey || decoder_->knowsItsOwnStart()))) return std::move(attempt->exact);
    } else if (attempt->error != 0 && last) {
      return failure("the frame cannot be decoded: " + libavText(attempt->error));
    } else if (attempt->nearest != nullptr && last) {
      return std::move(attempt->nearest);
    }
  }
  return failure("the frame cannot be decoded: the decoder gave no picture");
}

/// Reads a sample into a packet of the decoder's; its size, 0 for none.
Result<std::size_t> FfmpegDecoder::readPacket(std::uint64_t sample) {
  const std::string name = "the sample " + std::to_string(sample);
  const auto place = file_->locateSample(track_, sample);
  if (!place) return failure(name + " cannot be read: " + place.error().reason);
  if (place->size == 0) return 0;
  if (place->size > decoder_->sampleLimit()) return failure(name + " is too large for its picture");
  const auto size = static_cast<std::size_t>(place->size);
  AVPacket* const packet = decoder_->packet(size, static_cast<std::int64_t>(sample));
  if (packet == nullptr) return failure("there is not enough memory for " + name);
  const auto got = file_->read(place->offset, std::span(packet->data, size));
  if (!got) return failure(name + " cannot be read: " + got.error().reason);
  if (*got < size) return failure(name + " cannot be read: the file became shorter");
  return size;
}

/// Error: the target's sample cannot be read, or the decoder cannot be opened. A sample before it that cannot be read
/// is left out: what that spoils shows in the frame.
Result<FfmpegDecoder::Attempt> FfmpegDecoder::decodeFrom(std::uint64_t first, const PresentedSample& target) {
  if (auto ready = decoder_->restart(decoder_->needsReorderDepth() ? reorderDepthAt(target) : 0); !ready) {
    return failure(ready.error());
  }
  Attempt attempt;
  attempt.first = first;
  attempt.target = target;
  // A full decode shows spoiled frames too; only from the very beginning is there nothing better.
  decoder_->setSpoiledFrames(first == firstSample_);
  const bool discard = decoder_->unreferencedAreNotNeeded();
  std::uint64_t bytesLeft = file_->size() + decoder_->sampleLimit();  // samples of a sound file do not overlap
  for (std::uint64_t i = first; i <= target.index; ++i) {
    const bool isTarget = i == target.index;
    const auto size = readPacket(i);
    if (!size && isTarget) return tl::make_unexpected(size.error());
    if (!size || *size == 0) continue;
    if (*size > bytesLeft) return failure("the samples overlap");
    bytesLeft -= *size;
    const bool passing = discard && i != first && !isTarget;
    const int status = decoder_->send(passing ? SampleDecoder::Wanted::IfReferred : SampleDecoder::Wanted::Always);
    if (isTarget && status < 0) attempt.error = status;
    if (const int failed = receiveFrames(attempt); isTarget && failed != 0) attempt.error = failed;
  }
  decoder_->drain();
  if (const int failed = receiveFrames(attempt); failed != 0) attempt.error = failed;
  return attempt;
}

/// Takes the frames that are finished; libav's error where it ends with one, else 0.
int FfmpegDecoder::receiveFrames(Attempt& attempt) {
  for (;;) {
    int status = 0;
    auto frame = decoder_->receive(status);
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return 0;
    if (frame == nullptr) return status;
    take(attempt, std::move(frame));
  }
}

void FfmpegDecoder::take(Attempt& attempt, LibavPointer<AVFrame> frame) const {
  const std::int64_t stamp = frame->pts != AV_NOPTS_VALUE ? frame->pts : frame->pkt_dts;
  if (stamp < 0) return;
  const auto index = static_cast<std::uint64_t>(stamp);
  if (index == attempt.first && (frame->key_frame != 0 || frame->pict_type == AV_PICTURE_TYPE_I))
    attempt.startIsKey = true;
  if (index == attempt.target.index) {
    attempt.exact = std::move(frame);
    return;
  }
  const std::int64_t wanted = attempt.target.presentationTime;
  const std::int64_t time = table_.presentationTimeOf(index);
  const std::int64_t held = attempt.nearestTime;
  const bool nearer = time <= wanted ? held > wanted || time > held : held > wanted && time < held;
  if (attempt.nearest != nullptr && !nearer) return;
  attempt.nearest = std::move(frame);
  attempt.nearestTime = time;
}

}  // namespace movie

#include "movie/decode/ffmpeg/FfmpegPictureStream.h"

#include <algorithm>
#include <limits>

#include "movie/decode/ffmpeg/FramePicture.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {
namespace {

/// So many samples are rather decoded than jumped over, since a new start costs the pictures in the decoder.
constexpr std::uint64_t shortWay = 12;
/// So many starts that look sound and do not help are enough: the damage is elsewhere.
constexpr int patience = 4;

}  // namespace

Result<std::unique_ptr<PictureStream>> FfmpegPictureStream::make(std::shared_ptr<const MovieFile> file,
                                                                 std::size_t track) {
  auto made = DecodingTrack::make(std::move(file), track);
  if (!made) return tl::make_unexpected(std::move(made).error());
  return std::unique_ptr<PictureStream>(new FfmpegPictureStream(std::move(*made)));
}

Result<std::optional<Picture>> FfmpegPictureStream::picture(const StreamRequest& request) {
  const PresentedSample& target = request.picture.sample;
  if (target.index >= track_->table().sampleCount()) return track_->failure("there is no such sample");
  if (auto ready = useDescriptionOf(target.index); !ready) return tl::make_unexpected(ready.error());
  if (given_ != target.index) {
    const auto outcome = bringUp(request);
    if (!outcome) return tl::make_unexpected(outcome.error());
    if (*outcome == Outcome::GivenUp) return std::nullopt;
    given_ = target.index;
  }
  auto picture = pictureOfFrame(*current_.frame, decoder().frameOrigin(), request.picture, Scaling::Quick);
  if (!picture) return track_->failure("the frame cannot be used: " + picture.error());
  return std::move(*picture);
}

Result<void> FfmpegPictureStream::useDescriptionOf(std::uint64_t sample) {
  const std::uint64_t before = track_->firstSample();
  const auto changed = track_->useDescriptionOf(sample);
  if (!changed) {
    forget();
    return tl::make_unexpected(changed.error());
  }
  if (*changed) depth_ = 0;
  if (*changed || track_->firstSample() != before) forget();
  return {};
}

void FfmpegPictureStream::forget() {
  running_ = false;
  given_.reset();
  ahead_.clear();
  current_ = {};
}

/// Makes current_ what the target shows.
Result<FfmpegPictureStream::Outcome> FfmpegPictureStream::bringUp(const StreamRequest& request) {
  const PresentedSample& target = request.picture.sample;
  given_.reset();
  if (!canGoOnTo(target)) return startFor(request);
  auto outcome = advance(request);
  if (!outcome || *outcome == Outcome::GivenUp) return outcome;
  if (*outcome == Outcome::Found && proven_) return outcome;
  if (*outcome == Outcome::Missing && proven_) {
    if (error_ != 0) return track_->failure("the frame cannot be decoded: " + libavText(error_));
    if (takeNearest(target)) return outcome;
  }
  return startFor(request);
}

/// Tries one start after another, the most promising first.
Result<FfmpegPictureStream::Outcome> FfmpegPictureStream::startFor(const StreamRequest& request) {
  const PresentedSample& target = request.picture.sample;
  int soundStarts = 0;
  for (const std::uint64_t start : track_->startsFor(target)) {
    auto outcome = Result<Outcome>(Outcome::TooShallow);
    while (outcome && *outcome == Outcome::TooShallow) {
      if (auto ready = restart(start, target); !ready) return tl::make_unexpected(ready.error());
      outcome = advance(request);
    }
    if (!outcome || *outcome == Outcome::GivenUp || (*outcome == Outcome::Found && proven_)) return outcome;
    if (startIsKey_) ++soundStarts;
    const bool last = start == track_->firstSample() || decoder().intraOnly() || soundStarts >= patience;
    if (!last) continue;
    proven_ = true;
    if (*outcome == Outcome::Found) return outcome;
    if (error_ != 0) return track_->failure("the frame cannot be decoded: " + libavText(error_));
    if (takeNearest(target)) return outcome;
    break;
  }
  return track_->failure("the frame cannot be decoded: the decoder gave no picture");
}

Result<void> FfmpegPictureStream::restart(std::uint64_t start, const PresentedSample& target) {
  forget();
  if (decoder().needsReorderDepth()) {
    depth_ = std::max(depth_, track_->reorderDepthAt(target.index, target.presentationTime));
  }
  if (auto ready = decoder().restart(depth_); !ready) return track_->failure(ready.error());
  // A full decode shows spoiled frames too; only from the very beginning is there nothing better.
  decoder().setSpoiledFrames(start == track_->firstSample());
  running_ = true;
  drained_ = proven_ = startIsKey_ = false;
  start_ = sentFrom_ = next_ = start;
  bytesLeft_ = track_->file().size() + decoder().sampleLimit();  // samples of a sound file do not overlap
  passedTime_ = std::numeric_limits<std::int64_t>::min();
  skipped_.clear();
  error_ = 0;
  return {};
}

bool FfmpegPictureStream::isAhead(std::uint64_t sample) const {
  return std::any_of(ahead_.begin(), ahead_.end(), [&](const Held& held) { return held.sample == sample; });
}

bool FfmpegPictureStream::isSkipped(std::uint64_t sample) const {
  return std::find(skipped_.begin(), skipped_.end(), sample) != skipped_.end();
}

/// Whether so many samples presented later were sent that the target's frame would have come out if there were one.
bool FfmpegPictureStream::isOverdue(const PresentedSample& target) const {
  if (next_ <= target.index) return false;
  constexpr std::uint64_t window = 64;
  int later = 0;
  for (std::uint64_t i = next_ - std::min(next_ - sentFrom_, window); i < next_; ++i) {
    if (track_->table().presentationTimeOf(i) > target.presentationTime && !isSkipped(i)) ++later;
  }
  return later > decoder().delay() + 1;
}

bool FfmpegPictureStream::canGoOnTo(const PresentedSample& target) const {
  if (!running_) return false;
  if (isAhead(target.index)) return true;
  if (target.presentationTime <= passedTime_ || target.index < sentFrom_) return false;
  if (isSkipped(target.index)) return false;
  if (decoder().intraOnly()) return true;
  return track_->startAtOrBefore(target.index, target) <= next_ + shortWay;
}

/// Decodes on until the target's frame is current_ or it is plain that there is none. TooShallow: the decoder has to be
/// told first that pictures are reordered further.
Result<FfmpegPictureStream::Outcome> FfmpegPictureStream::advance(const StreamRequest& request) {
  const PresentedSample& target = request.picture.sample;
  if (decoder().intraOnly() && target.index > next_) next_ = sentFrom_ = target.index;
  if (next_ <= target.index) error_ = 0;
  for (;;) {
    if (takeUp(target)) return Outcome::Found;
    if (drained_ || isOverdue(target)) return Outcome::Missing;
    if (request.givenUp && request.givenUp()) return Outcome::GivenUp;
    if (next_ >= track_->table().sampleCount() || !track_->inDescriptionInUse(next_)) {
      drained_ = true;
      decoder().drain();
      if (const int failed = receiveFrames(); failed != 0) error_ = failed;
      continue;
    }
    const auto sent = sendNext(request);
    if (!sent) return tl::make_unexpected(sent.error());
    if (!*sent) return Outcome::TooShallow;
  }
}

/// Whether a sample's frame is wanted by nobody.
bool FfmpegPictureStream::mayPassOver(std::uint64_t sample, const StreamRequest& request) const {
  const PresentedSample& target = request.picture.sample;
  if (sample == start_ || sample == target.index || !decoder().unreferencedAreNotNeeded()) return false;
  const std::int64_t time = track_->table().presentationTimeOf(sample);
  return time < target.presentationTime || (request.nextTime && time < *request.nextTime);
}

/// Decodes one sample. False, without having done so: the decoder expects less reordering than there is. Error: it is
/// the target and cannot be read; another one is left out, and what that spoils shows.
Result<bool> FfmpegPictureStream::sendNext(const StreamRequest& request) {
  const PresentedSample& target = request.picture.sample;
  if (decoder().needsReorderDepth()) {
    const int depth = track_->reorderDepthAt(next_, track_->table().presentationTimeOf(next_));
    if (depth > depth_) {
      depth_ = depth;
      return false;
    }
  }
  const std::uint64_t sample = next_++;
  const bool isTarget = sample == target.index;
  const auto size = track_->readPacket(sample);
  if (!size && isTarget) return tl::make_unexpected(size.error());
  if (!size || *size == 0) return true;
  if (*size > bytesLeft_) {
    forget();
    return track_->failure("the samples overlap");
  }
  bytesLeft_ -= *size;
  const bool passing = mayPassOver(sample, request);
  if (passing) skipped_.push_back(sample);
  const int status = decoder().send(passing ? SampleDecoder::Wanted::IfReferred : SampleDecoder::Wanted::Always);
  if (isTarget && status < 0) error_ = status;
  if (const int failed = receiveFrames(); sample >= target.index && failed != 0) error_ = failed;
  return true;
}

/// Takes the frames that are finished; libav's error where it ends with one, else 0.
int FfmpegPictureStream::receiveFrames() {
  for (;;) {
    int status = 0;
    auto frame = decoder().receive(status);
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return 0;
    if (frame == nullptr) return status;
    const std::int64_t stamp = frame->pts != AV_NOPTS_VALUE ? frame->pts : frame->pkt_dts;
    if (stamp < 0) continue;
    const auto sample = static_cast<std::uint64_t>(stamp);
    if (sample == start_ && (frame->key_frame != 0 || frame->pict_type == AV_PICTURE_TYPE_I)) startIsKey_ = true;
    ahead_.push_back({std::move(frame), sample, track_->table().presentationTimeOf(sample)});
  }
}

bool FfmpegPictureStream::isProof(const Held& held) const {
  if (start_ == track_->firstSample() || decoder().intraOnly()) return true;
  const AVFrame& frame = *held.frame;
  const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
  return sound && (startIsKey_ || decoder().knowsItsOwnStart());
}

/// Passes over the frames before the target. True when its own has become current_.
bool FfmpegPictureStream::takeUp(const PresentedSample& target) {
  bool found = false;
  for (auto held = ahead_.begin(); held != ahead_.end();) {
    const bool isTarget = held->sample == target.index;
    if (!isTarget && held->time >= target.presentationTime) {
      ++held;
      continue;
    }
    passedTime_ = std::max(passedTime_, held->time);
    if (isTarget || (!found && (current_.frame == nullptr || held->time >= current_.time))) current_ = std::move(*held);
    held = ahead_.erase(held);
    found = found || isTarget;
  }
  if (!found) return false;
  const auto passed = [&](std::uint64_t sample) {
    return track_->table().presentationTimeOf(sample) <= target.presentationTime;
  };
  skipped_.erase(std::remove_if(skipped_.begin(), skipped_.end(), passed), skipped_.end());
  if (!proven_ && isProof(current_)) {
    proven_ = true;
    decoder().setSpoiledFrames(true);
  }
  return true;
}

/// For a target without a frame of its own: what is on screen at its time, the last before it, else the first after it.
bool FfmpegPictureStream::takeNearest(const PresentedSample& target) {
  passedTime_ = std::max(passedTime_, target.presentationTime);
  if (current_.frame != nullptr) return true;
  const auto first =
      std::min_element(ahead_.begin(), ahead_.end(), [](const Held& a, const Held& b) { return a.time < b.time; });
  if (first == ahead_.end()) return false;
  current_.frame.reset(av_frame_clone(first->frame.get()));
  current_.sample = first->sample;
  current_.time = first->time;
  return current_.frame != nullptr;
}

}  // namespace movie

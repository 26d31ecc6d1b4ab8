#include "movie/decode/ffmpeg/FfmpegDecoder.h"

#include <algorithm>
#include <utility>

#include "movie/decode/ffmpeg/FramePicture.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {

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
  auto made = DecodingTrack::make(std::move(file), track);
  if (!made) return tl::make_unexpected(std::move(made).error());
  return std::unique_ptr<MovieDecoder>(new FfmpegDecoder(std::move(*made)));
}

Result<Picture> FfmpegDecoder::picture(const PictureRequest& request) {
  if (request.sample.index >= track_->table().sampleCount()) return track_->failure("there is no such sample");
  if (auto ready = track_->useDescriptionOf(request.sample.index); !ready) return tl::make_unexpected(ready.error());
  auto frame = frameOf(request.sample);
  if (!frame) return tl::make_unexpected(frame.error());
  auto picture = pictureOfFrame(**frame, decoder().frameOrigin(), request);
  if (!picture) return track_->failure("the frame cannot be used: " + picture.error());
  return std::move(*picture);
}

Result<LibavPointer<AVFrame>> FfmpegDecoder::frameOf(const PresentedSample& target) {
  for (const std::uint64_t start : track_->startsFor(target)) {
    auto attempt = decodeFrom(start, target);
    if (!attempt) return tl::make_unexpected(attempt.error());
    const bool last = start == track_->firstSample() || decoder().intraOnly();
    if (attempt->exact != nullptr) {
      const AVFrame& frame = *attempt->exact;
      const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
      if (last || (sound && (attempt->startIsKey || decoder().knowsItsOwnStart()))) return std::move(attempt->exact);
    } else if (attempt->error != 0 && last) {
      return track_->failure("the frame cannot be decoded: " + libavText(attempt->error));
    } else if (attempt->nearest != nullptr && last) {
      return std::move(attempt->nearest);
    }
  }
  return track_->failure("the frame cannot be decoded: the decoder gave no picture");
}

/// Error: the target's sample cannot be read, or the decoder cannot be opened. A sample before it that cannot be read
/// is left out: what that spoils shows in the frame.
Result<FfmpegDecoder::Attempt> FfmpegDecoder::decodeFrom(std::uint64_t first, const PresentedSample& target) {
  if (auto ready = decoder().restart(
          decoder().needsReorderDepth() ? track_->reorderDepthAt(target.index, target.presentationTime) : 0);
      !ready) {
    return track_->failure(ready.error());
  }
  Attempt attempt;
  attempt.first = first;
  attempt.target = target;
  // A full decode shows spoiled frames too; only from the very beginning is there nothing better.
  decoder().setSpoiledFrames(first == track_->firstSample());
  const bool discard = decoder().unreferencedAreNotNeeded();
  std::uint64_t bytesLeft = track_->file().size() + decoder().sampleLimit();  // samples of a sound file do not overlap
  for (std::uint64_t i = first; i <= target.index; ++i) {
    const bool isTarget = i == target.index;
    const auto size = track_->readPacket(i);
    if (!size && isTarget) return tl::make_unexpected(size.error());
    if (!size || *size == 0) continue;
    if (*size > bytesLeft) return track_->failure("the samples overlap");
    bytesLeft -= *size;
    const bool passing = discard && i != first && !isTarget;
    const int status = decoder().send(passing ? SampleDecoder::Wanted::IfReferred : SampleDecoder::Wanted::Always);
    if (isTarget && status < 0) attempt.error = status;
    if (const int failed = receiveFrames(attempt); isTarget && failed != 0) attempt.error = failed;
  }
  decoder().drain();
  if (const int failed = receiveFrames(attempt); failed != 0) attempt.error = failed;
  return attempt;
}

/// Takes the frames that are finished; libav's error where it ends with one, else 0.
int FfmpegDecoder::receiveFrames(Attempt& attempt) {
  for (;;) {
    int status = 0;
    auto frame = decoder().receive(status);
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
  const std::int64_t time = track_->table().presentationTimeOf(index);
  const std::int64_t held = attempt.nearestTime;
  const bool nearer = time <= wanted ? held > wanted || time > held : held > wanted && time < held;
  if (attempt.nearest != nullptr && !nearer) return;
  attempt.nearest = std::move(frame);
  attempt.nearestTime = time;
}

}  // namespace movie

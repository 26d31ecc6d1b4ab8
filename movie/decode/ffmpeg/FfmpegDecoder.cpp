#include "movie/decode/ffmpeg/FfmpegDecoder.h"

#include <algorithm>

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

Result<std::unique_ptr<MovieDecoder>> FfmpegDecoder::make(std::shared_ptr<const MovieFile> file, std::size_t track) {
  TRY(auto made, DecodingTrack::make(std::move(file), track));
  return std::unique_ptr<MovieDecoder>(new FfmpegDecoder(std::move(made)));
}

Result<Picture> FfmpegDecoder::picture(const PictureRequest& request) {
  forget();
  const auto found = find({.target = request.sample, .manner = Manner::Alone});
  auto picture = found ? pictureOfCurrent(request, Scaling::Exact) : tl::make_unexpected(found.error());
  forget();
  return picture;
}

Result<std::optional<Picture>> FfmpegDecoder::pictureInRow(const RowRequest& request) {
  TRY(const auto found, find({request.picture.sample, Manner::InRow, request.nextTime, request.givenUp}));
  if (!found) return std::nullopt;
  return pictureOfCurrent(request.picture, Scaling::Quick);
}

Result<Picture> FfmpegDecoder::pictureOfCurrent(const PictureRequest& request, Scaling scaling) const {
  auto picture = pictureOfFrame(*current_.frame, decoder().frameOrigin(), request, scaling);
  if (!picture) return track_->failure({Reason::FrameUnusable, {picture.error()}});
  return std::move(*picture);
}

/// Makes current_ what the target shows. False when it was given up.
Result<bool> FfmpegDecoder::find(const Search& search) {
  const PresentedSample& target = search.target;
  if (target.index >= track_->table().sampleCount()) return track_->failure(Reason::NoSuchSample);
  TRY(useDescriptionOf(target.index));
  if (given_ == target.index) return true;
  given_.reset();
  auto outcome = canGoOnTo(target) ? advance(search) : Outcome::Unproven;
  if (outcome && (*outcome == Outcome::Unproven || *outcome == Outcome::TooShallow)) outcome = startFor(search);
  if (!outcome) return tl::make_unexpected(outcome.error());
  if (*outcome == Outcome::Unproven) return track_->failure({Reason::FrameUndecodable, {Reason::NoPicture}});
  if (*outcome == Outcome::GivenUp) return false;
  given_ = target.index;
  return true;
}

Result<void> FfmpegDecoder::useDescriptionOf(std::uint64_t sample) {
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

void FfmpegDecoder::forget() {
  run_.reset();
  given_.reset();
  ahead_.clear();
  current_ = {};
}

/// Tries one start after another, the most promising first. Unproven: none gives a picture.
Result<FfmpegDecoder::Outcome> FfmpegDecoder::startFor(const Search& search) {
  int soundStarts = 0;
  Result<Outcome> outcome = Outcome::Unproven;
  for (const std::uint64_t start : track_->startsFor(search.target)) {
    const bool last = start == track_->firstSample() || decoder().intraOnly();
    outcome = decodeFrom(start, last ? Start::NoneBetter : Start::OneOfMany, search);
    if (!outcome || *outcome != Outcome::Unproven) break;
    if (run_->startIsKey && ++soundStarts == patience) return decodeFrom(start, Start::NoneBetter, search);
  }
  return outcome;
}

Result<FfmpegDecoder::Outcome> FfmpegDecoder::decodeFrom(std::uint64_t start, Start kind, const Search& search) {
  auto outcome = Result<Outcome>(Outcome::TooShallow);
  while (outcome && *outcome == Outcome::TooShallow) {
    TRY(restart(start, kind, search.target));
    outcome = advance(search);
  }
  return outcome;
}

Result<void> FfmpegDecoder::restart(std::uint64_t start, Start kind, const PresentedSample& target) {
  forget();
  if (decoder().needsReorderDepth()) {
    depth_ = std::max(depth_, track_->reorderDepthAt(target.index, target.presentationTime));
  }
  if (auto ready = decoder().restart(depth_); !ready) return track_->failure(ready.error());
  const bool proven = kind == Start::NoneBetter;
  decoder().setSpoiledFrames(proven);                                           // as a full decode shows them
  const std::uint64_t bytes = track_->file().size() + decoder().sampleLimit();  // a sound file's samples do not overlap
  run_ = Run{.start = start, .proven = proven, .bytesLeft = bytes};
  return {};
}

bool FfmpegDecoder::isAhead(std::uint64_t sample) const {
  return std::any_of(ahead_.begin(), ahead_.end(), [&](const Held& held) { return held.sample == sample; });
}

bool FfmpegDecoder::isSkipped(std::uint64_t sample) const {
  return std::find(run_->skipped.begin(), run_->skipped.end(), sample) != run_->skipped.end();
}

/// Whether so many samples presented later were sent that the target's frame would have come out if there were one.
bool FfmpegDecoder::isOverdue(const PresentedSample& target) const {
  const std::uint64_t next = run_->next;
  if (next <= target.index) return false;
  constexpr std::uint64_t window = 64;
  int later = 0;
  for (std::uint64_t i = next - std::min(next - run_->sentFrom, window); i < next; ++i) {
    if (track_->table().presentationTimeOf(i) > target.presentationTime && !isSkipped(i)) ++later;
  }
  return later > decoder().delay() + 1;
}

bool FfmpegDecoder::canGoOnTo(const PresentedSample& target) const {
  if (!run_) return false;
  if (isAhead(target.index)) return true;
  if (target.presentationTime <= run_->passedTime || target.index < run_->sentFrom) return false;
  if (isSkipped(target.index)) return false;
  if (decoder().intraOnly()) return true;
  return track_->startAtOrBefore(target.index, target) <= run_->next + shortWay;
}

/// Decodes on until the target's frame is current_ or it is plain that there is none.
Result<FfmpegDecoder::Outcome> FfmpegDecoder::advance(const Search& search) {
  const PresentedSample& target = search.target;
  const bool goesOn = run_->next > run_->start;
  if (goesOn && decoder().intraOnly() && target.index > run_->next) run_->next = run_->sentFrom = target.index;
  if (run_->next <= target.index) run_->error = 0;
  while (!takeUp(target)) {
    if (hasAllFor(search) && !run_->drained) {
      drain();
      continue;
    }
    if (run_->drained || isOverdue(target)) return run_->proven ? takeNearest(target) : Outcome::Unproven;
    if (search.givenUp && search.givenUp()) return Outcome::GivenUp;
    if (search.manner == Manner::InRow && tooShallowForNext()) return Outcome::TooShallow;
    TRY(sendNext(search));
  }
  return run_->proven ? Outcome::Found : Outcome::Unproven;
}

/// Whether there is nothing more to send: for one picture alone nothing after its sample.
bool FfmpegDecoder::hasAllFor(const Search& search) const {
  if (search.manner == Manner::Alone && run_->next > search.target.index) return true;
  return run_->next >= track_->table().sampleCount() || !track_->inDescriptionInUse(run_->next);
}

void FfmpegDecoder::drain() {
  run_->drained = true;
  decoder().drain();
  if (const int failed = receiveFrames(); failed != 0) run_->error = failed;
}

/// Whether a sample's frame is wanted by nobody.
bool FfmpegDecoder::mayPassOver(std::uint64_t sample, const Search& search) const {
  const PresentedSample& target = search.target;
  if (sample == run_->start || sample == target.index || !decoder().unreferencedAreNotNeeded()) return false;
  const std::int64_t time = track_->table().presentationTimeOf(sample);
  return time < target.presentationTime || (search.nextTime && time < *search.nextTime);
}

bool FfmpegDecoder::tooShallowForNext() {
  if (!decoder().needsReorderDepth()) return false;
  const int depth = track_->reorderDepthAt(run_->next, track_->table().presentationTimeOf(run_->next));
  return depth > std::exchange(depth_, std::max(depth_, depth));
}

/// Decodes one sample. Error: it is the target and cannot be read; another one is left out, and what that spoils shows.
Result<void> FfmpegDecoder::sendNext(const Search& search) {
  const std::uint64_t sample = run_->next++;
  const bool isTarget = sample == search.target.index;
  const auto size = track_->readPacket(sample);
  if (!size && isTarget) return tl::make_unexpected(size.error());
  if (!size || *size == 0) return {};
  if (*size > run_->bytesLeft) {
    forget();
    return track_->failure(Reason::SamplesOverlap);
  }
  run_->bytesLeft -= *size;
  const bool passing = mayPassOver(sample, search);
  if (passing) run_->skipped.push_back(sample);
  const int status = decoder().send(passing ? SampleDecoder::Wanted::IfReferred : SampleDecoder::Wanted::Always);
  if (isTarget && status < 0) run_->error = status;
  if (const int failed = receiveFrames(); sample >= search.target.index && failed != 0) run_->error = failed;
  return {};
}

/// Takes the frames that are finished; libav's error where it ends with one, else 0.
int FfmpegDecoder::receiveFrames() {
  for (;;) {
    int status = 0;
    auto frame = decoder().receive(status);
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return 0;
    if (frame == nullptr) return status;
    const std::int64_t stamp = frame->pts != AV_NOPTS_VALUE ? frame->pts : frame->pkt_dts;
    if (stamp < 0) continue;
    const auto sample = static_cast<std::uint64_t>(stamp);
    const bool isKey = frame->key_frame != 0 || frame->pict_type == AV_PICTURE_TYPE_I;
    if (sample == run_->start && isKey) run_->startIsKey = true;
    ahead_.push_back({std::move(frame), sample, track_->table().presentationTimeOf(sample)});
  }
}

bool FfmpegDecoder::isProof(const Held& held) const {
  const AVFrame& frame = *held.frame;
  const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
  return sound && (run_->startIsKey || decoder().knowsItsOwnStart());
}

/// Passes over the frames before the target. True when its own has become current_.
bool FfmpegDecoder::takeUp(const PresentedSample& target) {
  bool found = false;
  for (auto held = ahead_.begin(); held != ahead_.end();) {
    const bool isTarget = held->sample == target.index;
    if (!isTarget && held->time >= target.presentationTime) {
      ++held;
      continue;
    }
    run_->passedTime = std::max(run_->passedTime, held->time);
    if (isTarget || (!found && (current_.frame == nullptr || held->time >= current_.time))) current_ = std::move(*held);
    held = ahead_.erase(held);
    found = found || isTarget;
  }
  if (!found) return false;
  const auto passed = [&](std::uint64_t sample) {
    return track_->table().presentationTimeOf(sample) <= target.presentationTime;
  };
  run_->skipped.erase(std::remove_if(run_->skipped.begin(), run_->skipped.end(), passed), run_->skipped.end());
  if (!run_->proven && isProof(current_)) {
    run_->proven = true;
    decoder().setSpoiledFrames(true);
  }
  return true;
}

/// For a target without a frame of its own: what is on screen at its time, the last before it, else the first after it.
/// Unproven: nothing has come out at all.
Result<FfmpegDecoder::Outcome> FfmpegDecoder::takeNearest(const PresentedSample& target) {
  if (run_->error != 0) return track_->failure({Reason::FrameUndecodable, {verbatim(libavText(run_->error))}});
  run_->passedTime = std::max(run_->passedTime, target.presentationTime);
  if (current_.frame != nullptr) return Outcome::Found;
  const auto first =
      std::min_element(ahead_.begin(), ahead_.end(), [](const Held& a, const Held& b) { return a.time < b.time; });
  if (first != ahead_.end()) {
    current_ = {LibavPointer<AVFrame>(av_frame_clone(first->frame.get())), first->sample, first->time};
  }
  return current_.frame != nullptr ? Outcome::Found : Outcome::Unproven;
}

}  // namespace movie

#include "movie/decode/ffmpeg/FfmpegDecoder.h"

#include <algorithm>
#include <span>

namespace movie {
namespace {

/// So many samples are rather decoded than jumped over, since a new start costs the pictures in the decoder.
constexpr std::uint64_t shortWay = 12;
constexpr int longestReorder = 16;  // pictures, in every standard there is
/// So many starts that look sound and do not help are enough: the damage is elsewhere.
constexpr int patience = 4;

}  // namespace

Result<std::unique_ptr<MovieDecoder>> FfmpegDecoder::make(std::shared_ptr<const MovieFile> file, std::size_t track) {
  const auto failure = [&file](Reason why) { return failed(file->path(), why); };
  if (track >= file->tracks().size()) return failure(Reason::NoSuchTrack);
  const TrackInfo& info = file->tracks()[track];
  if (info.mediaType != videoMedia) return failure(Reason::NoPictures);
  if (info.sampleDescriptions.empty()) return failure(Reason::NoImageDescription);
  return std::unique_ptr<MovieDecoder>(new FfmpegDecoder(std::move(file), track));
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
  auto picture = pictureOfFrame(*current_.frame, decoder_->frameOrigin(), request, scaling);
  if (!picture) return failure({Reason::FrameUnusable, {picture.error()}});
  return std::move(*picture);
}

/// Makes current_ what the target shows. False when it was given up.
Result<bool> FfmpegDecoder::find(const Search& search) {
  const PresentedSample& target = search.target;
  if (target.index >= table_.sampleCount()) return failure(Reason::NoSuchSample);
  TRY(useDescriptionOf(target.index));
  if (given_ == target.index) return true;
  given_.reset();
  auto outcome = canGoOnTo(target) ? advance(search) : Outcome::Unproven;
  if (outcome && (*outcome == Outcome::Unproven || *outcome == Outcome::TooShallow)) outcome = startFor(search);
  if (!outcome) return tl::make_unexpected(outcome.error());
  if (*outcome == Outcome::Unproven) return failure({Reason::FrameUndecodable, {Reason::NoPicture}});
  if (*outcome == Outcome::GivenUp) return false;
  given_ = target.index;
  return true;
}

/// The decoder of another description is given up: it may hold many pictures, and would have to be restarted anyway.
Result<void> FfmpegDecoder::useDescriptionOf(std::uint64_t sample) {
  const DescriptionRun run = file_->descriptionRunOf(track_, sample);
  const TrackInfo& info = file_->tracks()[track_];
  const bool inUse = decoder_ != nullptr && description_ == run.description;
  const bool isExternal = info.isExternal(run.description);
  if (!inUse || isExternal || run.first != firstSample_) forget();
  if (isExternal) return failure(Reason::SamplesElsewhere);
  firstSample_ = run.first;
  if (inUse) return {};
  decoder_.reset();
  auto made = SampleDecoder::make(file_->majorBrand(), ImageDescription(info.sampleDescriptions[run.description]));
  if (!made) return failure(made.error());
  decoder_ = std::move(*made);
  description_ = run.description;
  depth_ = 0;
  return {};
}

/// For a sample that is not before firstSample_.
bool FfmpegDecoder::inDescriptionInUse(std::uint64_t sample) const {
  if (file_->tracks()[track_].sampleDescriptions.size() == 1) return true;
  return file_->descriptionRunOf(track_, sample).first == firstSample_;
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

/// How many of the samples decoded before one are presented after it.
int FfmpegDecoder::reorderDepthAt(std::uint64_t sample, std::int64_t presentationTime) const {
  int depth = 0;
  constexpr std::uint64_t window = 64;
  for (std::uint64_t i = sample - std::min(sample - firstSample_, window); i < sample; ++i) {
    if (table_.presentationTimeOf(i) > presentationTime) ++depth;
  }
  return std::min(depth, longestReorder);
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
  for (const std::uint64_t start : startsFor(search.target)) {
    const bool last = start == firstSample_ || decoder_->intraOnly();
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
  if (decoder_->needsReorderDepth()) {
    depth_ = std::max(depth_, reorderDepthAt(target.index, target.presentationTime));
  }
  if (auto ready = decoder_->restart(depth_); !ready) return failure(ready.error());
  const bool proven = kind == Start::NoneBetter;
  decoder_->setSpoiledFrames(proven);                                   // as a full decode shows them
  const std::uint64_t bytes = file_->size() + decoder_->sampleLimit();  // a sound file's samples do not overlap
  run_ = Run{.start = start, .proven = proven, .bytesLeft = bytes};
  return {};
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
    if (table_.presentationTimeOf(i) > target.presentationTime && !isSkipped(i)) ++later;
  }
  return later > decoder_->delay() + 1;
}

bool FfmpegDecoder::canGoOnTo(const PresentedSample& target) const {
  if (!run_) return false;
  const auto isTarget = [&target](const Held& held) { return held.sample == target.index; };
  if (std::any_of(ahead_.begin(), ahead_.end(), isTarget)) return true;
  if (target.presentationTime <= run_->passedTime || target.index < run_->sentFrom) return false;
  if (isSkipped(target.index)) return false;
  if (decoder_->intraOnly()) return true;
  return startAtOrBefore(target.index, target) <= run_->next + shortWay;
}

/// Decodes on until the target's frame is current_ or it is plain that there is none.
Result<FfmpegDecoder::Outcome> FfmpegDecoder::advance(const Search& search) {
  const PresentedSample& target = search.target;
  const bool goesOn = run_->next > run_->start;
  if (goesOn && decoder_->intraOnly() && target.index > run_->next) run_->next = run_->sentFrom = target.index;
  if (run_->next <= target.index) run_->error = 0;
  while (!takeUp(target)) {
    if (hasAllFor(search) && !run_->drained) {
      run_->drained = true;
      decoder_->drain();
      if (const int failed = receiveFrames(); failed != 0) run_->error = failed;
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
  return run_->next >= table_.sampleCount() || !inDescriptionInUse(run_->next);
}

/// Whether a sample's frame is wanted by nobody.
bool FfmpegDecoder::mayPassOver(std::uint64_t sample, const Search& search) const {
  const PresentedSample& target = search.target;
  if (sample == run_->start || sample == target.index || !decoder_->unreferencedAreNotNeeded()) return false;
  const std::int64_t time = table_.presentationTimeOf(sample);
  return time < target.presentationTime || (search.nextTime && time < *search.nextTime);
}

bool FfmpegDecoder::tooShallowForNext() {
  if (!decoder_->needsReorderDepth()) return false;
  const int depth = reorderDepthAt(run_->next, table_.presentationTimeOf(run_->next));
  return depth > std::exchange(depth_, std::max(depth_, depth));
}

/// Decodes one sample. Error: it is the target and cannot be read; another one is left out, and what that spoils shows.
Result<void> FfmpegDecoder::sendNext(const Search& search) {
  const std::uint64_t sample = run_->next++;
  const bool isTarget = sample == search.target.index;
  const auto size = readPacket(sample);
  if (!size && isTarget) return tl::make_unexpected(size.error());
  if (!size || *size == 0) return {};
  if (*size > run_->bytesLeft) {
    forget();
    return failure(Reason::SamplesOverlap);
  }
  run_->bytesLeft -= *size;
  const bool passing = mayPassOver(sample, search);
  if (passing) run_->skipped.push_back(sample);
  const int status = decoder_->send(passing ? SampleDecoder::Wanted::IfReferred : SampleDecoder::Wanted::Always);
  if (isTarget && status < 0) run_->error = status;
  if (const int failed = receiveFrames(); sample >= search.target.index && failed != 0) run_->error = failed;
  return {};
}

/// Reads a sample into a packet of the decoder's; its size, 0 for none.
Result<std::size_t> FfmpegDecoder::readPacket(std::uint64_t sample) {
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

/// Takes the frames that are finished; libav's error where it ends with one, else 0.
int FfmpegDecoder::receiveFrames() {
  for (;;) {
    int status = 0;
    auto frame = decoder_->receive(status);
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return 0;
    if (frame == nullptr) return status;
    const std::int64_t stamp = frame->pts != AV_NOPTS_VALUE ? frame->pts : frame->pkt_dts;
    if (stamp < 0) continue;
    const auto sample = static_cast<std::uint64_t>(stamp);
    const bool isKey = frame->key_frame != 0 || frame->pict_type == AV_PICTURE_TYPE_I;
    if (sample == run_->start && isKey) run_->startIsKey = true;
    ahead_.push_back({std::move(frame), sample, table_.presentationTimeOf(sample)});
  }
}

bool FfmpegDecoder::isProof(const Held& held) const {
  const AVFrame& frame = *held.frame;
  const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
  return sound && (run_->startIsKey || decoder_->knowsItsOwnStart());
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
    return table_.presentationTimeOf(sample) <= target.presentationTime;
  };
  run_->skipped.erase(std::remove_if(run_->skipped.begin(), run_->skipped.end(), passed), run_->skipped.end());
  if (!run_->proven && isProof(current_)) {
    run_->proven = true;
    decoder_->setSpoiledFrames(true);
  }
  return true;
}

/// For a target without a frame of its own: what is on screen at its time, the last before it, else the first after it.
/// Unproven: nothing has come out at all.
Result<FfmpegDecoder::Outcome> FfmpegDecoder::takeNearest(const PresentedSample& target) {
  if (run_->error != 0) return failure({Reason::FrameUndecodable, {verbatim(libavText(run_->error))}});
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

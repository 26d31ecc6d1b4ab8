#include "movie/decode/ffmpeg/SoundTrackStream.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace movie {
namespace {

__extension__ using Int128 = __int128;

constexpr std::uint64_t framesAtOnce = 16384;
constexpr std::uint64_t largestPacket = 1U << 20;                                      // bytes
constexpr std::int64_t farthestSample = std::numeric_limits<std::int64_t>::max() / 4;  // so that sums stay in range

}  // namespace

SoundTrackStream::SoundTrackStream(std::shared_ptr<const MovieFile> file, std::size_t track)
    : file_(std::move(file)), track_(track), info_(file_->tracks()[track]), table_(file_->sampleTable(track)) {}

tl::unexpected<MovieError> SoundTrackStream::failure(Clause why) const {
  return failed(file_->path(), std::move(why));
}

Result<std::unique_ptr<SoundStream>> SoundTrackStream::make(std::shared_ptr<const MovieFile> file, std::size_t track) {
  if (track >= file->tracks().size() || file->tracks()[track].mediaType != soundMedia) {
    return failed(file->path(), Reason::NoSuchSoundTrack);
  }
  std::unique_ptr<SoundTrackStream> stream(new SoundTrackStream(std::move(file), track));
  TRY(stream->settleRate());
  return stream;
}

/// A track of one sample a frame runs at the rate of its media's clock. Any other one says its rate itself, in its
/// packets: the description has only the half of it for some AAC.
Result<void> SoundTrackStream::settleRate() {
  if (table_.sampleCount() == 0) return failure(Reason::NoSoundSamples);
  const DescriptionRun first = file_->descriptionRunOf(track_, 0);
  TRY(useDescription(first.description));
  frameByFrame_ = decoder_->framesPerPacket() > 0 && table_.duration() > 0 &&
                  static_cast<std::uint64_t>(table_.duration()) == table_.sampleCount();
  rate_ = frameByFrame_ || decoder_->rate() == 0 ? info_.mediaTimeScale : decoder_->rate();
  constexpr std::uint64_t packetsToTry = 4;
  for (std::uint64_t i = 0; !frameByFrame_ && i < std::min(packetsToTry, table_.sampleCount()); ++i) {
    std::size_t description = 0;
    const auto packet = readPacket(i, description);
    if (!packet || description != description_ || !decoder_->decode(*packet, block_) || block_.empty()) continue;
    rate_ = decoder_->rate();
    break;
  }
  if (!frameByFrame_) decoder_.reset();  // one that decoded goes on with the noise that it fills in
  TRY(useDescription(first.description));
  if (rate_ < 1 || rate_ > SoundDescription::highestRate) return failure(Reason::SoundRateOutOfBounds);
  const Int128 frames = Int128{table_.duration()} * rate_ + info_.mediaTimeScale - 1;
  frameCount_ = static_cast<std::int64_t>(std::min<Int128>(frames / info_.mediaTimeScale, farthestSample));
  seek(0);
  return {};
}

Result<void> SoundTrackStream::useDescription(std::size_t description) {
  if (decoder_ != nullptr && description == description_) return {};
  if (description >= info_.sampleDescriptions.size()) return failure(Reason::NoSoundDescription);
  const auto read = readSoundDescription(info_.sampleDescriptions[description]);
  if (!read) return failure(read.error());
  auto decoder = SoundDecoder::make(*read);
  if (!decoder) return failure(decoder.error());
  decoder_ = std::move(*decoder);
  description_ = description;
  return {};
}

std::int64_t SoundTrackStream::frameOf(std::int64_t mediaTime) const {
  return std::min(timeScaled({mediaTime, info_.mediaTimeScale}, rate_).value, farthestSample);
}

void SoundTrackStream::seek(std::int64_t frame) {
  std::uint64_t sample = static_cast<std::uint64_t>(frame);
  std::uint64_t back = decoder_->preroll();
  if (frameByFrame_) {
    back *= decoder_->framesPerPacket();
  } else {
    const auto time = static_cast<std::int64_t>(Int128{frame} * info_.mediaTimeScale / rate_);
    sample = table_.presentedAt(time).value_or(PresentedSample{}).index;
  }
  nextSample_ = sample - std::min(back, sample);
  block_.clear();
  blockStart_ = frameByFrame_ ? static_cast<std::int64_t>(nextSample_) : frameOf(table_.decodeTimeOf(nextSample_));
  // Not flushed but made anew: what a decoder keeps over a flush would be heard in the first packet.
  auto used = std::move(decoder_);
  if (!useDescription(description_)) decoder_ = std::move(used);
}

/// Copies what the block has from `first` on; how many frames.
std::int64_t SoundTrackStream::copyBlock(std::int64_t first, std::span<float> stereo) const {
  const std::int64_t count = std::min(blockEnd() - first, static_cast<std::int64_t>(stereo.size() / 2));
  const auto from = block_.begin() + 2 * (first - blockStart_);
  std::copy(from, from + 2 * count, stereo.begin());
  return count;
}

Result<void> SoundTrackStream::read(std::int64_t first, std::span<float> stereo) {
  std::fill(stereo.begin(), stereo.end(), 0.0F);
  const auto wanted = static_cast<std::int64_t>(stereo.size() / 2);
  const std::int64_t end = std::min(first > frameCount_ - wanted ? frameCount_ : first + wanted, frameCount_);
  std::int64_t at = std::max<std::int64_t>(first, 0);
  if (at >= end) return {};
  const bool inBlock = at >= blockStart_ && at < blockEnd();
  if (at != expected_ && !inBlock) seek(at);
  expected_ = end;

  Result<void> outcome;
  // Packets that last no time at all must not keep this going for ever.
  constexpr std::int64_t extraSteps = 1000;
  std::int64_t steps = wanted + extraSteps;
  while (at < end) {
    if (blockEnd() > at) {
      at = std::max(at, blockStart_);
      if (at < end)
        at += copyBlock(
            at, stereo.subspan(2 * static_cast<std::size_t>(at - first), 2 * static_cast<std::size_t>(end - at)));
    } else if (nextSample_ >= table_.sampleCount() || steps-- == 0) {
      break;
    } else if (auto decoded = decodeMore(); !decoded && outcome) {
      outcome = std::move(decoded);
    }
  }
  return outcome;
}

/// Replaces the block by the next frames, or by none where they fail; moves on in any case.
Result<void> SoundTrackStream::decodeMore() {
  const std::int64_t previousEnd = blockEnd();
  block_.clear();
  auto decoded = frameByFrame_ ? decodeRun() : decodePacket();
  // Times that are rounded to a coarse clock leave no gaps.
  if (!frameByFrame_ && !block_.empty() && std::abs(blockStart_ - previousEnd) <= rate_ / 200)
    blockStart_ = previousEnd;
  return decoded;
}

/// Decodes on to the end of a chunk, and of those that follow it in the file.
Result<void> SoundTrackStream::decodeRun() {
  const std::uint64_t first = nextSample_;
  blockStart_ = static_cast<std::int64_t>(first);
  nextSample_ += framesAtOnce;
  TRY(const auto place, file_->locateSample(track_, first));
  SampleLocation::Neighbours run = place.neighbours;
  nextSample_ = std::min(nextSample_, run.first + run.count);
  TRY(useDescription(place.description));
  const std::uint64_t frames = decoder_->framesPerPacket(), size = decoder_->bytesPerPacket();
  if (frames == 0) return failure(Reason::SoundKindChanges);
  constexpr int mostJoined = 64;  // each is looked up from the beginning of a table
  for (int joined = 0; joined < mostJoined && run.first + run.count < first + framesAtOnce && run.count % frames == 0;
       ++joined) {
    const auto next = file_->locateSample(track_, run.first + run.count);
    const bool follows = next && next->description == place.description &&
                         next->neighbours.offset == run.offset + run.count / frames * size;
    if (!follows) break;
    run.count += next->neighbours.count;
  }
  const std::uint64_t there = run.offset < file_->size() ? (file_->size() - run.offset) / size : 0;
  const std::uint64_t packet = (first - run.first) / frames;
  if (packet >= there) return failure(Reason::SoundPastEnd);
  const std::uint64_t end = std::min({there, (run.count + frames - 1) / frames, packet + framesAtOnce / frames});
  blockStart_ = static_cast<std::int64_t>(run.first + packet * frames);
  nextSample_ = run.first + std::min(run.count, end * frames);
  return decodePackets(run.offset + packet * size, end - packet);
}

/// Decodes packets of one size that lie one behind the other.
Result<void> SoundTrackStream::decodePackets(std::uint64_t offset, std::uint64_t count) {
  const std::uint64_t size = decoder_->bytesPerPacket();
  Bytes bytes(static_cast<std::size_t>(count * size));
  TRY(const auto got, file_->read(offset, bytes));
  bytes.resize(got - got % static_cast<std::size_t>(size));
  const std::size_t step = decoder_->framesPerPacket() == 1 ? bytes.size() : static_cast<std::size_t>(size);
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    TRY(decode(ByteView(bytes).subspan(at, step)));
  }
  if (got < count * size) return failure(Reason::SoundPastEnd);
  return {};
}

Result<Bytes> SoundTrackStream::readPacket(std::uint64_t sample, std::size_t& description) const {
  TRY(const auto place, file_->locateSample(track_, sample));
  if (place.size > largestPacket) return failure(Reason::SoundSampleTooLarge);
  description = place.description;
  Bytes bytes(static_cast<std::size_t>(place.size));
  TRY(const auto got, file_->read(place.offset, bytes));
  if (got < bytes.size()) return failure(Reason::BecameShorter);
  return bytes;
}

Result<void> SoundTrackStream::decodePacket() {
  const std::uint64_t sample = nextSample_++;
  blockStart_ = frameOf(table_.decodeTimeOf(sample));
  std::size_t description = 0;
  TRY(const auto packet, readPacket(sample, description));
  if (packet.empty()) return {};
  TRY(useDescription(description));
  return decode(packet);
}

Result<void> SoundTrackStream::decode(ByteView packet) {
  if (auto decoded = decoder_->decode(packet, block_); !decoded) return failure(decoded.error());
  if (frameByFrame_ || decoder_->rate() == rate_) return {};
  block_.clear();
  return failure(Reason::SoundRateChanges);
}

}  // namespace movie

#include "movie/decode/ffmpeg/FfmpegDecoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>
#include <utility>

#include "movie/decode/ffmpeg/FramePicture.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace movie {
namespace {

constexpr std::int64_t largestPicture = 16384LL * 16384LL;  // pixels
constexpr int longestReorder = 16;                          // pictures, in every standard there is

/// Two movies are decoded side by side, so each gets half of the processors. More than four gain little for one picture
/// and each holds frames of its own.
int threadsPerDecoder() {
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U));
}

std::string textOf(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  return text.data();
}

bool isImageCodec(AVCodecID codec) {
  switch (codec) {
    case AV_CODEC_ID_BMP:
    case AV_CODEC_ID_DPX:
    case AV_CODEC_ID_GIF:
    case AV_CODEC_ID_JPEG2000:
    case AV_CODEC_ID_JPEGLS:
    case AV_CODEC_ID_MJPEG:
    case AV_CODEC_ID_MJPEGB:
    case AV_CODEC_ID_PNG:
    case AV_CODEC_ID_QTRLE:
    case AV_CODEC_ID_RAWVIDEO:
    case AV_CODEC_ID_SMC:
    case AV_CODEC_ID_TARGA:
    case AV_CODEC_ID_TIFF:
      return true;
    default:
      return false;
  }
}

/// This one gives no frame after a start that it cannot decode from, and starts without a key frame where the stream
/// says that it can; others give a spoiled frame without a word.
bool knowsItsOwnStart(AVCodecID codec) {
  return codec == AV_CODEC_ID_H264;
}

/// Whether a frame that is not referred to can be left out without a trace. In HEVC a picture of a lower temporal layer
/// that its own layer does not need may still be needed by a higher one, so there must be one layer only (hvcC, ISO/IEC
/// 14496-15, 8.3.3.1).
bool unreferencedAreNotNeeded(const AVCodecParameters& parameters) {
  switch (parameters.codec_id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_MPEG4:
      return true;
    case AV_CODEC_ID_HEVC:
      return parameters.extradata_size >= 23 && parameters.extradata[0] == 1 &&
             ((parameters.extradata[21] >> 3) & 7) == 1;
    default:
      return false;
  }
}

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
  if (info.isExternal(0)) return failure("the samples lie in another file, and such references are not followed");
  auto header = readCodecHeader(*file, info);
  if (!header) return tl::make_unexpected(header.error());

  const AVCodec* const codec = avcodec_find_decoder(header->parameters->codec_id);
  if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
    const ImageDescription description(info.sampleDescriptions.front());
    return failure("there is no decoder for the codec '" + fourCCText(description.codec()) + "'");
  }
  return std::unique_ptr<MovieDecoder>(new FfmpegDecoder(std::move(file), track, std::move(*header), codec));
}

FfmpegDecoder::FfmpegDecoder(std::shared_ptr<const MovieFile> file, std::size_t track, CodecHeader header,
                             const AVCodec* codec)
    : file_(std::move(file)),
      track_(track),
      table_(file_->sampleTable(track)),
      header_(std::move(header)),
      codec_(codec),
      packet_(av_packet_alloc()) {
  const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec->id);
  intraOnly_ = descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  const std::int64_t area =
      std::int64_t{std::max(header_.parameters->width, 0)} * std::max(header_.parameters->height, 0);
  constexpr std::int64_t smallestLimit = 2048LL * 2048LL;
  pixelLimit_ = std::clamp(area * 2, smallestLimit, largestPicture);
  constexpr std::int64_t bytesPerPixel = 12;  // beyond any codec's worst case
  sampleLimit_ = static_cast<std::size_t>(std::min<std::int64_t>(pixelLimit_ * bytesPerPixel, 1 << 30));
}

tl::unexpected<MovieError> FfmpegDecoder::failure(const std::string& reason) const {
  return tl::make_unexpected(MovieError{file_->path(), {}, 0, reason});
}

Result<Picture> FfmpegDecoder::picture(const PictureRequest& request) {
  if (request.sample.index >= table_.sampleCount()) return failure("there is no such sample");
  auto frame = frameOf(request.sample);
  if (!frame) return tl::make_unexpected(frame.error());
  auto picture = pictureOfFrame(**frame, {isImageCodec(codec_->id), header_.fullRange}, request);
  if (!picture) return failure("the frame cannot be used: " + picture.error());
  return std::move(*picture);
}

/// Ready to decode from a sample that needs no earlier one.
Result<void> FfmpegDecoder::prepare(int reorderDepth) {
  if (context_ != nullptr && reorderDepth <= openDepth_) {
    avcodec_flush_buffers(context_.get());
    return {};
  }
  context_.reset(avcodec_alloc_context3(codec_));
  if (context_ == nullptr || packet_ == nullptr) return failure("there is not enough memory for a decoder");
  int status = avcodec_parameters_to_context(context_.get(), header_.parameters.get());
  if (status >= 0) {
    context_->max_pixels = pixelLimit_;
    // A decoder that learns late how far pictures are reordered drops those that come too late.
    if (codec_->id == AV_CODEC_ID_H264) context_->has_b_frames = reorderDepth;
    context_->thread_count = threadsPerDecoder();
    context_->thread_type = intraOnly_ ? FF_THREAD_SLICE : FF_THREAD_FRAME | FF_THREAD_SLICE;
    status = avcodec_open2(context_.get(), codec_, nullptr);
  }
  if (status < 0) {
    context_.reset();
    return failure("the decoder cannot be opened: " + textOf(status));
  }
  openDepth_ = reorderDepth;
  return {};
}

/// The last sample at or before `from` that the tables call a fit start for the target. A picture shown before the sync
/// sample that it follows may need what lies before that one.
std::uint64_t FfmpegDecoder::startAtOrBefore(std::uint64_t from, const PresentedSample& target) const {
  if (intraOnly_) return from;
  std::uint64_t start = table_.syncSampleAtOrBefore(from);
  while (start > 0 && target.presentationTime < table_.presentationTimeOf(start)) {
    start = table_.syncSampleAtOrBefore(start - 1);
  }
  return start;
}

/// Where to start decoding from, the most promising first, sample 0 last.
std::vector<std::uint64_t> FfmpegDecoder::startsFor(const PresentedSample& target) const {
  std::vector<std::uint64_t> starts{startAtOrBefore(target.index, target)};
  for (std::uint64_t back = 1; starts.back() > 0; back *= 2) {
    starts.push_back(startAtOrBefore(starts.back() - std::min(back, starts.back()), target));
  }
  return starts;
}

/// How many of the samples decoded before the target are presented after it.
int FfmpegDecoder::reorderDepthAt(const PresentedSample& target) const {
  int depth = 0;
  constexpr std::uint64_t window = 64;
  for (std::uint64_t i = target.index - std::min(target.index, window); i < target.index; ++i) {
    if (table_.presentationTimeOf(i) > target.presentationTime) ++depth;
  }
  return std::min(depth, longestReorder);
}

Result<LibavPointer<AVFrame>> FfmpegDecoder::frameOf(const PresentedSample& target) {
  for (const std::uint64_t start : startsFor(target)) {
    auto attempt = decodeFrom(start, target);
    if (!attempt) return tl::make_unexpected(attempt.error());
    const bool last = start == 0 || intraOnly_;
    if (attempt->exact != nullptr) {
      const AVFrame& frame = *attempt->exact;
      const bool sound = (frame.flags & AV_FRAME_FLAG_CORRUPT) == 0 && frame.decode_error_flags == 0;
      if (last || (sound && (attempt->startIsKey || knowsItsOwnStart(codec_->id)))) return std::move(attempt->exact);
    } else if (attempt->error != 0 && last) {
      return failure("the frame cannot be decoded: " + textOf(attempt->error));
    } else if (attempt->nearest != nullptr && last) {
      return std::move(attempt->nearest);
    }
  }
  return failure("the frame cannot be decoded: the decoder gave no picture");
}

/// Reads a sample into packet_; false for an empty one.
Result<bool> FfmpegDecoder::readPacket(std::uint64_t sample) {
  av_packet_unref(packet_.get());
  const auto bytes = file_->readSample(track_, sample, sampleLimit_ + 1);
  const std::string name = "the sample " + std::to_string(sample);
  if (!bytes) return failure(name + " cannot be read: " + bytes.error().reason);
  if (bytes->empty()) return false;
  if (bytes->size() > sampleLimit_) return failure(name + " is too large for its picture");
  if (av_new_packet(packet_.get(), static_cast<int>(bytes->size())) < 0)
    return failure("there is not enough memory for " + name);
  std::memcpy(packet_->data, bytes->data(), bytes->size());
  packet_->pts = packet_->dts = static_cast<std::int64_t>(sample);
  packet_->flags = AV_PKT_FLAG_KEY;
  if (!header_.palette.empty()) {
    std::uint8_t* const side = av_packet_new_side_data(packet_.get(), AV_PKT_DATA_PALETTE, header_.palette.size());
    if (side != nullptr) std::copy(header_.palette.begin(), header_.palette.end(), side);
  }
  return true;
}

/// Error: the target's sample cannot be read, or the decoder cannot be opened. A sample before it that cannot be read
/// is left out: what that spoils shows in the frame.
Result<FfmpegDecoder::Attempt> FfmpegDecoder::decodeFrom(std::uint64_t first, const PresentedSample& target) {
  if (auto ready = prepare(codec_->id == AV_CODEC_ID_H264 ? reorderDepthAt(target) : 0); !ready) {
    return tl::make_unexpected(ready.error());
  }
  Attempt attempt;
  attempt.first = first;
  attempt.target = target;
  // A full decode shows spoiled frames too; only from the very beginning is there nothing better.
  constexpr int outputCorrupt = AV_CODEC_FLAG_OUTPUT_CORRUPT;
  context_->flags = first == 0 ? context_->flags | outputCorrupt : context_->flags & ~outputCorrupt;
  const bool discard = unreferencedAreNotNeeded(*header_.parameters);
  std::uint64_t bytesLeft = file_->size() + sampleLimit_;  // samples of a sound file do not overlap
  for (std::uint64_t i = first; i <= target.index; ++i) {
    const bool isTarget = i == target.index;
    const auto present = readPacket(i);
    if (!present && isTarget) return tl::make_unexpected(present.error());
    if (!present || !*present) continue;
    const auto size = static_cast<std::uint64_t>(packet_->size);
    if (size > bytesLeft) return failure("the samples overlap");
    bytesLeft -= size;
    context_->skip_frame = discard && i != first && !isTarget ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    const int status = avcodec_send_packet(context_.get(), packet_.get());
    if (isTarget && status < 0) attempt.error = status;
    receiveFrames(attempt);
  }
  avcodec_send_packet(context_.get(), nullptr);
  receiveFrames(attempt);
  return attempt;
}

void FfmpegDecoder::receiveFrames(Attempt& attempt) {
  for (;;) {
    LibavPointer<AVFrame> frame(av_frame_alloc());
    if (frame == nullptr) return;
    const int status = avcodec_receive_frame(context_.get(), frame.get());
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return;
    if (status < 0) {
      if (packet_->pts == static_cast<std::int64_t>(attempt.target.index)) attempt.error = status;
      return;
    }
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

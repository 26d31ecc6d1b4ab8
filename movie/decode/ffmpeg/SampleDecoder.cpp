#include "movie/decode/ffmpeg/SampleDecoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>
#include <utility>

namespace movie {
namespace {

constexpr std::int64_t largestPicture = 16384LL * 16384LL;  // pixels

/// Two movies are decoded side by side, so each gets half of the processors. More than four gain little for one picture
/// and each holds frames of its own.
int threadsPerDecoder() {
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U));
}

bool isImageCodec(AVCodecID codec) {
  constexpr std::array codecs{AV_CODEC_ID_BMP,    AV_CODEC_ID_DPX,      AV_CODEC_ID_GIF,    AV_CODEC_ID_JPEG2000,
                              AV_CODEC_ID_JPEGLS, AV_CODEC_ID_MJPEG,    AV_CODEC_ID_MJPEGB, AV_CODEC_ID_PNG,
                              AV_CODEC_ID_QTRLE,  AV_CODEC_ID_RAWVIDEO, AV_CODEC_ID_SMC,    AV_CODEC_ID_TARGA,
                              AV_CODEC_ID_TIFF};
  return std::find(codecs.begin(), codecs.end(), codec) != codecs.end();
}

}  // namespace

bool isEncrypted(FourCC codec) {
  constexpr std::array types{fourCC("encv"), fourCC("drmi"), fourCC("enca"), fourCC("drms")};
  return std::find(types.begin(), types.end(), codec) != types.end();
}

std::string libavText(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  return text.data();
}

tl::expected<std::unique_ptr<SampleDecoder>, Clause> SampleDecoder::make(FourCC majorBrand,
                                                                         const ImageDescription& description) {
  if (isEncrypted(description.codec())) return tl::make_unexpected(Reason::Encrypted);
  TRY(auto header, readCodecHeader(majorBrand, description));
  const AVCodec* const codec = avcodec_find_decoder(header.parameters->codec_id);
  if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
    return tl::make_unexpected(Clause(Reason::UnknownCodec, {verbatim(fourCCText(description.codec()))}));
  }
  return std::unique_ptr<SampleDecoder>(new SampleDecoder(std::move(header), codec));
}

SampleDecoder::SampleDecoder(CodecHeader header, const AVCodec* codec)
    : header_(std::move(header)), codec_(codec), packet_(av_packet_alloc()) {
  const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec->id);
  intraOnly_ = descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  const std::int64_t area =
      std::int64_t{std::max(header_.parameters->width, 0)} * std::max(header_.parameters->height, 0);
  constexpr std::int64_t smallestLimit = 2048LL * 2048LL;
  pixelLimit_ = std::clamp(area * 2, smallestLimit, largestPicture);
  constexpr std::int64_t bytesPerPixel = 12;  // beyond any codec's worst case
  sampleLimit_ = static_cast<std::size_t>(std::min<std::int64_t>(pixelLimit_ * bytesPerPixel, 1 << 30));
}

bool SampleDecoder::knowsItsOwnStart() const {
  return codec_->id == AV_CODEC_ID_H264;
}

/// One that learns late how far pictures are reordered drops those that come too late.
bool SampleDecoder::needsReorderDepth() const {
  return codec_->id == AV_CODEC_ID_H264;
}

/// In HEVC a picture of a lower temporal layer that its own layer does not need may still be needed by a higher one, so
/// there must be one layer only (hvcC, ISO/IEC 14496-15, 8.3.3.1).
bool SampleDecoder::unreferencedAreNotNeeded() const {
  const AVCodecParameters& parameters = *header_.parameters;
  switch (codec_->id) {
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

int SampleDecoder::delay() const {
  const int threads = context_->active_thread_type == FF_THREAD_FRAME ? context_->thread_count - 1 : 0;
  return std::max(context_->has_b_frames, 0) + threads + (codec_->capabilities & AV_CODEC_CAP_DELAY ? 1 : 0);
}

FrameOrigin SampleDecoder::frameOrigin() const {
  return {isImageCodec(codec_->id), header_.fullRange};
}

tl::expected<void, Clause> SampleDecoder::restart(int reorderDepth) {
  if (context_ != nullptr && reorderDepth <= openDepth_) {
    avcodec_flush_buffers(context_.get());
    return {};
  }
  context_.reset(avcodec_alloc_context3(codec_));
  if (context_ == nullptr || packet_ == nullptr) return tl::make_unexpected(Reason::NoMemoryForDecoder);
  int status = avcodec_parameters_to_context(context_.get(), header_.parameters.get());
  if (status >= 0) {
    context_->max_pixels = pixelLimit_;
    if (needsReorderDepth()) context_->has_b_frames = reorderDepth;
    context_->thread_count = threadsPerDecoder();
    context_->thread_type = intraOnly_ ? FF_THREAD_SLICE : FF_THREAD_FRAME | FF_THREAD_SLICE;
    memory_.serve(*context_);
    status = avcodec_open2(context_.get(), codec_, nullptr);
  }
  if (status < 0) {
    context_.reset();
    return tl::make_unexpected(Clause(Reason::DecoderUnopenable, {verbatim(libavText(status))}));
  }
  openDepth_ = reorderDepth;
  return {};
}

void SampleDecoder::setSpoiledFrames(bool wanted) {
  constexpr int outputCorrupt = AV_CODEC_FLAG_OUTPUT_CORRUPT;
  context_->flags = wanted ? context_->flags | outputCorrupt : context_->flags & ~outputCorrupt;
}

AVPacket* SampleDecoder::packet(std::size_t size, std::int64_t stamp) {
  av_packet_unref(packet_.get());
  if (av_new_packet(packet_.get(), static_cast<int>(size)) < 0) return nullptr;
  packet_->pts = packet_->dts = stamp;
  packet_->flags = AV_PKT_FLAG_KEY;
  if (!header_.palette.empty()) {
    std::uint8_t* const side = av_packet_new_side_data(packet_.get(), AV_PKT_DATA_PALETTE, header_.palette.size());
    if (side != nullptr) std::copy(header_.palette.begin(), header_.palette.end(), side);
  }
  return packet_.get();
}

int SampleDecoder::send(Wanted wanted) {
  context_->skip_frame = wanted == Wanted::IfReferred ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  return avcodec_send_packet(context_.get(), packet_.get());
}

int SampleDecoder::drain() {
  return avcodec_send_packet(context_.get(), nullptr);
}

LibavPointer<AVFrame> SampleDecoder::receive(int& status) {
  LibavPointer<AVFrame> frame(av_frame_alloc());
  status = frame == nullptr ? AVERROR(ENOMEM) : avcodec_receive_frame(context_.get(), frame.get());
  return status == 0 ? std::move(frame) : nullptr;
}

}  // namespace movie

#include "movie/decode/ffmpeg/SoundDecoder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "movie/atoms/AtomTypes.h"
#include "movie/decode/ffmpeg/SampleDecoder.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace movie {
namespace {

/// Integers of 8 to 32 bits by their byte order.
AVCodecID integerCodec(int bits, bool bigEndian) {
  if (bits <= 8) return AV_CODEC_ID_PCM_S8;
  if (bits <= 16) return bigEndian ? AV_CODEC_ID_PCM_S16BE : AV_CODEC_ID_PCM_S16LE;
  if (bits <= 24) return bigEndian ? AV_CODEC_ID_PCM_S24BE : AV_CODEC_ID_PCM_S24LE;
  if (bits <= 32) return bigEndian ? AV_CODEC_ID_PCM_S32BE : AV_CODEC_ID_PCM_S32LE;
  return AV_CODEC_ID_NONE;
}

AVCodecID floatCodec(int bits, bool bigEndian) {
  if (bits == 32) return bigEndian ? AV_CODEC_ID_PCM_F32BE : AV_CODEC_ID_PCM_F32LE;
  if (bits == 64) return bigEndian ? AV_CODEC_ID_PCM_F64BE : AV_CODEC_ID_PCM_F64LE;
  return AV_CODEC_ID_NONE;
}

/// Of version 2, whose flags say it all; in the others the bits are like those of 'twos'. Sound whose channels lie
/// apart is not in use.
AVCodecID lpcmCodec(const SoundDescription& description) {
  const std::uint32_t flags = description.flags;
  const bool bigEndian = (flags & SoundDescription::isBigEndian) != 0;
  if (flags == 0 && description.bits > 8) return integerCodec(description.bits, description.bigEndian);
  if ((flags & SoundDescription::isApart) != 0) return AV_CODEC_ID_NONE;
  if ((flags & SoundDescription::isFloat) != 0) return floatCodec(description.bits, bigEndian);
  if (description.bits <= 8 && (flags & SoundDescription::isSigned) == 0) return AV_CODEC_ID_PCM_U8;
  return integerCodec(description.bits, bigEndian);
}

/// By the object types of ISO/IEC 14496-1 and their registry.
AVCodecID mp4aCodec(std::uint8_t objectType) {
  switch (objectType) {
    case 0x69:
    case 0x6B:
      return AV_CODEC_ID_MP3;
    case 0xA5:
      return AV_CODEC_ID_AC3;
    case 0xA6:
      return AV_CODEC_ID_EAC3;
    default:
      return AV_CODEC_ID_AAC;
  }
}

/// The types that need a look at the description.
AVCodecID describedCodec(const SoundDescription& description) {
  switch (description.codec) {
    case code::raw:
    case code::none:
      return description.bits <= 8 ? AV_CODEC_ID_PCM_U8 : integerCodec(description.bits, true);
    case code::twos:
      return integerCodec(description.bits, true);
    case code::sowt:
      return integerCodec(description.bits, false);
    case code::in24:
      return integerCodec(24, description.bigEndian);
    case code::in32:
      return integerCodec(32, description.bigEndian);
    case code::fl32:
      return floatCodec(32, description.bigEndian);
    case code::fl64:
      return floatCodec(64, description.bigEndian);
    case fourCC("lpcm"):
      return lpcmCodec(description);
    case fourCC("mp4a"):
      return mp4aCodec(description.objectType);
    default:
      return AV_CODEC_ID_NONE;
  }
}

AVCodecID codecOf(const SoundDescription& description) {
  constexpr std::array<std::pair<FourCC, AVCodecID>, 8> plain{{
      {code::ulaw, AV_CODEC_ID_PCM_MULAW},
      {code::alaw, AV_CODEC_ID_PCM_ALAW},
      {code::ima4, AV_CODEC_ID_ADPCM_IMA_QT},
      {code::alac, AV_CODEC_ID_ALAC},
      {fourCC("ac-3"), AV_CODEC_ID_AC3},
      {fourCC("ec-3"), AV_CODEC_ID_EAC3},
      {fourCC(".mp3"), AV_CODEC_ID_MP3},
      {0x6D730055, AV_CODEC_ID_MP3},  // 'ms' and the number of MP3 in the registry of wave formats
  }};
  const auto found =
      std::find_if(plain.begin(), plain.end(), [&](const auto& entry) { return entry.first == description.codec; });
  return found != plain.end() ? found->second : describedCodec(description);
}

/// AAC and MP3 overlap their packets; MP3 keeps up to 511 bytes of a packet in those before it, which at the smallest
/// bit rates are about ten. 'ima4' steps from where it stood.
std::uint64_t prerollOf(AVCodecID codec) {
  switch (codec) {
    case AV_CODEC_ID_AAC:
    case AV_CODEC_ID_AC3:
    case AV_CODEC_ID_EAC3:
    case AV_CODEC_ID_ADPCM_IMA_QT:
      return 2;
    case AV_CODEC_ID_MP3:
      return 10;
    default:
      return 0;
  }
}

constexpr std::uint32_t imaFrames = 64, imaBytes = 34;  // of one channel's packet. Source: QTFF "IMA 4:1"

}  // namespace

tl::expected<std::unique_ptr<SoundDecoder>, Clause> SoundDecoder::make(const SoundDescription& description) {
  if (isEncrypted(description.codec)) return tl::make_unexpected(Reason::Encrypted);
  const AVCodecID id = codecOf(description);
  const AVCodec* const codec = avcodec_find_decoder(id);
  if (codec == nullptr) {
    return tl::make_unexpected(Clause(Reason::UnknownCodec, {verbatim(fourCCText(description.codec))}));
  }
  std::unique_ptr<SoundDecoder> decoder(new SoundDecoder);
  decoder->context_.reset(avcodec_alloc_context3(codec));
  decoder->packet_.reset(av_packet_alloc());
  decoder->frame_.reset(av_frame_alloc());
  AVCodecContext* const context = decoder->context_.get();
  if (context == nullptr || decoder->packet_ == nullptr || decoder->frame_ == nullptr ||
      !copySetup(*context, description.setup)) {
    return tl::make_unexpected(Reason::NoMemoryForDecoder);
  }
  av_channel_layout_default(&context->ch_layout, description.channels);
  context->sample_rate = description.rate;
  context->bits_per_coded_sample = description.bits;
  context->thread_count = 1;
  if (const int status = avcodec_open2(context, codec, nullptr); status < 0) {
    return tl::make_unexpected(Clause(Reason::DecoderUnopenable, {verbatim(libavText(status))}));
  }
  decoder->rate_ = description.rate;
  decoder->preroll_ = prerollOf(id);
  const auto channels = static_cast<std::uint32_t>(description.channels);
  if (id == AV_CODEC_ID_ADPCM_IMA_QT) {
    decoder->framesPerPacket_ = imaFrames;
    decoder->bytesPerPacket_ = imaBytes * channels;
  } else if (const int bits = av_get_exact_bits_per_sample(id); bits >= 8) {
    decoder->framesPerPacket_ = 1;
    decoder->bytesPerPacket_ = static_cast<std::uint32_t>(bits) / 8 * channels;
  }
  return decoder;
}

tl::expected<void, Clause> SoundDecoder::decode(ByteView packet, std::vector<float>& stereo) {
  const auto failure = [](int status) {
    return tl::make_unexpected(Clause(Reason::SoundUndecodable, {verbatim(libavText(status))}));
  };
  av_packet_unref(packet_.get());
  if (av_new_packet(packet_.get(), static_cast<int>(packet.size())) < 0) return failure(AVERROR(ENOMEM));
  std::copy(packet.begin(), packet.end(), packet_->data);
  packet_->flags = AV_PKT_FLAG_KEY;
  int status = avcodec_send_packet(context_.get(), packet_.get());
  if (status < 0) return failure(status);
  while ((status = avcodec_receive_frame(context_.get(), frame_.get())) >= 0) {
    const int channels = frame_->ch_layout.nb_channels;
    if (channels < 1 || channels > SoundDescription::mostChannels) return failure(AVERROR_INVALIDDATA);
    if (shares_.size() != static_cast<std::size_t>(channels)) shares_ = channelShares(channels);
    if (!appendStereo(*frame_, shares_, stereo)) return failure(AVERROR_INVALIDDATA);
    if (frame_->sample_rate > 0) rate_ = frame_->sample_rate;
  }
  if (status != AVERROR(EAGAIN) && status != AVERROR_EOF) return failure(status);
  return {};
}

}  // namespace movie

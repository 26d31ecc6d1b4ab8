#include "movie/decode/ffmpeg/EverydayDescription.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "movie/atoms/AtomTypes.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

namespace movie {
namespace {

struct EverydayCodec {
  FourCC type;
  AVCodecID codec;
  FourCC setup = 0;  ///< the extension that sets the decoder up; 0 for a codec that has none
};

constexpr std::array<EverydayCodec, 25> everydayCodecs{{
    {fourCC("apco"), AV_CODEC_ID_PRORES},
    {fourCC("apcs"), AV_CODEC_ID_PRORES},
    {fourCC("apcn"), AV_CODEC_ID_PRORES},
    {fourCC("apch"), AV_CODEC_ID_PRORES},
    {fourCC("ap4h"), AV_CODEC_ID_PRORES},
    {fourCC("ap4x"), AV_CODEC_ID_PRORES},
    {fourCC("avc1"), AV_CODEC_ID_H264, code::avcC},
    {fourCC("avc3"), AV_CODEC_ID_H264, code::avcC},
    {fourCC("hvc1"), AV_CODEC_ID_HEVC, code::hvcC},
    {fourCC("hev1"), AV_CODEC_ID_HEVC, code::hvcC},
    {fourCC("mp4v"), AV_CODEC_ID_MPEG4, code::esds},
    {fourCC("jpeg"), AV_CODEC_ID_MJPEG},
    {fourCC("png "), AV_CODEC_ID_PNG},
    {fourCC("v210"), AV_CODEC_ID_V210},
    {fourCC("CFHD"), AV_CODEC_ID_CFHD},
    {fourCC("AVdh"), AV_CODEC_ID_DNXHD},
    {fourCC("dvcp"), AV_CODEC_ID_DVVIDEO},
    {fourCC("dvc "), AV_CODEC_ID_DVVIDEO},
    {fourCC("dv5p"), AV_CODEC_ID_DVVIDEO},
    {fourCC("dv5n"), AV_CODEC_ID_DVVIDEO},
    {fourCC("hdv2"), AV_CODEC_ID_MPEG2VIDEO},
    {fourCC("hdv3"), AV_CODEC_ID_MPEG2VIDEO},
    {fourCC("xdvb"), AV_CODEC_ID_MPEG2VIDEO},
    {fourCC("xd5b"), AV_CODEC_ID_MPEG2VIDEO},
    {fourCC("mx5p"), AV_CODEC_ID_MPEG2VIDEO},
}};

const EverydayCodec* everydayCodec(FourCC type) {
  const auto found = std::find_if(everydayCodecs.begin(), everydayCodecs.end(),
                                  [type](const EverydayCodec& codec) { return codec.type == type; });
  return found == everydayCodecs.end() ? nullptr : &*found;
}

/// No decoder looks at these.
bool saysNothingToDecoders(FourCC extension) {
  return extension == code::colr || extension == code::gama || extension == code::pasp || extension == code::clap ||
         extension == code::btrt;
}

bool hasPlainHeader(const ImageDescription& description) {
  const ByteView bytes = description.bytes();
  if (bytes.size() < ImageDescription::headerSize || read32(bytes, 0) != bytes.size()) return false;
  // At these depths a colour table may follow, some codecs bring one of their own, and grey is told by the depth.
  switch (description.depth() & 31U) {
    case 1:
    case 2:
    case 4:
    case 8:
      return false;
    default:
      break;
  }
  // The demuxer goes by this name of a compressor, whatever the codec's type.
  constexpr std::string_view planar = "Planar";
  constexpr std::size_t nameAt = 51;
  if (std::memcmp(bytes.data() + nameAt, planar.data(), planar.size()) == 0) return false;
  const auto& extensions = description.extensions();
  const std::size_t end = extensions.empty() ? ImageDescription::headerSize : extensions.back().end();
  constexpr std::size_t smallestAtom = 8;
  return bytes.size() - end < smallestAtom;
}

/// Reads the descriptors of an esds. Source: ISO/IEC 14496-1, 7.2.6; the sizes are 7 bits a byte, 8.3.3.
class Descriptors {
 public:
  explicit Descriptors(ByteView bytes) : left_(bytes) {}

  /// Enters a descriptor of that tag, if one stands here: only its body is left.
  bool enter(std::uint8_t tag) {
    if (left_.empty() || left_[0] != tag) return false;
    std::size_t size = 0;
    std::size_t at = 1;
    for (; at < left_.size() && at <= 4; ++at) {
      size = (size << 7) | (left_[at] & 0x7FU);
      if ((left_[at] & 0x80U) == 0) break;
    }
    if (at > 4 || at >= left_.size() || size > left_.size() - at - 1) return false;
    left_ = left_.subspan(at + 1, size);
    return true;
  }
  bool skip(std::size_t count) {
    if (count > left_.size()) return false;
    left_ = left_.subspan(count);
    return true;
  }
  ByteView left() const { return left_; }

 private:
  ByteView left_;
};

/// The decoder's own part of an esds for MPEG-4 Visual; none for any other stream or unusual form.
std::optional<ByteView> mpeg4Setup(ByteView esds) {
  constexpr std::uint8_t elementaryStream = 3, decoderConfig = 4, decoderSpecific = 5, mpeg4Visual = 0x20;
  constexpr std::size_t versionAndFlags = 4, identifierAndFlags = 3, configFields = 13;
  Descriptors descriptors(esds);
  if (!descriptors.skip(versionAndFlags) || !descriptors.enter(elementaryStream)) return std::nullopt;
  const ByteView stream = descriptors.left();
  if (stream.size() < identifierAndFlags || stream[2] != 0) return std::nullopt;
  descriptors.skip(identifierAndFlags);
  if (!descriptors.enter(decoderConfig)) return std::nullopt;
  const ByteView config = descriptors.left();
  if (config.empty() || config[0] != mpeg4Visual || !descriptors.skip(configFields)) return std::nullopt;
  if (!descriptors.enter(decoderSpecific)) return std::nullopt;
  return descriptors.left();
}

/// What a fiel extension says of the order of fields; none for what it may not say. Source: QTFF "Field handling".
std::optional<AVFieldOrder> fieldOrderOf(ByteView fiel) {
  if (fiel.size() != 2) return std::nullopt;
  if (fiel[0] == 1) return AV_FIELD_PROGRESSIVE;
  if (fiel[0] != 2) return std::nullopt;
  switch (fiel[1]) {
    case 1:
      return AV_FIELD_TT;
    case 6:
      return AV_FIELD_BB;
    case 9:
      return AV_FIELD_TB;
    case 14:
      return AV_FIELD_BT;
    default:
      return std::nullopt;
  }
}

/// What the extensions tell a decoder.
struct Setup {
  std::optional<ByteView> codec;
  std::optional<AVFieldOrder> fieldOrder;
};

/// None where one of them is out of the ordinary.
std::optional<Setup> setupOf(const ImageDescription& description, FourCC setupType) {
  Setup setup;
  for (const Atom& extension : description.extensions()) {
    const ByteView body = description.extensionBody(extension);
    if (extension.headerSize != 8) return std::nullopt;
    if (saysNothingToDecoders(extension.type)) continue;
    if (extension.type == code::fiel && !setup.fieldOrder) {
      setup.fieldOrder = fieldOrderOf(body);
      if (!setup.fieldOrder) return std::nullopt;
    } else if (setupType != 0 && extension.type == setupType && !setup.codec) {
      setup.codec = setupType == code::esds ? mpeg4Setup(body) : body;
      constexpr std::size_t smallestSetup = 4;
      if (!setup.codec || setup.codec->size() < smallestSetup) return std::nullopt;
    } else {
      return std::nullopt;
    }
  }
  if (setupType != 0 && !setup.codec) return std::nullopt;
  return setup;
}

bool copySetup(AVCodecParameters& parameters, ByteView setup) {
  parameters.extradata = static_cast<std::uint8_t*>(av_mallocz(setup.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (parameters.extradata == nullptr) return false;
  std::copy(setup.begin(), setup.end(), parameters.extradata);
  parameters.extradata_size = static_cast<int>(setup.size());
  return true;
}

std::uint32_t byteSwapped(std::uint32_t value) {
  return (value >> 24) | ((value >> 8) & 0xFF00U) | ((value << 8) & 0xFF0000U) | (value << 24);
}

}  // namespace

LibavPointer<AVCodecParameters> everydayParameters(const ImageDescription& description) {
  const EverydayCodec* const codec = everydayCodec(description.codec());
  if (codec == nullptr || !hasPlainHeader(description)) return nullptr;
  const auto setup = setupOf(description, codec->setup);
  if (!setup) return nullptr;

  LibavPointer<AVCodecParameters> parameters(avcodec_parameters_alloc());
  if (parameters == nullptr) return nullptr;
  parameters->codec_type = AVMEDIA_TYPE_VIDEO;
  parameters->codec_id = codec->codec;
  parameters->codec_tag = byteSwapped(codec->type);
  parameters->bits_per_coded_sample = description.depth();
  if (codec->codec != AV_CODEC_ID_MPEG4) {  // whose own header alone is to be believed
    parameters->width = description.width();
    parameters->height = description.height();
  }
  if (setup->fieldOrder) parameters->field_order = *setup->fieldOrder;
  if (setup->codec && !copySetup(*parameters, *setup->codec)) return nullptr;
  return parameters;
}

}  // namespace movie

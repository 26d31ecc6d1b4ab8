#include "movie/decode/ffmpeg/EverydayDescription.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/ElementaryStream.h"

extern "C" {
#include <libavutil/bswap.h>
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

/// The decoder's own part of an esds for MPEG-4 Visual; none for any other stream or unusual form.
std::optional<ByteView> mpeg4Setup(ByteView esds) {
  constexpr std::uint8_t mpeg4Visual = 0x20;
  const ElementaryStream stream = readElementaryStream(esds);
  return stream.plain && stream.objectType == mpeg4Visual ? std::optional(stream.setup) : std::nullopt;
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

}  // namespace

LibavPointer<AVCodecParameters> everydayParameters(const ImageDescription& description) {
  const auto* const codec = std::find_if(everydayCodecs.begin(), everydayCodecs.end(),
                                         [&](const EverydayCodec& each) { return each.type == description.codec(); });
  if (codec == everydayCodecs.end() || !hasPlainHeader(description)) return nullptr;
  const auto setup = setupOf(description, codec->setup);
  if (!setup) return nullptr;

  LibavPointer<AVCodecParameters> parameters(avcodec_parameters_alloc());
  if (parameters == nullptr) return nullptr;
  parameters->codec_type = AVMEDIA_TYPE_VIDEO;
  parameters->codec_id = codec->codec;
  parameters->codec_tag = av_bswap32(codec->type);
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

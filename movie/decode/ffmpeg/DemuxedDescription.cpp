#include "movie/decode/ffmpeg/DemuxedDescription.h"

#include <initializer_list>
#include <memory>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/TrackInfo.h"
#include "movie/decode/DecoderModule.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace movie {
namespace {

Bytes words(std::initializer_list<std::uint32_t> values) {
  Bytes bytes;
  for (const std::uint32_t value : values) append32(bytes, value);
  return bytes;
}

Bytes atom(FourCC type, std::initializer_list<Bytes> parts) {
  Bytes body;
  for (const Bytes& part : parts) append(body, part);
  Bytes bytes = atomHeader(type, body.size());
  append(bytes, body);
  return bytes;
}

constexpr std::uint32_t timeScale = 600;

Bytes track(const Bytes& description, std::uint32_t sampleOffset) {
  const Bytes table =
      atom(code::stbl, {atom(code::stsd, {words({0, 1}), description}), atom(code::stts, {words({0, 1, 1, 1})}),
                        atom(code::stsc, {words({0, 1, 1, 1, 1})}), atom(code::stsz, {words({0, 1, 1})}),
                        atom(code::stco, {words({0, 1, sampleOffset})})});
  const Bytes handler = atom(code::hdlr, {words({0, code::mhlr, videoMedia, 0, 0, 0}), Bytes(1)});
  const Bytes media =
      atom(code::mdia, {atom(code::mdhd, {words({0, 0, 0, timeScale, 1, 0})}), handler, atom(code::minf, {table})});
  return atom(code::trak, {media});
}

/// A whole movie file, a few hundred bytes long, with one video track of one sample description and one sample of a
/// single zero byte. What a demuxer makes of a description can be asked of this file instead of the real one: the cost
/// does not grow with the movie, and whatever else is wrong with the movie stays out of the demuxer's reach.
/// `majorBrand` 0 leaves ftyp out. `description` is a whole stsd entry; its data reference is ignored.
Bytes oneSampleMovie(FourCC majorBrand, Bytes description) {
  if (description.size() < 8) description.resize(8);
  write32(description, 0, static_cast<std::uint32_t>(description.size()));
  Bytes file;
  if (majorBrand != 0) file = atom(code::ftyp, {words({majorBrand, 0, majorBrand})});
  const auto sampleOffset = static_cast<std::uint32_t>(file.size() + 8);
  append(file, atom(code::mdat, {Bytes(1)}));
  append(file, atom(code::moov, {track(description, sampleOffset)}));
  return file;
}

struct InputCloser {
  void operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
  }
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using MemoryInput = std::unique_ptr<AVIOContext, InputCloser>;
using OpenInput = std::unique_ptr<AVFormatContext, InputCloser>;

/// Serves a copy of the bytes to a demuxer. Null without memory.
MemoryInput inputOf(ByteView bytes) {
  auto* const buffer = static_cast<unsigned char*>(av_memdup(bytes.data(), bytes.size()));
  if (buffer == nullptr) return nullptr;
  // Where nothing fills the buffer again, it is all that there is to read.
  const auto size = static_cast<int>(bytes.size());
  MemoryInput input(avio_alloc_context(buffer, size, 0, nullptr, nullptr, nullptr, nullptr));
  if (input == nullptr) av_free(buffer);
  return input;
}

OpenInput openMovie(AVIOContext* input) {
  AVFormatContext* context = avformat_alloc_context();
  if (context == nullptr || input == nullptr) {
    avformat_free_context(context);
    return nullptr;
  }
  context->pb = input;
  // On failure libav frees the context itself.
  if (avformat_open_input(&context, "", av_find_input_format("mov"), nullptr) < 0) return nullptr;
  return OpenInput(context);
}

/// The demuxer hands a colour table out with the first packet only.
std::vector<std::uint8_t> readPalette(AVFormatContext& context) {
  const LibavPointer<AVPacket> packet(av_packet_alloc());
  if (packet == nullptr || av_read_frame(&context, packet.get()) < 0) return {};
  std::size_t size = 0;
  const std::uint8_t* const palette = av_packet_get_side_data(packet.get(), AV_PKT_DATA_PALETTE, &size);
  return palette == nullptr ? std::vector<std::uint8_t>() : std::vector<std::uint8_t>(palette, palette + size);
}

}  // namespace

tl::expected<CodecHeader, Clause> demuxDescription(FourCC majorBrand, const ImageDescription& description) {
  const MemoryInput input = inputOf(oneSampleMovie(majorBrand, description.bytes()));
  const OpenInput context = openMovie(input.get());
  if (context == nullptr || context->nb_streams == 0) return tl::make_unexpected(Reason::ImageDescriptionUnreadable);
  CodecHeader demuxed;
  demuxed.parameters.reset(avcodec_parameters_alloc());
  if (demuxed.parameters == nullptr ||
      avcodec_parameters_copy(demuxed.parameters.get(), context->streams[0]->codecpar) < 0) {
    return tl::make_unexpected(Reason::NoMemoryForDecoder);
  }
  constexpr unsigned deepestColorTable = 8;
  if ((description.depth() & 31U) <= deepestColorTable) demuxed.palette = readPalette(*context);
  return demuxed;
}

}  // namespace movie

extern "C" __attribute__((visibility("default"))) decltype(&movie::demuxDescription) lumacheckDemuxedDescriptionReader(
    int interfaceVersion) {
  return interfaceVersion == movie::decoderInterfaceVersion ? &movie::demuxDescription : nullptr;
}

#include "movie/decode/ffmpeg/DemuxedDescription.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "movie/decode/ffmpeg/DemuxerModule.h"
#include "movie/decode/ffmpeg/OneSampleMovie.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace movie {
namespace {

/// Serves bytes in memory to a demuxer.
class MemoryInput {
 public:
  explicit MemoryInput(ByteView bytes) : bytes_(bytes) {
    constexpr int bufferSize = 4096;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (buffer != nullptr) context_ = avio_alloc_context(buffer, bufferSize, 0, this, &read, nullptr, &seek);
    if (context_ == nullptr) av_free(buffer);
  }
  ~MemoryInput() {
    if (context_ != nullptr) av_freep(&context_->buffer);
    avio_context_free(&context_);
  }
  MemoryInput(const MemoryInput&) = delete;
  MemoryInput& operator=(const MemoryInput&) = delete;

  AVIOContext* context() const { return context_; }

 private:
  static int read(void* self, std::uint8_t* out, int size) {
    auto& input = *static_cast<MemoryInput*>(self);
    const std::size_t count = std::min(static_cast<std::size_t>(size), input.bytes_.size() - input.at_);
    if (count == 0) return AVERROR_EOF;
    std::memcpy(out, input.bytes_.data() + input.at_, count);
    input.at_ += count;
    return static_cast<int>(count);
  }

  static std::int64_t seek(void* self, std::int64_t offset, int whence) {
    auto& input = *static_cast<MemoryInput*>(self);
    const auto size = static_cast<std::int64_t>(input.bytes_.size());
    if ((whence & AVSEEK_SIZE) != 0) return size;
    whence &= ~AVSEEK_FORCE;
    if (whence == SEEK_CUR) offset += static_cast<std::int64_t>(input.at_);
    if (whence == SEEK_END) offset += size;
    if (offset < 0 || offset > size) return AVERROR(EINVAL);
    input.at_ = static_cast<std::size_t>(offset);
    return offset;
  }

  ByteView bytes_;
  std::size_t at_ = 0;
  AVIOContext* context_ = nullptr;
};

struct InputCloser {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using OpenInput = std::unique_ptr<AVFormatContext, InputCloser>;

OpenInput openMovie(const MemoryInput& input) {
  AVFormatContext* context = avformat_alloc_context();
  if (context == nullptr || input.context() == nullptr) {
    avformat_free_context(context);
    return nullptr;
  }
  context->pb = input.context();
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

DemuxedDescriptionResult demuxDescription(FourCC majorBrand, const ImageDescription& description) {
  const Bytes movie = oneSampleMovie(majorBrand, description.bytes());
  const MemoryInput input(movie);
  const OpenInput context = openMovie(input);
  if (context == nullptr || context->nb_streams == 0) return tl::make_unexpected(Reason::ImageDescriptionUnreadable);
  DemuxedDescription demuxed;
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

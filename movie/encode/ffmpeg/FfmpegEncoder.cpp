#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <utility>

#include "movie/decode/DecoderModule.h"
#include "movie/encode/MovieEncoder.h"
#include "system/Error.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace movie {
namespace {

struct EncoderDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVIOContext* file) const {
    av_freep(&file->buffer);
    avio_context_free(&file);
  }
};
template <typename T>
using Held = std::unique_ptr<T, EncoderDeleter>;

tl::unexpected<std::string> failedAs(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  return tl::unexpected(std::string(text.data()));
}

tl::unexpected<std::string> noMemory() {
  return failedAs(AVERROR(ENOMEM));
}

/// A file that is given on as it is written.
struct OutputFile {
  EncodedOutput output;
  std::int64_t at = 0, end = 0;
};

/// `Byte`: libav asks for bytes it could change, or for const ones, by its version.
template <typename Byte>
int writeOn(void* opaque, Byte* bytes, int size) {
  auto& file = *static_cast<OutputFile*>(opaque);
  const std::span<const std::uint8_t> given(bytes, static_cast<std::size_t>(size));
  if (!file.output(static_cast<std::uint64_t>(file.at), given)) return AVERROR(EIO);
  file.at += size;
  file.end = std::max(file.end, file.at);
  return size;
}

std::int64_t seekTo(void* opaque, std::int64_t offset, int whence) {
  auto& file = *static_cast<OutputFile*>(opaque);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return file.end;
    case SEEK_SET:
      return file.at = offset;
    case SEEK_CUR:
      return file.at += offset;
    case SEEK_END:
      return file.at = file.end + offset;
    default:
      return AVERROR(EINVAL);
  }
}

class FfmpegEncoder final : public MovieEncoder {
 public:
  explicit FfmpegEncoder(EncodedOutput output) : file_{std::move(output)} {}

  Encoded<void> open(const EncodedMovie& movie) {
    TRY(openCodec(movie));
    return openFile(movie);
  }

  Encoded<void> add(const EncodedPicture& picture) override {
    const Held<AVFrame> frame(av_frame_alloc());
    if (!frame) return noMemory();
    frame->format = codec_->pix_fmt;
    frame->width = codec_->width;
    frame->height = codec_->height;
    frame->color_primaries = codec_->color_primaries;
    frame->color_trc = codec_->color_trc;
    frame->colorspace = codec_->colorspace;
    if (const int error = av_frame_get_buffer(frame.get(), 0); error < 0) return failedAs(error);
    const auto width = static_cast<std::size_t>(codec_->width);
    for (std::size_t plane = 0; plane < picture.planes.size(); ++plane) {
      for (int row = 0; row < codec_->height; ++row) {
        const auto line = picture.planes[plane].subspan(static_cast<std::size_t>(row) * width, width);
        std::copy(line.begin(), line.end(),
                  reinterpret_cast<std::uint16_t*>(frame->data[plane] + std::ptrdiff_t{row} * frame->linesize[plane]));
      }
    }
    frame->pts = picture.time;
    durations_.push_back(picture.duration);
    return send(frame.get());
  }

  Encoded<void> finish() override {
    TRY(send(nullptr));
    const int error = av_write_trailer(format_.get());
    if (error < 0) return failedAs(error);
    avio_flush(io_.get());
    return io_->error < 0 ? Encoded<void>(failedAs(io_->error)) : Encoded<void>();
  }

 private:
  Encoded<void> openCodec(const EncodedMovie& movie) {
    constexpr int proRes4444 = 4;
    // The one takes a third of the other's time, and odd widths not at all.
    const AVCodec* const encoder = avcodec_find_encoder_by_name(movie.width % 2 == 0 ? "prores_aw" : "prores_ks");
    if (encoder == nullptr) return tl::unexpected<std::string>("libav has no encoder of ProRes");
    codec_.reset(avcodec_alloc_context3(encoder));
    if (!codec_) return noMemory();
    codec_->width = movie.width;
    codec_->height = movie.height;
    codec_->pix_fmt = AV_PIX_FMT_YUV444P10;
    codec_->sample_aspect_ratio = {movie.pixelWidth, movie.pixelHeight};
    codec_->time_base = {1, movie.timeScale};
    codec_->profile = proRes4444;
    codec_->thread_count = 0;
    codec_->color_primaries = static_cast<AVColorPrimaries>(movie.color.primaries);
    codec_->color_trc = static_cast<AVColorTransferCharacteristic>(movie.color.transferFunction);
    codec_->colorspace = static_cast<AVColorSpace>(movie.color.matrix);
    codec_->color_range = AVCOL_RANGE_MPEG;
    const int error = avcodec_open2(codec_.get(), encoder, nullptr);
    return error < 0 ? Encoded<void>(failedAs(error)) : Encoded<void>();
  }

  Encoded<void> openFile(const EncodedMovie& movie) {
    constexpr int bufferSize = 1 << 18;
    AVFormatContext* format = nullptr;
    if (avformat_alloc_output_context2(&format, nullptr, "mov", nullptr) < 0) return noMemory();
    format_.reset(format);
    auto* const buffer = static_cast<std::uint8_t*>(av_malloc(bufferSize));
    if (buffer == nullptr) return noMemory();
    io_.reset(avio_alloc_context(buffer, bufferSize, 1, &file_, nullptr, writeOn, seekTo));
    if (!io_) {
      av_free(buffer);
      return noMemory();
    }
    format->pb = io_.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    AVStream* const stream = avformat_new_stream(format, nullptr);
    if (stream == nullptr) return noMemory();
    stream->time_base = codec_->time_base;
    stream->sample_aspect_ratio = codec_->sample_aspect_ratio;
    if (const int error = avcodec_parameters_from_context(stream->codecpar, codec_.get()); error < 0) {
      return failedAs(error);
    }
    return writeHeader(movie);
  }

  Encoded<void> writeHeader(const EncodedMovie& movie) {
    AVDictionary* options = nullptr;
    av_dict_set_int(&options, "video_track_timescale", movie.timeScale, 0);
    av_dict_set_int(&options, "movie_timescale", movie.timeScale, 0);
    av_dict_set(&options, "movflags", movie.gama ? "+write_colr+write_gama" : "+write_colr", 0);
    std::array<char, 32> gamma{};
    if (movie.gama) {
      std::snprintf(gamma.data(), gamma.size(), "%.9f", *movie.gama / 65536.0);
      av_dict_set(&options, "mov_gamma", gamma.data(), 0);
    }
    const int error = avformat_write_header(format_.get(), &options);
    av_dict_free(&options);
    return error < 0 ? Encoded<void>(failedAs(error)) : Encoded<void>();
  }

  /// A picture, or null for no more; and what comes out.
  Encoded<void> send(const AVFrame* frame) {
    if (const int error = avcodec_send_frame(codec_.get(), frame); error < 0) return failedAs(error);
    const Held<AVPacket> packet(av_packet_alloc());
    if (!packet) return noMemory();
    for (;;) {
      const int error = avcodec_receive_packet(codec_.get(), packet.get());
      if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return {};
      if (error < 0) return failedAs(error);
      // Each picture is coded alone: they come out in their order.
      packet->duration = durations_.empty() ? 0 : durations_.front();
      if (!durations_.empty()) durations_.pop_front();
      packet->stream_index = 0;
      av_packet_rescale_ts(packet.get(), codec_->time_base, format_->streams[0]->time_base);
      if (const int written = av_interleaved_write_frame(format_.get(), packet.get()); written < 0) {
        return failedAs(written);
      }
    }
  }

  OutputFile file_;
  Held<AVIOContext> io_;
  Held<AVFormatContext> format_;  ///< goes before what it writes to
  Held<AVCodecContext> codec_;
  std::deque<std::int64_t> durations_;  ///< of pictures that have not come out
};

class FfmpegEncoderBackend final : public MovieEncoderBackend {
 public:
  Encoded<std::unique_ptr<MovieEncoder>> makeEncoder(const EncodedMovie& movie, EncodedOutput output) override {
    auto encoder = std::make_unique<FfmpegEncoder>(std::move(output));
    TRY(encoder->open(movie));
    return encoder;
  }
};

}  // namespace
}  // namespace movie

extern "C" __attribute__((visibility("default"))) movie::MovieEncoderBackend* lumacheckEncoderBackend(
    int interfaceVersion) {
  if (interfaceVersion != movie::decoderInterfaceVersion) return nullptr;
  av_log_set_level(AV_LOG_QUIET);
  static movie::FfmpegEncoderBackend backend;
  return &backend;
}

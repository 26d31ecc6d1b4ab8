#include "movie/decode/DecoderModule.h"
#include "movie/decode/ffmpeg/FfmpegDecoder.h"
#include "movie/decode/ffmpeg/SoundTrackStream.h"

extern "C" {
#include <libavutil/log.h>
}

namespace movie {
namespace {

class FfmpegBackend final : public MovieDecoderBackend {
 public:
  Result<std::unique_ptr<MovieDecoder>> makeDecoder(std::shared_ptr<const MovieFile> file, std::size_t track) override {
    return FfmpegDecoder::make(std::move(file), track);
  }
  Result<std::unique_ptr<SoundStream>> makeSoundStream(std::shared_ptr<const MovieFile> file,
                                                       std::size_t track) override {
    return SoundTrackStream::make(std::move(file), track);
  }
};

}  // namespace
}  // namespace movie

extern "C" __attribute__((visibility("default"))) movie::MovieDecoderBackend* lumacheckDecoderBackend(
    int interfaceVersion) {
  if (interfaceVersion != movie::decoderInterfaceVersion) return nullptr;
  // What went wrong is told by errors; libav's own remarks belong on nobody's terminal.
  av_log_set_level(AV_LOG_QUIET);
  static movie::FfmpegBackend backend;
  return &backend;
}

#include "movie/decode/ffmpeg/DemuxerModule.h"

#include "movie/decode/DecoderModule.h"
#include "movie/decode/LoadedModule.h"

namespace movie {
namespace {

tl::expected<DemuxedDescriptionReader, std::string> load() {
  const auto entry = moduleEntry("movie-ffmpeg-demuxer.so", "lumacheckDemuxedDescriptionReader");
  if (!entry) return tl::make_unexpected(entry.error().reason);
  const auto reader = reinterpret_cast<DemuxerModuleEntry>(*entry)(decoderInterfaceVersion);
  if (reader == nullptr) return tl::make_unexpected("the decoder module belongs to another version of this program");
  return reader;
}

}  // namespace

tl::expected<DemuxedDescriptionReader, std::string> demuxedDescriptionReader() {
  static const auto reader = load();
  return reader;
}

}  // namespace movie

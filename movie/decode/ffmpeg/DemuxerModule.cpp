#include "movie/decode/ffmpeg/DemuxerModule.h"

#include "movie/decode/DecoderModule.h"
#include "movie/decode/LoadedModule.h"

namespace movie {
namespace {

tl::expected<DemuxedDescriptionReader, Clause> load() {
  const auto entry = moduleEntry("movie-ffmpeg-demuxer.so", "lumacheckDemuxedDescriptionReader");
  if (!entry) return tl::make_unexpected(entry.error().why);
  const auto reader = reinterpret_cast<DemuxerModuleEntry>(*entry)(decoderInterfaceVersion);
  if (reader == nullptr) return tl::make_unexpected(Reason::ModuleOfOtherVersion);
  return reader;
}

}  // namespace

tl::expected<DemuxedDescriptionReader, Clause> demuxedDescriptionReader() {
  static const auto reader = load();
  return reader;
}

}  // namespace movie

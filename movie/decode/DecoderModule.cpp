#include "movie/decode/DecoderModule.h"

#include <future>

#include "movie/decode/LoadedModule.h"

namespace movie {
namespace {

using Loaded = Result<MovieDecoderBackend*>;

Loaded loadBackend() {
  TRY(const auto entry, moduleEntry("movie-ffmpeg.so", "lumacheckDecoderBackend"));
  MovieDecoderBackend* const backend = reinterpret_cast<DecoderModuleEntry>(entry)(decoderInterfaceVersion);
  if (backend != nullptr) return backend;
  return failed("movie-ffmpeg.so", Reason::ModuleOfOtherVersion);
}

/// The one load of this process. The end of the process waits for it.
const std::shared_future<Loaded>& loading() {
  static const std::shared_future<Loaded> backend =
      std::async(std::launch::async | std::launch::deferred, loadBackend).share();
  return backend;
}

}  // namespace

void preloadDecoder() {
  loading();
}

Loaded decoderBackend() {
  return loading().get();
}

}  // namespace movie

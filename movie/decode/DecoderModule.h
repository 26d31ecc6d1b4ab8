#pragma once

#include <string>

#include "movie/decode/MovieDecoder.h"

namespace movie {

inline constexpr int decoderInterfaceVersion = 5;

/// The address of `entry` in the module of that file name. Modules lie in ../lib/lumacheck from the executable's
/// folder, or in the folder that LUMACHECK_MODULES names. A module stays loaded for good. Thread-safe as long as nobody
/// changes the environment. Error: the module is not there, cannot be loaded, or has no such entry.
Result<void*> moduleEntry(const std::string& moduleName, const char* entry);

/// What a module exports: its entry is a function that gives it, alive as long as the process, or null for another
/// interface than the module's own, which is an error here.
template <typename Exported>
Result<Exported*> exportedBy(const std::string& moduleName, const char* entry) {
  TRY(void* const address, moduleEntry(moduleName, entry));
  Exported* const exported = reinterpret_cast<Exported* (*)(int)>(address)(decoderInterfaceVersion);
  if (exported == nullptr) return failed(moduleName, Reason::ModuleOfOtherVersion);
  return exported;
}

/// The backend that the module movie-ffmpeg.so exports. It is loaded at the first call, because linking libav costs
/// more than a whole `info` run; later calls return the same. Thread-safe. Error: the module is missing or does not
/// fit.
Result<MovieDecoderBackend*> decoderBackend();

/// Begins to load that module on a thread of its own and returns at once, for callers that will soon need a picture and
/// have something else to do until then. What comes of it decoderBackend() tells.
void preloadDecoder();

}  // namespace movie

#pragma once

#include "movie/decode/MovieDecoder.h"

namespace movie {

/// What a decoder module exports under the name `lumacheckDecoderBackend`: its one backend, alive as long as the
/// process; null for another interface than its own.
using DecoderModuleEntry = MovieDecoderBackend* (*)(int interfaceVersion);
inline constexpr int decoderInterfaceVersion = 4;

/// The backend of the module movie-ffmpeg.so (moduleEntry() tells where it is looked for). It is loaded at the first
/// call, because linking libav costs more than a whole `info` run; later calls return the same. Thread-safe. Error: the
/// module is missing or does not fit.
Result<MovieDecoderBackend*> decoderBackend();

/// Begins to load that module on a thread of its own and returns at once, for callers that will soon need a picture and
/// have something else to do until then. What comes of it decoderBackend() tells.
void preloadDecoder();

}  // namespace movie

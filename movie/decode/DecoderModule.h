#pragma once

#include "movie/decode/MovieDecoder.h"

namespace movie {

/// What a decoder module exports under the name `lumacheckDecoderBackend`: its one backend, alive as long as the
/// process.
using DecoderModuleEntry = MovieDecoderBackend* (*)(int interfaceVersion);
inline constexpr int decoderInterfaceVersion = 1;

/// The backend of the module that lies beside the program (../lib/lumacheck from the executable's folder, or the folder
/// in LUMACHECK_MODULES). It is loaded at the first call, because linking libav costs more than a whole `info` run;
/// later calls return the same. Thread-safe. Error: the module is missing or does not fit.
Result<MovieDecoderBackend*> decoderBackend();

}  // namespace movie

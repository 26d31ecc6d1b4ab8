#include "movie/encode/MovieEncoder.h"

#include "movie/decode/DecoderModule.h"

namespace movie {

Encoded<MovieEncoderBackend*> encoderBackend() {
  const auto backend = exportedBy<MovieEncoderBackend>(encoderModuleName, encoderModuleEntry);
  if (!backend) return tl::unexpected<std::string>("What encodes movies is not installed, or does not fit.");
  return *backend;
}

}  // namespace movie

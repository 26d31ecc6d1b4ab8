#pragma once

#include <string>

#include <tl/expected.hpp>

#include "movie/Movie.h"
#include "movie/encode/MovieEncoder.h"
#include "scan/Scan.h"

namespace cli {

/// What becomes a proof: frames of the destination, with a recipe undone, under the source's tags.
struct ProofSubject {
  const movie::Movie& source;
  const movie::Movie& dest;
  const scan::MoviePair& rows;
  scan::FrameRange frames;  ///< of the destination
  const diagnosis::Recipe& recipe;
};

/// Makes it: ProRes 4444, in the destination's size and at its times. `onProgress` is called before each frame; true
/// ends the work. Error: a sentence.
tl::expected<void, std::string> writeProof(const ProofSubject& subject, movie::MovieEncoderBackend& backend,
                                           const movie::EncodedOutput& output, const scan::OnProgress& onProgress);

}  // namespace cli

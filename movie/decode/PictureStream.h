#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "movie/decode/MovieDecoder.h"

namespace movie {

struct StreamRequest {
  PictureRequest picture;
  /// The presentation time (as SampleTable's) of the picture that will be asked for next, where that is known: those in
  /// between may be left out of decoding. It is a hint; whatever is asked for next comes.
  std::optional<std::int64_t> nextTime = std::nullopt;
  /// Asked before every sample that is decoded; true ends the work on this request. May be empty.
  std::function<bool()> givenUp = nullptr;
};

/// The pictures of one track one after another, for playing: a request for a later picture decodes on from where the
/// one before it ended, passing over what lies between, unless starting anew at a later sync sample is quicker; any
/// other request starts anew. The decoder is never drained before the end. Used by one thread at a time.
class PictureStream {
 public:
  virtual ~PictureStream() = default;

  /// The picture of exactly that sample, the same as MovieDecoder::picture() gives it, but for a last bit where
  /// it is scaled; asked for again, in another
  /// size, it is not decoded again. None when it was given up: the work done for it is kept for the next request.
  ///
  /// Only where the stream itself is damaged may the two differ: this one looks for a better start in a few places, not
  /// back to the beginning of the movie.
  virtual Result<std::optional<Picture>> picture(const StreamRequest& request) = 0;
};

}  // namespace movie

#pragma once

#include <cstdint>
#include <memory>

#include "movie/atoms/MovieFile.h"
#include "movie/decode/Picture.h"
#include "movie/decode/SoundStream.h"

namespace movie {

/// Which part of the coded picture to take, in coded pixels; fractions of a pixel are allowed. Empty: all of it.
struct PictureCrop {
  double left = 0, top = 0, width = 0, height = 0;
};

struct PictureRequest {
  PresentedSample sample;  ///< of the decoder's own track
  PictureCrop crop;
  int width = 0, height = 0;  ///< of the result; 0 x 0 keeps the cropped size
};

/// Samples of one track of one open movie file, decoded. Used by one thread at a time; different decoders of one file
/// may run on different threads.
class MovieDecoder {
 public:
  virtual ~MovieDecoder() = default;

  /// The picture of exactly that sample, as a full decode from the beginning shows it. The decoder is drained at once:
  /// quick for one picture here and there, not for playing.
  virtual Result<Picture> picture(const PictureRequest& request) = 0;
};

class PictureStream;

/// A decoder backend: makes decoders. `track` indexes file->tracks().
class MovieDecoderBackend {
 public:
  virtual ~MovieDecoderBackend() = default;
  virtual Result<std::unique_ptr<MovieDecoder>> makeDecoder(std::shared_ptr<const MovieFile> file,
                                                            std::size_t track) = 0;
  /// The sound of a sound track. Error: its first sample description cannot be understood or nothing decodes it, or the
  /// track has no samples.
  virtual Result<std::unique_ptr<SoundStream>> makeSoundStream(std::shared_ptr<const MovieFile> file,
                                                               std::size_t track) = 0;
  virtual Result<std::unique_ptr<PictureStream>> makePictureStream(std::shared_ptr<const MovieFile> file,
                                                                   std::size_t track) = 0;
};

}  // namespace movie

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

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
  bool digested = false;      ///< with Picture::digest
};

/// A picture among others that are asked for one after another.
struct RowRequest {
  PictureRequest picture;
  /// The presentation time (as SampleTable's) of the picture that will be asked for next, where that is known: those in
  /// between may be left out of decoding. It is a hint; whatever is asked for next comes.
  std::optional<std::int64_t> nextTime = std::nullopt;
  /// Asked before every sample that is decoded; true ends the work on this request. May be empty.
  std::function<bool()> givenUp = nullptr;
};

/// Pictures of one track of one open movie file. However it is asked for, the picture of a sample is the same: the one
/// that a full decode from the beginning shows. Where the stream is damaged it is what the decoder puts in the place of
/// what is lost, which need not be the same twice. Used by one thread at a time; different decoders of one file may run
/// on different threads.
class MovieDecoder {
 public:
  virtual ~MovieDecoder() = default;

  /// One picture here or there: the decoder is drained as soon as it has the sample, which is the quickest way to it,
  /// and the slowest to the next.
  virtual Result<Picture> picture(const PictureRequest& request) = 0;

  /// Pictures in a row, for playing: one that is later than the one before is decoded on from there, passing over what
  /// lies between, unless starting anew at a later sync sample is quicker; any other starts anew. The decoder is never
  /// drained before the end. A picture asked for again, in another size, is not decoded again. Where it is scaled, its
  /// last bit may differ from picture()'s. None when it was given up: the work done for it is kept for the next
  /// request.
  virtual Result<std::optional<Picture>> pictureInRow(const RowRequest& request) = 0;
};

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
};

}  // namespace movie

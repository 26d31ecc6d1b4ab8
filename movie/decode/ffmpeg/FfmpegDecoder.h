#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "movie/decode/MovieDecoder.h"
#include "movie/decode/ffmpeg/DecodingTrack.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// Pictures of one track. Samples are read through the movie file's own tables and carry their index through the
/// decoder as their time stamp, so a frame says which sample it came from whatever the stream believes about time. Each
/// sample is decoded under its own sample description.
class FfmpegDecoder final : public MovieDecoder {
 public:
  static Result<std::unique_ptr<MovieDecoder>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<Picture> picture(const PictureRequest& request) override;

 private:
  struct Attempt;

  explicit FfmpegDecoder(std::unique_ptr<DecodingTrack> track) : track_(std::move(track)) {}

  SampleDecoder& decoder() const { return track_->decoder(); }
  Result<LibavPointer<AVFrame>> frameOf(const PresentedSample& target);
  Result<Attempt> decodeFrom(std::uint64_t first, const PresentedSample& target);
  int receiveFrames(Attempt& attempt);
  void take(Attempt& attempt, LibavPointer<AVFrame> frame) const;

  std::unique_ptr<DecodingTrack> track_;
};

}  // namespace movie

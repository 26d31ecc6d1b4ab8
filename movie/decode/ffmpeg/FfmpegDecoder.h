#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "movie/decode/MovieDecoder.h"
#include "movie/decode/ffmpeg/LibavHandles.h"
#include "movie/decode/ffmpeg/SampleDecoder.h"

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

  FfmpegDecoder(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<void> useDescriptionOf(std::uint64_t sample);
  std::uint64_t startAtOrBefore(std::uint64_t from, const PresentedSample& target) const;
  std::vector<std::uint64_t> startsFor(const PresentedSample& target) const;
  int reorderDepthAt(const PresentedSample& target) const;
  Result<LibavPointer<AVFrame>> frameOf(const PresentedSample& target);
  Result<Attempt> decodeFrom(std::uint64_t first, const PresentedSample& target);
  Result<std::size_t> readPacket(std::uint64_t sample);
  int receiveFrames(Attempt& attempt);
  void take(Attempt& attempt, LibavPointer<AVFrame> frame) const;
  tl::unexpected<MovieError> failure(const std::string& reason) const;

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  const SampleTable& table_;
  std::unique_ptr<SampleDecoder> decoder_;  ///< of the description that was needed last
  std::size_t description_ = 0;             ///< its place among the track's; only with a decoder
  std::uint64_t firstSample_ = 0;           ///< of the run of that description around the sample asked for
};

}  // namespace movie

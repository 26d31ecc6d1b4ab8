#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "movie/decode/MovieDecoder.h"
#include "movie/decode/ffmpeg/CodecHeader.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

struct AVCodec;

namespace movie {

/// Pictures of one track. Samples are read through the movie file's own tables and carry their index through the
/// decoder as their time stamp, so a frame says which sample it came from whatever the stream believes about time.
class FfmpegDecoder final : public MovieDecoder {
 public:
  static Result<std::unique_ptr<MovieDecoder>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<Picture> picture(const PictureRequest& request) override;

 private:
  struct Attempt;

  FfmpegDecoder(std::shared_ptr<const MovieFile> file, std::size_t track, CodecHeader header, const AVCodec* codec);

  Result<void> prepare(int reorderDepth);
  std::uint64_t startAtOrBefore(std::uint64_t from, const PresentedSample& target) const;
  std::vector<std::uint64_t> startsFor(const PresentedSample& target) const;
  int reorderDepthAt(const PresentedSample& target) const;
  Result<LibavPointer<AVFrame>> frameOf(const PresentedSample& target);
  Result<Attempt> decodeFrom(std::uint64_t first, const PresentedSample& target);
  Result<bool> readPacket(std::uint64_t sample);
  void receiveFrames(Attempt& attempt);
  void take(Attempt& attempt, LibavPointer<AVFrame> frame) const;
  tl::unexpected<MovieError> failure(const std::string& reason) const;

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  const SampleTable& table_;
  CodecHeader header_;
  const AVCodec* codec_;
  bool intraOnly_ = false;
  std::size_t sampleLimit_ = 0;  ///< bytes; no sample of such pictures is larger
  std::int64_t pixelLimit_ = 0;  ///< no stream of that description holds larger pictures
  int openDepth_ = -1;           ///< the reorder depth the decoder was opened for; -1 while it is closed
  LibavPointer<AVCodecContext> context_;
  LibavPointer<AVPacket> packet_;
};

}  // namespace movie

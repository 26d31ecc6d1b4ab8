#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "movie/decode/MovieDecoder.h"

namespace movie::test {

/// A movie file opened with a decoder for its first video track. What fails throws std::runtime_error with the reason.
class DecodedMovie {
 public:
  explicit DecodedMovie(const std::string& path);

  /// Another decoder of the same track, which does not need this object any more.
  std::unique_ptr<MovieDecoder> anotherDecoder() const;
  MovieDecoder& decoder() const { return *decoder_; }
  const SampleTable& table() const { return file_->sampleTable(track_); }
  std::string codec() const;  ///< of the first image description
  Result<Picture> sampleAt(std::int64_t mediaTime, int width = 0, int height = 0);
  Picture pictureAt(std::int64_t mediaTime, int width = 0, int height = 0, const PictureCrop& crop = {});

 private:
  std::shared_ptr<const MovieFile> file_;
  std::size_t track_ = 0;
  std::unique_ptr<MovieDecoder> decoder_;
};

/// What the ffmpeg command shows when it decodes the first video track of a movie from beginning to end, without a
/// seek.
struct FullDecode {
  struct Frame {
    std::int64_t time = 0;       ///< presentation, in the media's time scale
    std::uint32_t checksum = 0;  ///< as firstPlaneChecksum gives it
  };
  std::vector<Frame> frames;  ///< as they come out

  /// The checksum of the frame on screen at a media time: the last one presented at or before it, else the first.
  std::uint32_t checksumAt(std::int64_t mediaTime) const;
};

/// `plane` is "y" for YCbCr and grey, "r" for RGB.
FullDecode fullDecode(const std::string& path, const std::string& plane);

/// Adler-32, begun at 0, over the first plane of a picture of full size: its codes as bytes, or as little-endian 16-bit
/// words when they are deeper than 8 bits.
std::uint32_t firstPlaneChecksum(const Picture& picture);

/// The first frames of a movie, decoded by the ffmpeg command: raw and packed, in that pixel format.
std::vector<std::uint8_t> rawFrames(const std::string& path, int count, const std::string& pixelFormat);

}  // namespace movie::test

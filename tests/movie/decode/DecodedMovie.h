#pragma once

#include <cstddef>
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

  const SampleTable& table() const { return file_->sampleTable(track_); }
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
    std::int64_t time = 0;  ///< presentation, in the media's time scale
    std::size_t offset = 0;
  };
  std::size_t frameSize = 0;
  std::vector<Frame> frames;        ///< as they come out
  std::vector<std::uint8_t> bytes;  ///< raw frames in the decoder's own pixel format, or the one asked for

  /// The frame on screen at a media time: the last one presented at or before it, else the first.
  const std::uint8_t* frameAt(std::int64_t mediaTime) const;
};

FullDecode fullDecode(const std::string& path, const std::string& pixelFormat = {});

/// Whether the first plane of a picture of full size is, code for code, what a raw planar frame begins with.
bool sameFirstPlane(const Picture& picture, const std::uint8_t* raw);

}  // namespace movie::test

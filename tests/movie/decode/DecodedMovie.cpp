#include "tests/movie/decode/DecodedMovie.h"

#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <zlib.h>

#include "movie/decode/DecoderModule.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie::test {
namespace {

template <typename T>
T valueOf(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message());
  return std::move(*result);
}

/// Lines of ffmpeg's framecrc format: stream, dts, pts, duration, size, checksum.
std::vector<FullDecode::Frame> framesIn(const std::string& listing) {
  std::vector<FullDecode::Frame> frames;
  std::istringstream lines(listing);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::int64_t stream = 0, dts = 0, pts = 0, duration = 0, size = 0;
    std::uint32_t checksum = 0;
    char comma = 0;
    fields >> stream >> comma >> dts >> comma >> pts >> comma >> duration >> comma >> size >> comma >>
        std::setbase(0) >> checksum;
    if (!fields) throw std::runtime_error("not a line of framecrc: " + line);
    frames.push_back({pts, checksum});
  }
  return frames;
}

}  // namespace

DecodedMovie::DecodedMovie(const std::string& path) : file_(valueOf(MovieFile::open(path))) {
  while (track_ < file_->tracks().size() && file_->tracks()[track_].mediaType != videoMedia) ++track_;
  decoder_ = anotherDecoder();
}

std::unique_ptr<MovieDecoder> DecodedMovie::anotherDecoder() const {
  return valueOf(valueOf(decoderBackend())->makeDecoder(file_, track_));
}

std::string DecodedMovie::codec() const {
  return fourCCText(ImageDescription(file_->tracks()[track_].sampleDescriptions.at(0)).codec());
}

Result<Picture> DecodedMovie::sampleAt(std::int64_t mediaTime, int width, int height) {
  const auto sample = table().presentedAt(mediaTime);
  if (!sample) throw std::runtime_error("the movie has no samples");
  return decoder_->picture({*sample, {}, width, height});
}

Picture DecodedMovie::pictureAt(std::int64_t mediaTime, int width, int height, const PictureCrop& crop) {
  const auto sample = table().presentedAt(mediaTime);
  if (!sample) throw std::runtime_error("the movie has no samples");
  return valueOf(decoder_->picture({*sample, crop, width, height}));
}

std::uint32_t FullDecode::checksumAt(std::int64_t mediaTime) const {
  const Frame* shown = nullptr;
  const Frame* first = nullptr;
  for (const Frame& frame : frames) {
    if (first == nullptr || frame.time < first->time) first = &frame;
    if (frame.time <= mediaTime && (shown == nullptr || frame.time >= shown->time)) shown = &frame;
  }
  if (first == nullptr) throw std::runtime_error("a full decode gave no frame");
  return shown == nullptr ? first->checksum : shown->checksum;
}

FullDecode fullDecode(const std::string& path, const std::string& plane) {
  return {framesIn(textOf(fixtureMovie(
      "frames.txt", {"-ignore_editlist", "1", "-copyts", "-i", path, "-map", "0:v:0", "-fps_mode", "passthrough",
                     "-enc_time_base", "-1", "-vf", "extractplanes=" + plane, "-c:v", "rawvideo", "-f", "framecrc"})))};
}

std::uint32_t firstPlaneChecksum(const Picture& picture) {
  Bytes bytes;
  for (const std::uint16_t sample : picture.planes[0]) {
    const int code = sample >> (16 - picture.depth);
    bytes.push_back(static_cast<std::uint8_t>(code));
    if (picture.depth > 8) bytes.push_back(static_cast<std::uint8_t>(code >> 8));
  }
  return static_cast<std::uint32_t>(adler32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

std::vector<std::uint8_t> rawFrames(const std::string& path, int count, const std::string& pixelFormat) {
  const std::string bytes = textOf(fixtureMovie(
      "frames.raw", {"-ignore_editlist", "1", "-i", path, "-map", "0:v:0", "-fps_mode", "passthrough", "-frames:v",
                     std::to_string(count), "-pix_fmt", pixelFormat, "-c:v", "rawvideo", "-f", "rawvideo"}));
  return {bytes.begin(), bytes.end()};
}

}  // namespace movie::test

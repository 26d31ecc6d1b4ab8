#include "tests/movie/decode/DecodedMovie.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "movie/decode/DecoderModule.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

template <typename T>
T valueOf(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message());
  return std::move(*result);
}

std::string contentsOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Lines of ffmpeg's framecrc format: stream, dts, pts, duration, size, checksum.
std::vector<std::int64_t> timesIn(const std::string& listing, std::size_t& frameSize) {
  std::vector<std::int64_t> times;
  std::istringstream lines(listing);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::int64_t stream = 0, dts = 0, pts = 0, duration = 0;
    char comma = 0;
    fields >> stream >> comma >> dts >> comma >> pts >> comma >> duration >> comma >> frameSize;
    if (!fields) throw std::runtime_error("not a line of framecrc: " + line);
    times.push_back(pts);
  }
  return times;
}

}  // namespace

DecodedMovie::DecodedMovie(const std::string& path) : file_(valueOf(MovieFile::open(path))) {
  while (track_ < file_->tracks().size() && file_->tracks()[track_].mediaType != videoMedia) ++track_;
  decoder_ = valueOf(valueOf(decoderBackend())->makeDecoder(file_, track_));
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

const std::uint8_t* FullDecode::frameAt(std::int64_t mediaTime) const {
  const Frame* shown = nullptr;
  const Frame* first = nullptr;
  for (const Frame& frame : frames) {
    if (first == nullptr || frame.time < first->time) first = &frame;
    if (frame.time <= mediaTime && (shown == nullptr || frame.time >= shown->time)) shown = &frame;
  }
  if (shown == nullptr) shown = first;
  return shown == nullptr ? nullptr : bytes.data() + shown->offset;
}

FullDecode fullDecode(const std::string& path, const std::string& pixelFormat) {
  std::vector<std::string> arguments{"-ignore_editlist", "1",           "-copyts",        "-i", path, "-map", "0:v:0",
                                     "-fps_mode",        "passthrough", "-enc_time_base", "-1"};
  if (!pixelFormat.empty()) arguments.insert(arguments.end(), {"-pix_fmt", pixelFormat});
  arguments.insert(arguments.end(), {"-c:v", "rawvideo"});
  auto listing = arguments;
  listing.insert(listing.end(), {"-f", "framecrc"});
  auto raw = arguments;
  raw.insert(raw.end(), {"-f", "rawvideo"});

  FullDecode decode;
  const auto times = timesIn(contentsOf(fixtureMovie("frames.txt", listing)), decode.frameSize);
  const std::string bytes = contentsOf(fixtureMovie("frames.raw", raw));
  if (bytes.size() != times.size() * decode.frameSize) throw std::runtime_error("frames of uneven sizes in " + path);
  decode.bytes.assign(bytes.begin(), bytes.end());
  for (std::size_t i = 0; i < times.size(); ++i) decode.frames.push_back({times[i], i * decode.frameSize});
  return decode;
}

bool sameFirstPlane(const Picture& picture, const std::uint8_t* raw) {
  const int shift = 16 - picture.depth;
  for (std::size_t i = 0; i < picture.planes[0].size(); ++i) {
    const unsigned code = picture.depth == 8 ? raw[i] : static_cast<unsigned>(raw[2 * i] | (raw[2 * i + 1] << 8));
    if (picture.planes[0][i] != code << shift) return false;
  }
  return true;
}

}  // namespace movie::test

// Decodes all frames of two movies, each on a thread of its own, as a scan reads them, and compares nothing:
//
//   bench_decode SOURCE DEST
//
// scan.py holds scans against it. Prints how many frames each has.
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>

#include "movie/Movie.h"
#include "movie/decode/DecoderModule.h"

namespace {

[[noreturn]] void fail(const movie::MovieError& error) {
  std::fprintf(stderr, "bench_decode: %s\n", error.message().c_str());
  std::exit(2);
}

template <typename Value>
Value had(movie::Result<Value> result) {
  if (!result) fail(result.error());
  return std::move(*result);
}

std::size_t firstVideoTrack(const movie::MovieFile& file) {
  std::size_t track = 0;
  while (track < file.tracks().size() && file.tracks()[track].mediaType != movie::videoMedia) ++track;
  return track;
}

/// Of each picture four samples are taken, so that hardly anything but decoding is timed.
std::size_t framesDecoded(const char* path) {
  const std::unique_ptr<movie::Movie> movie = had(movie::Movie::movieWithFile(path));
  movie::MovieDecoderBackend* const backend = had(movie::decoderBackend());
  const auto decoder = had(backend->makeDecoder(movie->file(), firstVideoTrack(*movie->file())));
  std::size_t frames = 0;
  auto span = movie->frameSpanAt({.value = 0, .scale = movie->timeScale()});
  while (span) {
    const movie::PictureRequest corner{
        .sample = span->sample, .crop = {.width = 2, .height = 2}, .width = 2, .height = 2};
    had(decoder->pictureInRow({.picture = corner}));
    ++frames;
    if (span->last) break;
    span = movie->frameSpanAt(span->end);
  }
  return frames;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "usage: bench_decode SOURCE DEST\n");
    return 2;
  }
  movie::preloadDecoder();
  auto source = std::async(std::launch::async, framesDecoded, arguments[1]);
  const std::size_t dest = framesDecoded(arguments[2]);
  std::printf("%zu %zu\n", source.get(), dest);
  return 0;
}

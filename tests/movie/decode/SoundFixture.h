#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "movie/decode/DecoderModule.h"

namespace movie::test {

inline std::shared_ptr<const MovieFile> opened(const std::string& path) {
  auto file = MovieFile::open(path);
  if (!file) throw std::runtime_error(file.error().message());
  return *file;
}

inline std::size_t soundTrackOf(const MovieFile& file) {
  for (std::size_t i = 0; i < file.tracks().size(); ++i) {
    if (file.tracks()[i].mediaType == soundMedia) return i;
  }
  throw std::runtime_error("no sound track in " + file.path());
}

inline Result<std::unique_ptr<SoundStream>> soundOf(const std::shared_ptr<const MovieFile>& file) {
  const auto backend = decoderBackend();
  if (!backend) return tl::make_unexpected(backend.error());
  return (*backend)->makeSoundStream(file, soundTrackOf(*file));
}

inline std::unique_ptr<SoundStream> streamOf(const std::string& path) {
  auto stream = soundOf(opened(path));
  if (!stream) throw std::runtime_error(stream.error().message());
  return std::move(*stream);
}

inline std::vector<float> readFrames(SoundStream& stream, std::int64_t first, std::int64_t count) {
  std::vector<float> frames(2 * static_cast<std::size_t>(count), -7.0F);
  const auto read = stream.read(first, frames);
  EXPECT_TRUE(read.has_value()) << (read ? "" : read.error().message());
  return frames;
}

}  // namespace movie::test

#pragma once

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/cli/RunProgram.h"
#include "tests/support/AtomBuilder.h"

namespace cli::test {

using movie::Bytes;
using movie::test::TemporaryFile;

inline constexpr std::int32_t gamma22 = 144179, gamma18 = 117965;

inline movie::test::MovieSpec specOf(const std::vector<Bytes>& extensions, const std::string& mediaType = "vide") {
  movie::test::ImageEntry entry;
  entry.extensions = extensions;
  movie::test::TrackSpec track;
  track.mediaType = mediaType;
  track.entries = {entry.build()};
  movie::test::MovieSpec spec;
  spec.tracks = {track};
  return spec;
}

/// A movie whose only sample description has these extensions.
inline Bytes movieOf(const std::vector<Bytes>& extensions, const std::string& mediaType = "vide") {
  return movie::test::joined({movie::test::typedMediaData("qt  ", 30), specOf(extensions, mediaType).build()});
}

inline std::vector<Bytes> gammaExtensions(std::int32_t gamma) {
  return {movie::test::gamaExtension(gamma), movie::test::nclcExtension(1, 1, 1)};
}

inline std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline movie::ImageDescription descriptionIn(const std::string& path) {
  return movie::ImageDescription((*movie::MovieFile::open(path))->tracks().front().sampleDescriptions.front());
}

/// Two movies that differ in their gamma level.
class SyncCommand : public testing::Test {
 protected:
  const TemporaryFile source_{movieOf(gammaExtensions(gamma22))}, dest_{movieOf(gammaExtensions(gamma18))};
  const std::string before_ = contents(dest_.path());
};

}  // namespace cli::test

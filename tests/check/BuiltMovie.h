#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "movie/Movie.h"
#include "tests/support/AtomBuilder.h"

namespace check::test {

/// The bytes of a movie of one track with those stsd entries.
inline movie::Bytes movieFile(const std::vector<movie::Bytes>& entries, const std::string& mediaType = "vide",
                              const std::string& brand = "qt  ") {
  movie::test::TrackSpec track;
  track.mediaType = mediaType;
  track.entries = entries;
  movie::test::MovieSpec spec;
  spec.tracks = {track};
  return movie::test::joined({movie::test::typedMediaData(brand, 30), spec.build()});
}

inline std::unique_ptr<movie::Movie> opened(const movie::test::TemporaryFile& file) {
  auto movie = movie::Movie::movieWithFile(file.path());
  if (!movie) throw std::runtime_error(movie.error().message());
  return std::move(*movie);
}

}  // namespace check::test

#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "movie/atoms/MovieFile.h"
#include "tests/support/AtomBuilder.h"

// Small movie files and image descriptions, built and opened.

namespace movie::test {

using Opened = Result<std::shared_ptr<const MovieFile>>;

inline Opened opened(const Bytes& content, const std::string& extension = ".mov") {
  const TemporaryFile file(content, extension);
  return MovieFile::open(file.path());
}

/// A movie file around a moov: ftyp and 64 bytes of media data in front of it.
inline Bytes around(const Bytes& moov, std::string_view brand = "qt  ") {
  return joined({typedMediaData(brand, 64), moov});
}
inline Bytes around(const MovieSpec& movie) {
  return around(movie.build());
}

/// Throws std::runtime_error when it is refused.
inline std::shared_ptr<const MovieFile> opening(const Bytes& content, const std::string& extension = ".mov") {
  auto movie = opened(content, extension);
  if (!movie) throw std::runtime_error(movie.error().message());
  return *movie;
}

inline Bytes entryWith(const std::vector<Bytes>& extensions, const Bytes& rest = {}) {
  ImageEntry entry;
  entry.extensions = extensions;
  entry.rest = rest;
  return entry.build();
}

/// An extension of a type that nobody knows.
inline Bytes unknownExtension() {
  return AtomBuilder("zzzz").zeros(5).build();
}

}  // namespace movie::test

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "movie/copy/FlattenedCopy.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace movie::test {

/// A movie file put together from named parts in order: "ftyp", "moov", "wide", "free", "skip", "uuid", "junk",
/// "zeros", "otherMoov", "cmov", "mdat", "mdat64" (a 64-bit size), "mdat0" (a size of 0) and "chunks" (a free atom that
/// holds chunks). Every part that holds media data has one chunk of three samples of 10 bytes of track 1 and one of
/// three of 6 bytes of track 2, all bytes of the file different from their neighbours.
struct MovieParts {
  std::vector<std::string> parts;
  bool wideOffsets = false;
  std::string firstMediaType = "vide";

  Bytes build() const;
};

/// Every sample's bytes in order, track after track; throws std::runtime_error when one cannot be had.
std::vector<std::vector<Bytes>> samplesOf(const std::string& path);

/// The types of the top-level atoms in order; "!" at the end when they do not end with the file.
std::vector<std::string> topLevelTypes(const std::string& path);

std::shared_ptr<const MovieFile> openedMovie(const std::string& path);

Result<void> copied(const std::string& from, const std::string& to, const CopyProgress& progress = {});

/// What a shell command prints; throws std::runtime_error when it fails. `command` is trusted.
std::string outputOf(const std::string& command);

}  // namespace movie::test

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "movie/atoms/MovieFile.h"

namespace fuzz {

/// A top-level atom as a walk of this file's own finds it, which shares no code with the program.
struct TopAtom {
  movie::FourCC type = 0;
  std::size_t offset = 0, size = 0;
  bool open = false;  ///< a last mdat of size 0

  std::size_t end() const { return offset + size; }
};

/// The whole atoms from the start of the file on; what stands behind the last one is none.
std::vector<TopAtom> topAtoms(movie::ByteView file);

/// Judges what a save, whole or not, leaves of a movie file of any layout.
class SavedStateJudge {
 public:
  /// `before` is the file, `movie` what it was opened as.
  SavedStateJudge(const movie::Bytes& before, const movie::MovieFile& movie);

  /// The movie atom that a whole save has left, as the new one; false when there is none in that file.
  bool learn(const movie::Bytes& after);

  enum class Metadata { Old, New, Either };
  /// What is wrong with the file; nothing when its first movie atom is byte for byte of that kind, and every byte that
  /// is not the save's own is what it was.
  std::string verdict(const movie::Bytes& file, Metadata metadata) const;

  /// The same without a look at the movie atom.
  std::string verdictOnMedia(const movie::Bytes& file) const;

 private:
  bool isNew(movie::ByteView atom) const;

  const movie::Bytes& before_;
  std::vector<TopAtom> atoms_;
  movie::Bytes old_, new_;
  std::vector<std::pair<std::size_t, std::size_t>> media_;  ///< begin and end of samples
};

}  // namespace fuzz

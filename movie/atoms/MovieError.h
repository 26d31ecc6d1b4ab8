#pragma once

#include <cstdint>
#include <string>

#include <tl/expected.hpp>

namespace movie {

/// Why an operation of the movie layer failed. A value, never thrown.
struct MovieError {
  std::string file;          ///< path as given, raw bytes
  std::string atom;          ///< atom path such as "moov/trak/mdia", empty when none is to blame
  std::uint64_t offset = 0;  ///< where in the file that atom starts
  std::string reason;        ///< a clause such as "the atom is larger than its parent"

  /// One sentence for a person: file, reason, and atom with offset when one is to blame.
  std::string message() const;
};

template <typename T>
using Result = tl::expected<T, MovieError>;

}  // namespace movie

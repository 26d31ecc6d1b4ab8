#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <tl/expected.hpp>

#include "system/Error.h"

namespace movie {

enum class Reason : std::uint8_t {
#define REASON(name, text) name,
#include "movie/atoms/ReasonList.h"
};

/// What a text of the list of reasons is in some language, places left as they are.
using Language = std::function<std::string(const char* english)>;

/// A reason with what stands in its places: "the sample 7 cannot be read: the file became shorter".
struct Clause {
  Clause(Reason why, std::vector<Clause> inPlaces = {}) : reason(why), places(std::move(inPlaces)) {}

  /// Without a language in English.
  std::string text(const Language& language = {}) const;

  Reason reason;
  std::vector<Clause> places;  ///< for %1, %2, ...
  std::string words;           ///< of a Verbatim, which has no places
};

/// What no list has: a name, a number, what the system or a library says.
Clause verbatim(std::string words);

enum class Access { Read, Write, Create };

/// Why a system call failed, `number` being errno.
Clause systemReason(int number, Access access);

enum class Attempt { Read, Save };

/// Why an operation of the movie layer failed. A value, never thrown.
struct MovieError {
  std::string file;          ///< path as given, raw bytes
  std::string atom;          ///< atom path such as "moov/trak/mdia", empty when none is to blame
  std::uint64_t offset = 0;  ///< where in the file that atom starts
  Clause why;

  bool is(Reason reason) const { return why.reason == reason; }
  /// The English clause.
  std::string reason() const { return why.text(); }
  /// The reason, with atom and offset when one is to blame.
  Clause clause() const;
  /// One sentence for a person: file, reason, and atom with offset when one is to blame.
  std::string message(Attempt attempt = Attempt::Read, const Language& language = {}) const;
};

template <typename T>
using Result = tl::expected<T, MovieError>;

/// For `return`.
inline tl::unexpected<MovieError> failed(std::string file, Clause why, std::string atom = {}, std::uint64_t at = 0) {
  return tl::make_unexpected(MovieError{std::move(file), std::move(atom), at, std::move(why)});
}

/// What the ground floor failed at, for somebody who reads a file, writes one in place or makes a new one; what was
/// being done to a file that is written in place is told too.
MovieError fromSystem(const sys::Error& error, Access access);

/// The result of the ground floor, as one of the movie layer.
template <typename T>
Result<T> fromSystem(sys::Result<T> result, Access access) {
  return std::move(result).map_error([access](const sys::Error& error) { return fromSystem(error, access); });
}

/// The result of what does not know which file it works on.
template <typename T>
Result<T> inFile(const std::string& file, Result<T> result) {
  if (!result && result.error().file.empty()) result.error().file = file;
  return result;
}

}  // namespace movie

#pragma once

#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace sys {

/// What the system was asked for when it refused.
enum class Step {
  Open,         ///< to find and open what a path leads to, for reading
  OpenToWrite,  ///< the same for writing
  Create,       ///< to make a new file or folder, or to give it its name
  Look,         ///< to tell what a file is like
  Read,
  Write,
  Copy,  ///< from one file to another inside the kernel: either may be to blame
  Sync,  ///< to bring a file onto the disk
  Resize,
  Reserve,        ///< to set space aside for a file
  SetAttributes,  ///< owner, permissions, times, extended attributes
  SyncName,       ///< to bring the name of a complete new file onto the disk
  Remove,
  RemoveOriginal,  ///< to end a move whose copy is complete: both are there
};

/// Why work on files failed. A value, never thrown.
struct Error {
  int code = 0;  ///< an errno; ECANCELED where the caller wanted no more
  Step what = Step::Open;
  std::string path;  ///< of the file to blame, as given, raw bytes
};

template <typename T>
using Result = tl::expected<T, Error>;

inline tl::unexpected<Error> failure(int code, Step what, std::string path) {
  return tl::unexpected<Error>(Error{code, what, std::move(path)});
}

}  // namespace sys

/// TRY(expression): returns its error from this function, if it has one.
/// TRY(declaration, expression): what is declared becomes its value, unless its error is returned.
/// An expression with a bare comma needs parentheses.
// A declaration cannot stand in parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define TRY(...) TRY_PICK(__VA_ARGS__, TRY_VALUE, TRY_STATUS, )(__VA_ARGS__)
#define TRY_PICK(first, second, picked, ...) picked
#define TRY_STATUS(expression)                                                                                         \
  do {                                                                                                                 \
    if (auto&& tried = (expression); !tried) return tl::make_unexpected(std::forward<decltype(tried)>(tried).error()); \
  } while (false)
#define TRY_VALUE(declaration, expression) TRY_VALUE_AS(TRY_NAME(__LINE__), declaration, expression)
#define TRY_VALUE_AS(tried, declaration, expression)                                    \
  auto&& tried = (expression);                                                          \
  if (!tried) return tl::make_unexpected(std::forward<decltype(tried)>(tried).error()); \
  declaration = *std::forward<decltype(tried)>(tried)
#define TRY_NAME(line) TRY_NAMED(line)
#define TRY_NAMED(line) triedInLine##line
// NOLINTEND(bugprone-macro-parentheses)

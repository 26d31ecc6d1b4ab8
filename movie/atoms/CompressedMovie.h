#pragma once

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/MovieError.h"

namespace movie {

/// No compressed movie atom is inflated beyond this many bytes. What is built from its tables takes up to ten times as
/// much, and a thousandth of it in the file.
inline constexpr std::size_t maximumInflatedSize = std::size_t{16} << 20;

/// The movie atom, header included, that a 'cmov' atom holds compressed. `compressed` was read from `bytes`. The error
/// has a reason only; the caller knows file and place. Source: QTFF "Compressed movie resources".
Result<Bytes> inflateMovie(ByteView bytes, const Atom& compressed);

}  // namespace movie

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/MovieError.h"

namespace movie {

/// A sample description to stand in a movie atom in place of another.
struct SampleDescriptionEdit {
  std::size_t track = 0;        ///< indexes the movie's tracks, as MovieFile::tracks() does
  std::size_t description = 0;  ///< 0-based, among the track's sample descriptions
  Bytes entry;                  ///< the whole stsd entry, size and type included
};

/// The movie atom with its sample descriptions replaced. `movieAtom` is a whole moov, header included, as
/// MovieFile::movieAtom() gives it. Nothing but the replaced entries and the sizes of the atoms around them (stsd,
/// stbl, minf, mdia, trak, moov) differs: 64-bit sizes stay 64-bit, unknown atoms and terminators stay byte for byte. A
/// movie atom of size 0 gets its true size. The error has a reason and perhaps an atom, no file: no such track or
/// description, an entry whose size field is not its length, an atom that would need a larger size field, a malformed
/// movie atom.
Result<Bytes> editedMovieAtom(ByteView movieAtom, const std::vector<SampleDescriptionEdit>& edits);

/// The movie atom brought to a size by making one `free` in moov, udta or meta (moov's, or udta's) smaller or larger;
/// or unchanged where it has that size. A `free` that would become nothing goes. None where no `free` can make up the
/// difference.
std::optional<Bytes> movieAtomOfSize(ByteView movieAtom, std::uint64_t size);

/// Whether two movie atoms differ at most in the colour extensions (gama, colr) of video sample descriptions, in the
/// `free` atoms that movieAtomOfSize() may resize, and in the sizes around them.
bool equalButForColors(ByteView left, ByteView right);

}  // namespace movie

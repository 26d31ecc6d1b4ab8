#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/FourCC.h"
#include "movie/atoms/MovieError.h"

namespace movie {

/// One atom inside a run of bytes. Source: QTFF "Atoms"; ISO/IEC 14496-12, 4.2.
struct Atom {
  FourCC type = 0;
  std::uint64_t offset = 0;      ///< of the header, from the start of the bytes it was read from
  std::uint32_t headerSize = 8;  ///< 8, or 16 with a 64-bit size
  std::uint64_t size = 0;        ///< header included; never reaches past its parent

  std::uint64_t bodyOffset() const { return offset + headerSize; }
  std::uint64_t bodySize() const { return size - headerSize; }
  std::uint64_t end() const { return offset + size; }
};

/// Why the walk over an atom's children ended before its end.
enum class AtomDefect {
  None,
  SizeBelowHeader,    ///< 1 to 7, or 0 in an atom that has a type, or a 64-bit size below 16
  ReachesPastParent,  ///< the size, or a 64-bit size's own field, does not fit into what is left
  TrailingBytes,      ///< fewer than 8 bytes, or zeros: QTFF's four-byte terminator, or padding. Harmless
  TooMany             ///< more than maximumAtomCount children
};

struct AtomHeader {
  Atom atom;  ///< as the header claims it when there is a defect
  AtomDefect defect = AtomDefect::None;
};

/// The header at the start of `bytes`, of an atom that stands at `offset` with `left` bytes to the end of its parent.
AtomHeader readAtomHeader(ByteView bytes, std::uint64_t offset, std::uint64_t left);

/// No parent is taken to have more children than this.
inline constexpr std::size_t maximumAtomCount = 100'000;

struct AtomList {
  std::vector<Atom> atoms;
  AtomDefect defect = AtomDefect::None;
  std::uint64_t defectOffset = 0;  ///< where the offending header stands
  FourCC defectType = 0;           ///< its type, 0 for trailing bytes

  /// Whether what stands at defectOffset makes the parent malformed.
  bool malformed() const { return defect != AtomDefect::None && defect != AtomDefect::TrailingBytes; }
};

Reason describe(AtomDefect defect);

/// The atoms between two offsets of `bytes`, in order; their own offsets are from the start of `bytes`. Stops at the
/// first malformed header; what stands before it is returned. A size of 0, which reaches to the end of a file, has no
/// such meaning inside another atom. begin <= end <= bytes.size().
AtomList readAtoms(ByteView bytes, std::uint64_t begin, std::uint64_t end);
inline AtomList readAtoms(ByteView bytes) {
  return readAtoms(bytes, 0, bytes.size());
}

/// The children of an atom that was read from `bytes`, a meta atom of either kind too; their offsets too are from the
/// start of `bytes`.
AtomList readChildren(ByteView bytes, const Atom& parent);

/// Whatever could be a child, for those who may not overlook one: a meta atom is read with version and flags and
/// without, whatever stands there. The reading that is wrong finds nothing, or junk.
std::vector<Atom> possibleChildren(ByteView bytes, const Atom& parent);

/// The first child of that type, or none.
std::optional<Atom> firstAtom(const AtomList& list, FourCC type);

/// The body of an atom that was read from `bytes`.
inline ByteView bodyOf(ByteView bytes, const Atom& atom) {
  return between(bytes, atom.bodyOffset(), atom.end());
}

/// The header of a new atom; with a 64-bit size where it is asked for or needed.
Bytes atomHeader(FourCC type, std::uint64_t bodySize, bool wide = false);

}  // namespace movie

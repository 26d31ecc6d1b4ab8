#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/quicktime/ByteOrder.h"
#include "movie/quicktime/FourCC.h"

namespace movie {

/// One atom inside a run of bytes. Source: QTFF "Atoms"; ISO/IEC 14496-12, 4.2.
struct Atom {
  FourCC type = 0;
  std::uint64_t offset = 0;    ///< of the header, from the start of the bytes it was read from
  std::uint32_t headerSize = 8; ///< 8, or 16 with a 64-bit size
  std::uint64_t size = 0;      ///< header included; never reaches past its parent

  std::uint64_t bodyOffset() const { return offset + headerSize; }
  std::uint64_t bodySize() const { return size - headerSize; }
  std::uint64_t end() const { return offset + size; }
};

/// Why the walk over an atom's children ended before its end.
enum class AtomDefect { None, SizeBelowHeader, ReachesPastParent, TrailingBytes };

struct AtomList {
  std::vector<Atom> atoms;
  AtomDefect defect = AtomDefect::None;
  std::uint64_t defectOffset = 0;  ///< where the offending header stands
};

/// The atoms of `bytes`, in order. A size of 0 reaches to the end of `bytes`. Stops at the first malformed header; what
/// stands before it is returned. A rest of fewer than 8 bytes is TrailingBytes (QTFF's four-byte terminator among them).
AtomList readAtoms(ByteView bytes);

/// The first child of that type, or none.
std::optional<Atom> firstAtom(const AtomList& list, FourCC type);

/// The body of an atom that was read from `bytes`.
inline ByteView bodyOf(ByteView bytes, const Atom& atom) {
  return bytes.subspan(static_cast<std::size_t>(atom.bodyOffset()), static_cast<std::size_t>(atom.bodySize()));
}

}  // namespace movie

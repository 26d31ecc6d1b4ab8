#include "movie/atoms/AtomReader.h"

#include <algorithm>
#include <limits>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::uint32_t shortHeader = 8;
constexpr std::uint32_t longHeader = 16;

}  // namespace

Reason describe(AtomDefect defect) {
  switch (defect) {
    case AtomDefect::SizeBelowHeader:
      return Reason::SizeBelowHeader;
    case AtomDefect::ReachesPastParent:
      return Reason::ReachesPastParent;
    case AtomDefect::TooMany:
      return Reason::TooManyInParent;
    default:
      return Reason::TrailingBytes;
  }
}

AtomHeader readAtomHeader(ByteView bytes, std::uint64_t offset, std::uint64_t left) {
  Atom atom{0, offset, shortHeader, 0};
  if (left < shortHeader || bytes.size() < shortHeader) return {atom, AtomDefect::TrailingBytes};
  atom.type = read32(bytes, 4);
  atom.size = read32(bytes, 0);
  if (atom.size == 0 && atom.type == 0) return {atom, AtomDefect::TrailingBytes};
  if (atom.size == 1) {
    if (left < longHeader || bytes.size() < longHeader) return {atom, AtomDefect::ReachesPastParent};
    atom.headerSize = longHeader;
    atom.size = read64(bytes, shortHeader);
  }
  if (atom.size < atom.headerSize) return {atom, AtomDefect::SizeBelowHeader};
  return {atom, atom.size > left ? AtomDefect::ReachesPastParent : AtomDefect::None};
}

/// ISO files have version and flags before the children of a meta atom, which are 0. QuickTime's begins with the size
/// of a child, which is not.
AtomList readChildren(ByteView bytes, const Atom& parent) {
  const bool isFull = parent.type == code::meta && parent.bodySize() >= 4 && read32(bodyOf(bytes, parent), 0) == 0;
  return readAtoms(bytes, parent.bodyOffset() + (isFull ? 4 : 0), parent.end());
}

std::vector<Atom> possibleChildren(ByteView bytes, const Atom& parent) {
  std::vector<Atom> found = readAtoms(bytes, parent.bodyOffset(), parent.end()).atoms;
  if (parent.type == code::meta && parent.bodySize() >= 4) {
    const AtomList further = readAtoms(bytes, parent.bodyOffset() + 4, parent.end());
    found.insert(found.end(), further.atoms.begin(), further.atoms.end());
  }
  return found;
}

AtomList readAtoms(ByteView bytes, std::uint64_t begin, std::uint64_t end) {
  AtomList list;
  for (std::uint64_t at = begin; at < end;) {
    const AtomHeader header = readAtomHeader(bytes.subspan(static_cast<std::size_t>(at)), at, end - at);
    const bool tooMany = list.atoms.size() >= maximumAtomCount;
    if (header.defect != AtomDefect::None || tooMany) {
      list.defect = header.defect != AtomDefect::None ? header.defect : AtomDefect::TooMany;
      list.defectOffset = at;
      list.defectType = header.atom.type;
      break;
    }
    list.atoms.push_back(header.atom);
    at = header.atom.end();
  }
  return list;
}

std::optional<Atom> firstAtom(const AtomList& list, FourCC type) {
  const auto found =
      std::find_if(list.atoms.begin(), list.atoms.end(), [type](const Atom& atom) { return atom.type == type; });
  if (found == list.atoms.end()) return std::nullopt;
  return *found;
}

Bytes atomHeader(FourCC type, std::uint64_t bodySize, bool wide) {
  wide = wide || bodySize + shortHeader > std::numeric_limits<std::uint32_t>::max();
  Bytes header(wide ? longHeader : shortHeader);
  const std::uint64_t size = header.size() + bodySize;
  write32(header, 0, wide ? 1 : static_cast<std::uint32_t>(size));
  write32(header, 4, type);
  if (wide) write64(header, 8, size);
  return header;
}

}  // namespace movie

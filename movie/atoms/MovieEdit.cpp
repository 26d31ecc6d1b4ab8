#include "movie/atoms/MovieEdit.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/TrackInfo.h"

namespace movie {

namespace {

constexpr std::uint64_t listHead = 8;  // version, flags and the count of a stsd
/// How many atoms may stand around one that is looked into; no format nests them deeper.
constexpr std::size_t deepest = 8;

void write64(Bytes& bytes, std::size_t at, std::uint64_t value) {
  write32(bytes, at, static_cast<std::uint32_t>(value >> 32));
  write32(bytes, at + 4, static_cast<std::uint32_t>(value));
}

/// The atom that `bytes` are, all of them; a size of 0 counts as theirs.
std::optional<Atom> wholeAtom(ByteView bytes) {
  auto [atom, defect] = readAtomHeader(bytes, 0, bytes.size());
  if (defect == AtomDefect::SizeBelowHeader && atom.size == 0 && atom.headerSize == 8) {
    atom.size = bytes.size();
    defect = AtomDefect::None;
  }
  if (defect != AtomDefect::None || atom.size != bytes.size()) return std::nullopt;
  return atom;
}

std::optional<Atom> childOf(ByteView bytes, const Atom& parent, FourCC type, std::size_t index = 0) {
  for (const Atom& atom : readChildren(bytes, parent).atoms) {
    if (atom.type == type && index-- == 0) return atom;
  }
  return std::nullopt;
}

/// The children of a meta atom, which has version and flags before them in ISO files and does not in QuickTime ones.
AtomList metaChildren(ByteView bytes, const Atom& meta) {
  const bool plain =
      meta.bodySize() >= 8 && read32(bytes, static_cast<std::size_t>(meta.bodyOffset()) + 4) == code::hdlr;
  if (plain || meta.bodySize() < 4) return readChildren(bytes, meta);
  return readAtoms(bytes, meta.bodyOffset() + 4, meta.end());
}

/// The atoms from the outermost to the one to be replaced.
using AtomPath = std::vector<Atom>;

/// Puts `replacement` in place of `length` bytes at `at`, inside all the atoms of `around`, and settles their sizes.
/// False when a size does not fit into its field.
bool splice(Bytes& bytes, const AtomPath& around, std::uint64_t at, std::uint64_t length, ByteView replacement) {
  for (const Atom& atom : around) {
    const std::uint64_t size = atom.size - length + replacement.size();
    if (atom.headerSize == 8 && size > std::numeric_limits<std::uint32_t>::max()) return false;
    if (atom.headerSize == 8) {
      write32(bytes, static_cast<std::size_t>(atom.offset), static_cast<std::uint32_t>(size));
    } else {
      write64(bytes, static_cast<std::size_t>(atom.offset) + 8, size);
    }
  }
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  const std::size_t common = std::min<std::size_t>(static_cast<std::size_t>(length), replacement.size());
  std::copy_n(replacement.begin(), common, begin);
  const auto rest = begin + static_cast<std::ptrdiff_t>(common);
  if (replacement.size() > common) {
    bytes.insert(rest, replacement.begin() + static_cast<std::ptrdiff_t>(common), replacement.end());
  } else {
    bytes.erase(rest, begin + static_cast<std::ptrdiff_t>(length));
  }
  return true;
}

/// From the movie atom down to a track's stsd.
Result<AtomPath> pathToDescriptions(ByteView bytes, std::size_t track) {
  const auto movie = wholeAtom(bytes);
  if (!movie || movie->type != code::moov) return failed({}, Reason::MovieMalformed, "moov");
  AtomPath path{*movie};
  std::string name = "moov";
  std::size_t index = track;
  constexpr std::array steps{code::trak, code::mdia, code::minf, code::stbl, code::stsd};
  for (const FourCC type : steps) {
    const auto atom = childOf(bytes, path.back(), type, std::exchange(index, 0));
    name += '/' + fourCCText(type);
    if (!atom) return failed({}, Reason::NoSuchAtom, name, path.back().offset);
    path.push_back(*atom);
  }
  return path;
}

AtomList descriptionsIn(ByteView bytes, const Atom& list) {
  if (list.bodySize() < listHead) return {};
  AtomList entries = readAtoms(bytes, list.bodyOffset() + listHead, list.end());
  const std::size_t count = read32(bytes, static_cast<std::size_t>(list.bodyOffset()) + 4);
  if (entries.atoms.size() > count) entries.atoms.resize(count);
  return entries;
}

Result<void> replaceDescription(Bytes& bytes, const SampleDescriptionEdit& edit) {
  const std::string name = "moov/trak/mdia/minf/stbl/stsd";
  TRY(const auto path, pathToDescriptions(bytes, edit.track));
  const AtomList entries = descriptionsIn(bytes, path.back());
  if (edit.description >= entries.atoms.size()) return failed({}, Reason::NoSuchDescription, name, path.back().offset);
  const AtomHeader header = readAtomHeader(edit.entry, 0, edit.entry.size());
  if (header.defect != AtomDefect::None || header.atom.size != edit.entry.size()) {
    return failed({}, Reason::DescriptionSizeWrong, name, path.back().offset);
  }
  const Atom& old = entries.atoms[edit.description];
  if (!splice(bytes, path, old.offset, old.size, edit.entry)) {
    return failed({}, Reason::MovieWouldBeTooLarge, name, path.back().offset);
  }
  return {};
}

/// Every `free` whose size is nobody's business, with the atoms around it.
std::vector<AtomPath> resizableFrees(ByteView bytes, const Atom& movie) {
  std::vector<AtomPath> found;
  const auto search = [&](const AtomPath& around, const AtomList& children, const auto& again) -> void {
    if (around.size() > deepest) return;
    for (const Atom& child : children.atoms) {
      AtomPath path = around;
      path.push_back(child);
      if (child.type == code::free && child.headerSize == 8) found.push_back(path);
      if (child.type == code::udta && around.size() == 1) again(path, readChildren(bytes, child), again);
      if (child.type == code::meta) again(path, metaChildren(bytes, child), again);
    }
  };
  search({movie}, readChildren(bytes, movie), search);
  return found;
}

void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

ByteView viewOf(ByteView bytes, const Atom& atom) {
  return bytes.subspan(static_cast<std::size_t>(atom.offset), static_cast<std::size_t>(atom.size));
}

/// A movie atom without its colours and without the sizes that depend on them, to be compared.
class Skeleton {
 public:
  explicit Skeleton(ByteView bytes) : bytes_(bytes) {}

  Bytes make() {
    if (const auto movie = wholeAtom(bytes_)) container(*movie, readChildren(bytes_, *movie), 0);
    return std::move(out_);
  }

 private:
  void type(FourCC code) {
    out_.resize(out_.size() + 4);
    write32(out_, out_.size() - 4, code);
  }

  void container(const Atom& atom, const AtomList& children, std::size_t depth) {
    if (depth > deepest) return append(out_, viewOf(bytes_, atom));
    type(atom.type);
    const FourCC around = mediaType_;
    if (atom.type == code::mdia) mediaType_ = mediaTypeOf(children);
    const std::uint64_t begin = children.atoms.empty() ? atom.bodyOffset() : children.atoms.front().offset;
    if (!children.atoms.empty())
      append(out_, bytes_.subspan(position(atom.bodyOffset()), position(begin - atom.bodyOffset())));
    for (const Atom& child : children.atoms) part(atom, child, depth + 1);
    const std::uint64_t end = children.atoms.empty() ? atom.bodyOffset() : children.atoms.back().end();
    append(out_, bytes_.subspan(position(end), position(atom.end() - end)));
    type(0);
    mediaType_ = around;
  }

  FourCC mediaTypeOf(const AtomList& children) const {
    const auto handler = firstAtom(children, code::hdlr);
    return handler && handler->bodySize() >= 12 ? read32(bodyOf(bytes_, *handler), 8) : 0;
  }

  void part(const Atom& parent, const Atom& atom, std::size_t depth) {
    const bool loose = parent.type == code::moov || parent.type == code::udta || parent.type == code::meta;
    switch (atom.type) {
      case code::trak:
      case code::mdia:
      case code::minf:
      case code::stbl:
        return container(atom, readChildren(bytes_, atom), depth);
      case code::udta:
        if (parent.type != code::moov) break;
        return container(atom, readChildren(bytes_, atom), depth);
      case code::meta:
        if (!loose) break;
        return container(atom, metaChildren(bytes_, atom), depth);
      case code::free:
        if (loose) return;
        break;
      case code::stsd:
        return descriptions(atom);
      default:
        break;
    }
    append(out_, viewOf(bytes_, atom));
  }

  void descriptions(const Atom& list) {
    const AtomList entries = descriptionsIn(bytes_, list);
    if (mediaType_ != videoMedia || entries.atoms.empty()) return append(out_, viewOf(bytes_, list));
    type(list.type);
    append(out_, bytes_.subspan(position(list.bodyOffset()), listHead));
    for (const Atom& entry : entries.atoms) {
      const ByteView view = viewOf(bytes_, entry);
      ImageDescription description(Bytes(view.begin(), view.end()));
      for (const FourCC color : {code::gama, code::colr}) {
        while (description.removeExtension(color) == noErr) {
        }
      }
      append(out_, description.bytes());
    }
    append(out_,
           bytes_.subspan(position(entries.atoms.back().end()), position(list.end() - entries.atoms.back().end())));
  }

  static std::size_t position(std::uint64_t offset) { return static_cast<std::size_t>(offset); }

  ByteView bytes_;
  Bytes out_;
  FourCC mediaType_ = 0;
};

}  // namespace

Result<Bytes> editedMovieAtom(ByteView movieAtom, const std::vector<SampleDescriptionEdit>& edits) {
  Bytes bytes(movieAtom.begin(), movieAtom.end());
  const auto movie = wholeAtom(bytes);
  if (!movie || movie->type != code::moov) return failed({}, Reason::MovieMalformed, "moov");
  if (!splice(bytes, {*movie}, movie->end(), 0, {})) return failed({}, Reason::MovieTooLarge, "moov");
  for (const SampleDescriptionEdit& edit : edits) {
    TRY(replaceDescription(bytes, edit));
  }
  return bytes;
}

std::optional<Bytes> movieAtomOfSize(ByteView movieAtom, std::uint64_t size) {
  Bytes bytes(movieAtom.begin(), movieAtom.end());
  if (size == bytes.size()) return bytes;
  const auto movie = wholeAtom(bytes);
  if (!movie) return std::nullopt;
  for (AtomPath& path : resizableFrees(bytes, *movie)) {
    const Atom free = path.back();
    const std::uint64_t others = movie->size - free.size;
    if (size < others || (size - others < free.headerSize && size != others)) continue;
    const std::uint64_t left = size - others;
    if (left == 0) path.pop_back();
    // From the body's end, so that what a `free` holds at its beginning stays.
    const std::uint64_t cut = left == 0 ? free.size : free.size - std::min(left, free.size);
    const Bytes more(static_cast<std::size_t>(left > free.size ? left - free.size : 0));
    if (!splice(bytes, path, free.end() - cut, cut, more)) return std::nullopt;
    return bytes;
  }
  return std::nullopt;
}

bool equalButForColors(ByteView left, ByteView right) {
  const Bytes skeleton = Skeleton(left).make();
  return !skeleton.empty() && skeleton == Skeleton(right).make();
}

}  // namespace movie

#include "movie/atoms/MovieEdit.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/Splice.h"
#include "movie/atoms/TrackInfo.h"

namespace movie {

namespace {

constexpr std::uint64_t listHead = 8;  // version, flags and the count of a stsd
/// How many atoms may stand around one that is looked into; no format nests them deeper.
constexpr std::size_t deepest = 8;

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

/// The atoms from the outermost to the one to be replaced.
using AtomPath = std::vector<Atom>;

/// From the movie atom and one of its tracks down to that track's stsd.
Result<AtomPath> pathToDescriptions(ByteView bytes, AtomPath path) {
  std::string name = "moov/trak";
  for (const FourCC type : {code::mdia, code::minf, code::stbl, code::stsd}) {
    const auto atom = childOf(bytes, path.back(), type);
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

Result<Bytes> withDescription(ByteView bytes, const SampleDescriptionEdit& edit) {
  const std::string name = "moov/trak/mdia/minf/stbl/stsd";
  const auto movie = wholeAtom(bytes);
  const auto track = movie ? childOf(bytes, *movie, code::trak, edit.track) : std::nullopt;
  if (!track) return failed({}, Reason::NoSuchAtom, "moov/trak");
  TRY(const auto path, pathToDescriptions(bytes, {*movie, *track}));
  const auto failure = [&](Reason why) { return failed({}, why, name, path.back().offset); };
  const AtomList entries = descriptionsIn(bytes, path.back());
  if (edit.description >= entries.atoms.size()) return failure(Reason::NoSuchDescription);
  const AtomHeader header = readAtomHeader(edit.entry, 0, edit.entry.size());
  if (header.defect != AtomDefect::None || header.atom.size != edit.entry.size()) {
    return failure(Reason::DescriptionSizeWrong);
  }
  const Atom& old = entries.atoms[edit.description];
  auto edited = spliced(bytes, path, {{old.offset, old.size, edit.entry}});
  if (!edited) return failure(Reason::MovieWouldBeTooLarge);
  return std::move(*edited);
}

/// Every `free` whose size is nobody's business, with the atoms around it. Not one that a meta atom begins with: its
/// size tells of which kind the meta atom is.
std::vector<AtomPath> resizableFrees(ByteView bytes, const Atom& movie) {
  std::vector<AtomPath> found;
  const auto search = [&](const AtomPath& around, const auto& again) -> void {
    if (around.size() > deepest) return;
    const Atom& parent = around.back();
    for (const Atom& child : readChildren(bytes, parent).atoms) {
      AtomPath path = around;
      path.push_back(child);
      const bool beginsMeta = parent.type == code::meta && child.offset == parent.bodyOffset();
      if (child.type == code::free && child.headerSize == 8 && !beginsMeta) found.push_back(path);
      if (child.type == code::meta || (child.type == code::udta && around.size() == 1)) again(path, again);
    }
  };
  search({movie}, search);
  return found;
}

Bytes viewed(ByteView bytes, const Atom& atom) {
  const ByteView view = between(bytes, atom.offset, atom.end());
  return {view.begin(), view.end()};
}

bool isVideo(ByteView bytes, const Atom& media) {
  const auto handler = childOf(bytes, media, code::hdlr);
  return handler && handler->bodySize() >= 12 && read32(bodyOf(bytes, *handler), 8) == videoMedia;
}

/// A movie atom to be compared: without its colours and without what movieAtomOfSize() may resize.
std::optional<Bytes> withoutColors(ByteView bytes) {
  const auto movie = wholeAtom(bytes);
  if (!movie) return std::nullopt;
  std::vector<Splice> splices;
  std::vector<Atom> containers{*movie};
  for (const AtomPath& path : resizableFrees(bytes, *movie)) {
    splices.push_back({path.back().offset, path.back().size, {}});
    containers.insert(containers.end(), path.begin(), path.end() - 1);
  }
  for (const Atom& track : readChildren(bytes, *movie).atoms) {
    if (track.type != code::trak) continue;
    const auto path = pathToDescriptions(bytes, {*movie, track});
    if (!path || !isVideo(bytes, path->at(2))) continue;
    for (const Atom& entry : descriptionsIn(bytes, path->back()).atoms) {
      ImageDescription description(viewed(bytes, entry));
      for (const FourCC color : {code::gama, code::colr}) {
        while (description.removeExtension(color) == noErr) continue;
      }
      splices.push_back({entry.offset, entry.size, description.bytes()});
    }
    containers.insert(containers.end(), path->begin(), path->end());
  }
  return spliced(bytes, containers, std::move(splices));
}

}  // namespace

Result<Bytes> editedMovieAtom(ByteView movieAtom, const std::vector<SampleDescriptionEdit>& edits) {
  const auto movie = wholeAtom(movieAtom);
  if (!movie || movie->type != code::moov) return failed({}, Reason::MovieMalformed, "moov");
  auto bytes = spliced(movieAtom, {*movie}, {});
  if (!bytes) return failed({}, Reason::MovieTooLarge, "moov");
  for (const SampleDescriptionEdit& edit : edits) {
    TRY(bytes, withDescription(*bytes, edit));
  }
  return std::move(*bytes);
}

std::optional<Bytes> movieAtomOfSize(ByteView movieAtom, std::uint64_t size) {
  if (size == movieAtom.size()) return Bytes(movieAtom.begin(), movieAtom.end());
  const auto movie = wholeAtom(movieAtom);
  if (!movie) return std::nullopt;
  for (AtomPath& path : resizableFrees(movieAtom, *movie)) {
    const Atom free = path.back();
    const std::uint64_t others = movie->size - free.size;
    const std::uint64_t left = size - others;
    if (size < others || (left != 0 && left < free.headerSize) || left > std::numeric_limits<std::uint32_t>::max()) {
      continue;
    }
    path.pop_back();
    // What it holds at its beginning stays.
    Bytes resized = viewed(movieAtom, free);
    resized.resize(static_cast<std::size_t>(left));
    if (left != 0) write32(resized, 0, static_cast<std::uint32_t>(left));
    return spliced(movieAtom, path, {{free.offset, free.size, std::move(resized)}});
  }
  return std::nullopt;
}

bool equalButForColors(ByteView left, ByteView right) {
  const auto skeleton = withoutColors(left);
  return skeleton && skeleton == withoutColors(right);
}

}  // namespace movie

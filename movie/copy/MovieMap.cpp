#include "movie/copy/MovieMap.h"

#include <algorithm>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::uint64_t listHead = 8;  // version, flags, count

void append32(Bytes& bytes, std::uint32_t value) {
  bytes.resize(bytes.size() + 4);
  write32(bytes, bytes.size() - 4, value);
}

void append64(Bytes& bytes, std::uint64_t value) {
  append32(bytes, static_cast<std::uint32_t>(value >> 32));
  append32(bytes, static_cast<std::uint32_t>(value));
}

void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

ByteView part(ByteView bytes, std::uint64_t begin, std::uint64_t end) {
  return bytes.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

/// A reference with nothing behind version and flags names no other file, whatever its flag says.
bool namesOtherFile(ByteView movie, const Atom& reference) {
  constexpr std::uint32_t selfContainedFlag = 1;
  return reference.bodySize() > 4 && (read32(bodyOf(movie, reference), 0) & selfContainedFlag) == 0;
}

AtomList referencesIn(ByteView movie, const Atom& list) {
  if (list.bodySize() < listHead) return {};
  return readAtoms(movie, list.bodyOffset() + listHead, list.end());
}

class Mapper {
 public:
  Mapper(ByteView movie, const std::string& file) : bytes_(movie), origin_{file} {}

  Result<MovieMap> map();

 private:
  Result<AtomList> enter(const Atom& atom, const std::string& path);
  Result<std::optional<Atom>> only(const AtomList& list, const char (&type)[5], const std::string& path) const;
  Result<void> refuseOtherOffsets(const AtomList& list, const std::string& path) const;
  Result<MovieMap::Track> track(const Atom& atom, const TrackAtoms& parsed);
  Result<void> mediaInformation(const Atom& atom, MovieMap::Track& track);
  Result<void> sampleTable(const Atom& atom, const std::string& path, MovieMap::Track& track);
  std::vector<DataReference> references(const std::optional<Atom>& list) const;

  tl::unexpected<MovieError> refusal(const std::string& path, const Atom& atom, Reason why) const {
    return origin_.failure(path, atom.offset, why);
  }

  ByteView bytes_;
  BytesOrigin origin_;
  MovieMap map_;
};

/// The children of an atom that a place to change can stand in.
Result<AtomList> Mapper::enter(const Atom& atom, const std::string& path) {
  auto children = wellFormedChildren(bytes_, atom, path, origin_);
  if (!children) return children;
  map_.containers.push_back(atom);
  TRY(refuseOtherOffsets(*children, path));
  return children;
}

Result<std::optional<Atom>> Mapper::only(const AtomList& list, const char (&type)[5], const std::string& path) const {
  std::optional<Atom> found;
  for (const Atom& atom : list.atoms) {
    if (atom.type != fourCC(type)) continue;
    if (found) return refusal(path + "/" + type, atom, Reason::SeveralWhereOneCounts);
    found = atom;
  }
  return found;
}

Result<void> Mapper::refuseOtherOffsets(const AtomList& list, const std::string& path) const {
  for (const Atom& atom : list.atoms) {
    if (atom.type == code::saio) return refusal(path + "/saio", atom, Reason::OffsetsImmovable);
    if (atom.type == code::meta && holdsItemLocations(bytes_, atom)) {
      return refusal(path + "/meta/iloc", atom, Reason::OffsetsImmovable);
    }
    if (atom.type != code::udta) continue;
    const AtomList inside = readChildren(bytes_, atom);
    TRY(refuseOtherOffsets(inside, path + "/udta"));
  }
  return {};
}

Result<MovieMap> Mapper::map() {
  const AtomList all = readAtoms(bytes_);
  if (all.atoms.size() != 1 || all.atoms[0].type != code::moov || all.atoms[0].size != bytes_.size()) {
    return origin_.failure("moov", 0, Reason::NotOneMovieAtom);
  }
  const Atom movie = all.atoms[0];
  TRY(const auto parts, enter(movie, "moov"));
  if (const auto compressed = firstAtom(parts, code::cmov)) {
    return refusal("moov/cmov", *compressed, Reason::Compressed);
  }
  if (const auto extends = firstAtom(parts, code::mvex)) return refusal("moov/mvex", *extends, Reason::Fragmented);
  TRY(const auto parsed, parseMovieAtom(bytes_, movie, origin_));
  for (const Atom& atom : parts.atoms) {
    if (atom.type != code::trak) continue;
    TRY(auto mapped, track(atom, parsed.tracks[map_.tracks.size()]));
    map_.tracks.push_back(std::move(mapped));
  }
  return std::move(map_);
}

Result<MovieMap::Track> Mapper::track(const Atom& atom, const TrackAtoms& parsed) {
  MovieMap::Track track{TrackChunks(parsed, {}), {}, {}, parsed.tables.wideOffsets};
  TRY(const auto parts, enter(atom, "moov/trak"));
  TRY(const auto media, only(parts, "mdia", "moov/trak"));
  if (!media) return track;
  TRY(const auto mediaParts, enter(*media, "moov/trak/mdia"));
  TRY(const auto information, only(mediaParts, "minf", "moov/trak/mdia"));
  if (!information) return track;
  TRY(mediaInformation(*information, track));
  track.chunks = TrackChunks(parsed, references(track.references));
  return track;
}

Result<void> Mapper::mediaInformation(const Atom& atom, MovieMap::Track& track) {
  const std::string path = "moov/trak/mdia/minf";
  TRY(const auto parts, enter(atom, path));
  TRY(const auto data, only(parts, "dinf", path));
  if (data) {
    TRY(const auto inside, enter(*data, path + "/dinf"));
    TRY(const auto list, only(inside, "dref", path + "/dinf"));
    track.references = list;
    if (list) map_.containers.push_back(*list);
  }
  TRY(const auto table, only(parts, "stbl", path));
  return table ? sampleTable(*table, path + "/stbl", track) : Result<void>{};
}

Result<void> Mapper::sampleTable(const Atom& atom, const std::string& path, MovieMap::Track& track) {
  TRY(const auto parts, enter(atom, path));
  TRY(const auto narrow, only(parts, "stco", path));
  TRY(const auto wide, only(parts, "co64", path));
  if (narrow && wide) return refusal(path + "/co64", *wide, Reason::SeveralWhereOneCounts);
  track.offsets = narrow ? narrow : wide;
  return {};
}

std::vector<DataReference> Mapper::references(const std::optional<Atom>& list) const {
  std::vector<DataReference> references;
  if (!list) return references;
  for (const Atom& atom : referencesIn(bytes_, *list).atoms) {
    const ByteView body = bodyOf(bytes_, atom);
    references.push_back(
        {atom.type, namesOtherFile(bytes_, atom), body.subspan(std::min<std::size_t>(4, body.size()))});
  }
  return references;
}

}  // namespace

Result<MovieMap> mapMovie(ByteView movie, const std::string& file) {
  return Mapper(movie, file).map();
}

bool holdsItemLocations(ByteView bytes, const Atom& meta) {
  const auto among = [&](std::uint64_t begin) {
    return begin <= meta.end() && firstAtom(readAtoms(bytes, begin, meta.end()), code::iloc).has_value();
  };
  return among(meta.bodyOffset()) || among(meta.bodyOffset() + 4);
}

Bytes spliced(ByteView movie, const std::vector<Atom>& containers, std::vector<Splice> splices) {
  std::sort(splices.begin(), splices.end(), [](const Splice& a, const Splice& b) { return a.offset < b.offset; });
  std::vector<std::uint64_t> grown{0};  // modulo 2^64: by all splices before the one of that index
  for (const Splice& splice : splices) grown.push_back(grown.back() + splice.replacement.size() - splice.oldSize);
  const auto grownBefore = [&](std::uint64_t offset) {
    const auto found = std::lower_bound(splices.begin(), splices.end(), offset,
                                        [](const Splice& splice, std::uint64_t at) { return splice.offset < at; });
    return grown[static_cast<std::size_t>(found - splices.begin())];
  };

  Bytes sized(movie.begin(), movie.end());
  for (const Atom& atom : containers) {
    const std::uint64_t size = atom.size + grownBefore(atom.end()) - grownBefore(atom.offset);
    const auto at = static_cast<std::size_t>(atom.offset);
    if (atom.headerSize == 16) write32(sized, at + 8, static_cast<std::uint32_t>(size >> 32));
    write32(sized, atom.headerSize == 16 ? at + 12 : at, static_cast<std::uint32_t>(size));
  }

  Bytes result;
  std::uint64_t done = 0;
  for (const Splice& splice : splices) {
    append(result, part(sized, done, splice.offset));
    append(result, splice.replacement);
    done = splice.offset + splice.oldSize;
  }
  append(result, part(sized, done, sized.size()));
  return result;
}

std::optional<Splice> selfContained(ByteView movie, const Atom& references) {
  const AtomList list = referencesIn(movie, references);
  const bool any =
      std::any_of(list.atoms.begin(), list.atoms.end(), [&](const Atom& atom) { return namesOtherFile(movie, atom); });
  if (!any) return std::nullopt;
  Splice splice{references.bodyOffset() + listHead, references.bodySize() - listHead, {}};
  std::uint64_t done = splice.offset;
  for (const Atom& atom : list.atoms) {
    done = atom.end();
    if (!namesOtherFile(movie, atom)) {
      append(splice.replacement, part(movie, atom.offset, atom.end()));
      continue;
    }
    append32(splice.replacement, 12);
    append32(splice.replacement, atom.type == code::alis || atom.type == code::rsrc ? code::alis : code::url);
    append32(splice.replacement, 1);
  }
  append(splice.replacement, part(movie, done, references.end()));
  return splice;
}

Splice chunkOffsetTable(ByteView movie, const Atom& table, const std::vector<std::uint64_t>& offsets, bool wide) {
  const bool wasWide = table.type == code::co64;
  const std::uint64_t oldEnd = table.bodyOffset() + listHead + offsets.size() * (wasWide ? 8 : 4);
  const ByteView rest = part(movie, oldEnd, table.end());
  Splice splice{table.offset, table.size, {}};
  Bytes& bytes = splice.replacement;
  bytes.reserve(16 + offsets.size() * (wide ? 8 : 4) + rest.size());
  append32(bytes, static_cast<std::uint32_t>(16 + offsets.size() * (wide ? 8 : 4) + rest.size()));
  append32(bytes, wide ? code::co64 : code::stco);
  append(bytes, part(movie, table.bodyOffset(), table.bodyOffset() + 4));
  append32(bytes, static_cast<std::uint32_t>(offsets.size()));
  for (const std::uint64_t offset : offsets)
    wide ? append64(bytes, offset) : append32(bytes, static_cast<std::uint32_t>(offset));
  append(bytes, rest);
  return splice;
}

}  // namespace movie

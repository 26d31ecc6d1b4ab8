#include "movie/copy/MovieMap.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

/// What leads to the places to change: an atom, and what in it.
constexpr std::array<std::pair<FourCC, FourCC>, 8> ways{{{code::moov, code::trak},
                                                         {code::trak, code::mdia},
                                                         {code::mdia, code::minf},
                                                         {code::minf, code::dinf},
                                                         {code::dinf, code::dref},
                                                         {code::minf, code::stbl},
                                                         {code::stbl, code::stco},
                                                         {code::stbl, code::co64}}};

class Mapper {
 public:
  Mapper(ByteView movie, const std::string& file) : bytes_(movie), origin_{file} {}

  Result<MovieMap> map();

 private:
  Result<void> enter(const Atom& atom, const std::string& path, const MovieAtoms& parsed);
  Result<void> refuseOtherOffsets(const std::vector<Atom>& atoms, const std::string& path, int depth = 0) const;

  tl::unexpected<MovieError> refusal(const std::string& path, const Atom& atom, Reason why) const {
    return origin_.failure(path, atom.offset, why);
  }

  ByteView bytes_;
  BytesOrigin origin_;
  MovieMap map_;
};

/// An atom that a place to change can stand in.
Result<void> Mapper::enter(const Atom& atom, const std::string& path, const MovieAtoms& parsed) {
  TRY(const auto parts, wellFormedChildren(bytes_, atom, path, origin_));
  map_.containers.push_back(atom);
  TRY(refuseOtherOffsets(parts.atoms, path));
  std::set<FourCC> taken;
  for (const Atom& part : parts.atoms) {
    if (std::find(ways.begin(), ways.end(), std::pair(atom.type, part.type)) == ways.end()) continue;
    const std::string name = path + '/' + fourCCText(part.type);
    const bool isFirst = taken.insert(part.type == code::co64 ? code::stco : part.type).second;
    if (!isFirst && part.type != code::trak) return refusal(name, part, Reason::SeveralWhereOneCounts);
    if (part.type == code::trak) map_.tracks.push_back({TrackChunks(parsed.tracks[map_.tracks.size()]), {}, {}});
    if (part.type == code::stco || part.type == code::co64) {
      map_.tracks.back().offsets = part;
    } else if (part.type == code::dref) {
      map_.tracks.back().references = part;
      map_.containers.push_back(part);
    } else {
      TRY(enter(part, name, parsed));
    }
  }
  return {};
}

Result<void> Mapper::refuseOtherOffsets(const std::vector<Atom>& atoms, const std::string& path, int depth) const {
  constexpr int deepest = 8;  // no format nests them deeper
  for (const Atom& atom : atoms) {
    if (atom.type == code::saio) return refusal(path + "/saio", atom, Reason::OffsetsImmovable);
    if (atom.type != code::meta && (atom.type != code::udta || depth >= deepest)) continue;
    const std::vector<Atom> inside = possibleChildren(bytes_, atom);
    const bool hasItems =
        std::any_of(inside.begin(), inside.end(), [](const Atom& in) { return in.type == code::iloc; });
    if (atom.type == code::meta && hasItems) return refusal(path + "/meta/iloc", atom, Reason::OffsetsImmovable);
    if (atom.type == code::udta) TRY(refuseOtherOffsets(inside, path + "/udta", depth + 1));
  }
  return {};
}

Result<MovieMap> Mapper::map() {
  const AtomList all = readAtoms(bytes_);
  if (all.atoms.size() != 1 || all.atoms[0].type != code::moov || all.atoms[0].size != bytes_.size()) {
    return origin_.failure("moov", 0, Reason::NotOneMovieAtom);
  }
  const Atom movie = all.atoms[0];
  TRY(const auto parts, wellFormedChildren(bytes_, movie, "moov", origin_));
  if (const auto compressed = firstAtom(parts, code::cmov)) {
    return refusal("moov/cmov", *compressed, Reason::Compressed);
  }
  if (const auto extends = firstAtom(parts, code::mvex)) return refusal("moov/mvex", *extends, Reason::Fragmented);
  TRY(const auto parsed, parseMovieAtom(bytes_, movie, origin_));
  TRY(enter(movie, "moov", parsed));
  return std::move(map_);
}

}  // namespace

Result<MovieMap> mapMovie(ByteView movie, const std::string& file) {
  return Mapper(movie, file).map();
}

std::optional<Splice> selfContained(ByteView movie, const Atom& references) {
  const AtomList list = dataReferencesIn(movie, references);
  const auto isElsewhere = [&](const Atom& atom) { return otherFileOf(movie, atom).has_value(); };
  if (std::none_of(list.atoms.begin(), list.atoms.end(), isElsewhere)) return std::nullopt;
  const std::uint64_t begin = list.atoms.front().offset;
  Splice splice{begin, references.end() - begin, {}};
  for (const Atom& atom : list.atoms) {
    if (!isElsewhere(atom)) {
      append(splice.replacement, between(movie, atom.offset, atom.end()));
      continue;
    }
    const bool isAlias = atom.type == code::alis || atom.type == code::rsrc;
    append(splice.replacement, atomHeader(isAlias ? code::alis : code::url, 4));
    append32(splice.replacement, 1);
  }
  append(splice.replacement, between(movie, list.atoms.back().end(), references.end()));
  return splice;
}

Splice chunkOffsetTable(ByteView movie, const Atom& table, const std::vector<std::uint64_t>& offsets, bool wide) {
  constexpr std::uint64_t head = 8;  // version, flags, count
  const std::uint64_t oldEnd = table.bodyOffset() + head + offsets.size() * (table.type == code::co64 ? 8 : 4);
  const ByteView rest = between(movie, oldEnd, table.end());
  const std::uint64_t size = head + offsets.size() * (wide ? 8 : 4) + rest.size();
  Splice splice{table.offset, table.size, atomHeader(wide ? code::co64 : code::stco, size)};
  Bytes& bytes = splice.replacement;
  bytes.reserve(static_cast<std::size_t>(bytes.size() + size));
  append(bytes, between(movie, table.bodyOffset(), table.bodyOffset() + 4));
  append32(bytes, static_cast<std::uint32_t>(offsets.size()));
  for (const std::uint64_t offset : offsets) {
    if (wide) append32(bytes, static_cast<std::uint32_t>(offset >> 32));
    append32(bytes, static_cast<std::uint32_t>(offset));
  }
  append(bytes, rest);
  return splice;
}

}  // namespace movie

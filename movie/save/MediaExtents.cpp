#include "movie/save/MediaExtents.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/ChunkTables.h"
#include "movie/atoms/MovieAtoms.h"

namespace movie {

namespace {

constexpr std::uint64_t farthestOffset = std::numeric_limits<std::uint64_t>::max();

/// Source: ISO/IEC 14496-12, 8.7.9.
bool addAuxiliary(ByteView body, MediaExtents& media) {
  Fields fields(body);
  const auto version = fields.next(1);
  if ((fields.next(3) & 1) != 0) fields.next(8);
  const auto count = fields.next(4);
  for (std::uint64_t i = 0; i < count && !fields.isCut(); ++i) {
    const auto offset = fields.next(version == 0 ? 4 : 8);
    if (!fields.isCut()) media.add(offset, 1);
  }
  return !fields.isCut();
}

/// Source: ISO/IEC 14496-12, 8.11.3.
bool addItems(ByteView body, MediaExtents& media) {
  Fields fields(body);
  const auto version = fields.next(1);
  fields.next(3);
  if (version > 2) return false;
  const auto sizes = fields.next(2);
  const std::size_t offsetSize = (sizes >> 12) & 15, lengthSize = (sizes >> 8) & 15, baseSize = (sizes >> 4) & 15;
  const std::size_t indexSize = version == 0 ? 0 : sizes & 15;
  if (offsetSize > 8 || lengthSize > 8 || baseSize > 8 || indexSize > 8) return false;
  const auto items = fields.next(version < 2 ? 2 : 4);
  for (std::uint64_t item = 0; item < items && !fields.isCut(); ++item) {
    fields.next(version < 2 ? 2 : 4);
    const auto method = version == 0 ? 0 : fields.next(2) & 15;
    const auto reference = fields.next(2);
    const auto base = fields.next(baseSize);
    const auto claimed = fields.next(2);
    // Extents without a byte of their own are all the same.
    const auto extents = indexSize + offsetSize + lengthSize == 0 ? std::min<std::uint64_t>(claimed, 1) : claimed;
    for (std::uint64_t i = 0; i < extents && !fields.isCut(); ++i) {
      fields.next(indexSize);
      const auto offset = fields.next(offsetSize);
      const auto length = fields.next(lengthSize);
      const bool here = method == 0 && reference == 0;
      if (here && !fields.isCut()) media.add(offset > farthestOffset - base ? farthestOffset : base + offset, length);
    }
  }
  return !fields.isCut();
}

/// What holds saio or iloc in any place the formats have for them, and in some they do not.
bool isContainer(FourCC type) {
  constexpr std::array types{code::moov, code::trak, code::mdia, code::minf, code::stbl, code::udta, code::meta};
  return std::find(types.begin(), types.end(), type) != types.end();
}

/// No format nests them deeper.
constexpr int deepestMeta = 8;

Result<void> addOffsets(ByteView bytes, const Atom& atom, const std::string& file, MediaExtents& media, int depth = 0) {
  const bool saio = atom.type == code::saio;
  if (saio || atom.type == code::iloc) {
    const ByteView body = bodyOf(bytes, atom);
    if (saio ? addAuxiliary(body, media) : addItems(body, media)) return {};
    return failed(file, Reason::OffsetsUnreadable, fourCCText(atom.type), atom.offset);
  }
  if (!isContainer(atom.type) || depth >= deepestMeta) return {};
  for (const Atom& child : possibleChildren(bytes, atom)) {
    TRY(addOffsets(bytes, child, file, media, depth + 1));
  }
  return {};
}

}  // namespace

void MediaExtents::add(std::uint64_t offset, std::uint64_t size) {
  const std::uint64_t length = std::max<std::uint64_t>(size, 1);
  const std::uint64_t end = length > farthestOffset - offset ? farthestOffset : offset + length;
  if (!extents_.empty() && extents_.back().end == offset) {
    extents_.back().end = end;
  } else {
    extents_.push_back({offset, end});
  }
}

void MediaExtents::settle() {
  std::sort(extents_.begin(), extents_.end(), [](const Extent& a, const Extent& b) { return a.begin < b.begin; });
  std::vector<Extent> apart;
  for (const Extent& extent : extents_) {
    if (!apart.empty() && extent.begin <= apart.back().end) {
      apart.back().end = std::max(apart.back().end, extent.end);
    } else {
      apart.push_back(extent);
    }
  }
  extents_ = std::move(apart);
}

bool MediaExtents::overlaps(std::uint64_t begin, std::uint64_t end) const {
  if (begin >= end) return false;
  const auto after = std::upper_bound(extents_.begin(), extents_.end(), begin,
                                      [](std::uint64_t value, const Extent& extent) { return value < extent.end; });
  return after != extents_.end() && after->begin < end;
}

std::uint64_t MediaExtents::end() const {
  return extents_.empty() ? 0 : extents_.back().end;
}

Result<void> addMediaOfMovie(ByteView movieAtom, const std::string& file, MediaExtents& media) {
  const AtomHeader header = readAtomHeader(movieAtom, 0, movieAtom.size());
  if (header.defect != AtomDefect::None) return failed(file, describe(header.defect), "moov");
  TRY(const auto movie, parseMovieAtom(movieAtom, header.atom, {file}));
  for (const TrackAtoms& track : movie.tracks) {
    const TrackChunks chunks(track);
    TRY(inFile(file, chunks.visit([&](const Chunk& chunk) -> Result<void> {
      if (!track.info.isExternal(chunk.description)) media.add(chunk.offset, chunk.size);
      return {};
    })));
  }
  return addOffsets(movieAtom, header.atom, file, media);
}

Result<void> addMediaOfMeta(ByteView meta, const std::string& file, MediaExtents& media) {
  const AtomHeader header = readAtomHeader(meta, 0, meta.size());
  if (header.defect != AtomDefect::None) return failed(file, describe(header.defect), "meta");
  return addOffsets(meta, header.atom, file, media);
}

}  // namespace movie

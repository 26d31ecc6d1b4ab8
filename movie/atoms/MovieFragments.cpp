#include "movie/atoms/MovieFragments.h"

#include <algorithm>
#include <array>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

enum TrackFlag : std::uint32_t {
  hasBaseOffset = 0x1,
  hasDescription = 0x2,
  hasDefaultDuration = 0x8,
  hasDefaultSize = 0x10,
  hasDefaultFlags = 0x20,
  baseIsFragment = 0x20000
};

enum RunFlag : std::uint32_t {
  hasDataOffset = 0x1,
  hasFirstFlags = 0x4,
  hasDuration = 0x100,
  hasSize = 0x200,
  hasFlags = 0x400,
  hasComposition = 0x800
};

bool isSync(std::uint32_t sampleFlags) {
  constexpr std::uint32_t nonSync = 0x10000;
  constexpr std::uint32_t dependsOnOthers = 0x1000000;
  return (sampleFlags & (nonSync | dependsOnOthers)) == 0;
}

/// The tfdt among a traf's children.
std::optional<std::int64_t> decodeStartOf(ByteView bytes, const AtomList& parts) {
  const auto time = firstAtom(parts, code::tfdt);
  if (!time || time->bodySize() < 8) return std::nullopt;
  const ByteView body = bodyOf(bytes, *time);
  if (body[0] != 1) return read32(body, 4);
  if (body.size() < 12) return std::nullopt;
  return static_cast<std::int64_t>(std::min<std::uint64_t>(read64(body, 4), SampleTable::maximumTime));
}

/// The next field of 32 bits if it is there, else another value.
std::uint32_t nextIf(bool there, Fields& fields, std::uint32_t otherwise) {
  return there ? static_cast<std::uint32_t>(fields.next(4)) : otherwise;
}

void appendData(std::vector<FragmentData>& data, const FragmentData& piece) {
  const bool goesOn = !data.empty() && data.back().size == piece.size && data.back().description == piece.description &&
                      data.back().offset + data.back().count * data.back().size == piece.offset;
  if (goesOn)
    data.back().count += piece.count;
  else
    data.push_back(piece);
}

}  // namespace

bool isOfFragments(FourCC type) {
  constexpr std::array types{code::moof, code::styp, code::sidx, code::ssix, code::mfra};
  return std::find(types.begin(), types.end(), type) != types.end();
}

struct FragmentCollector::RunDefaults {
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
  std::size_t description = 0;                ///< 0-based
  std::uint64_t base = 0;                     ///< what data offsets count from
  std::optional<std::int64_t> decodeStart{};  ///< of the next run
};

/// Where the data of the next run lies unless it says otherwise.
struct FragmentCollector::Place {
  std::uint64_t fragment = 0;  ///< start of the moof
  std::uint64_t next = 0;      ///< behind the data of the run before
};

std::optional<SampleLocation> TrackFragments::locationOf(std::uint64_t sample) const {
  const auto after =
      std::upper_bound(data.begin(), data.end(), sample,
                       [](std::uint64_t value, const FragmentData& piece) { return value < piece.firstSample; });
  if (after == data.begin() || sample >= sampleCount) return std::nullopt;
  const FragmentData& piece = *(after - 1);
  return SampleLocation{piece.offset + (sample - piece.firstSample) * piece.size,
                        piece.size,
                        piece.description,
                        {piece.firstSample, piece.count, piece.offset}};
}

DescriptionRun TrackFragments::descriptionRunOf(std::uint64_t sample) const {
  const auto after = std::upper_bound(descriptions.begin(), descriptions.end(), sample,
                                      [](std::uint64_t value, const DescriptionRun& run) { return value < run.first; });
  return after == descriptions.begin() ? DescriptionRun{} : *(after - 1);
}

FragmentCollector::FragmentCollector(const MovieAtoms& movie) : tracks_(movie.tracks.size()) {
  for (std::size_t i = 0; i < movie.tracks.size(); ++i) {
    indexOfId_.emplace(movie.tracks[i].info.id, i);
    descriptionCounts_.push_back(movie.tracks[i].info.sampleDescriptions.size());
  }
  for (const FragmentDefaults& defaults : movie.fragmentDefaults) defaultsOfId_.emplace(defaults.trackId, defaults);
}

Result<void> FragmentCollector::add(const ReadableFile& file, const Atom& fragment) {
  const BytesOrigin origin{file.path(), fragment.offset};
  total_ += fragment.size;
  if (fragment.size > maximumFragmentSize || total_ > maximumFragmentTotal) {
    return origin.failure("moof", 0, Reason::FragmentsTooLarge);
  }
  TRY(const auto bytes, file.read(fragment.offset, static_cast<std::size_t>(fragment.size)));
  if (bytes.size() != fragment.size) return origin.failure("moof", 0, Reason::BecameShorterWhileRead);
  Atom atom = fragment;
  atom.offset = 0;
  TRY(const auto parts, wellFormedChildren(bytes, atom, "moof", origin));
  Place place{fragment.offset, fragment.offset};
  for (const Atom& part : parts.atoms) {
    if (part.type != code::traf) continue;
    TRY(addTrack(bytes, part, origin, place));
  }
  return {};
}

Result<void> FragmentCollector::addTrack(ByteView bytes, const Atom& atom, const BytesOrigin& origin, Place& place) {
  TRY(const auto parts, wellFormedChildren(bytes, atom, "moof/traf", origin));
  const auto header = firstAtom(parts, code::tfhd);
  if (!header || header->bodySize() < 8) return {};
  Fields fields(bodyOf(bytes, *header));
  const auto flags = static_cast<std::uint32_t>(fields.next(4));  // below the version
  const auto id = static_cast<std::uint32_t>(fields.next(4));
  const auto index = indexOfId_.find(id);
  if (index == indexOfId_.end()) return {};

  const auto known = defaultsOfId_.find(id);
  const FragmentDefaults movieDefaults = known == defaultsOfId_.end() ? FragmentDefaults{} : known->second;
  RunDefaults defaults;
  defaults.base = (flags & baseIsFragment) != 0 ? place.fragment : place.next;
  if ((flags & hasBaseOffset) != 0) defaults.base = fields.next(8);
  const std::uint32_t description = nextIf((flags & hasDescription) != 0, fields, movieDefaults.description);
  defaults.description = descriptionIndex(description, descriptionCounts_[index->second]);
  defaults.duration = nextIf((flags & hasDefaultDuration) != 0, fields, movieDefaults.duration);
  defaults.size = nextIf((flags & hasDefaultSize) != 0, fields, movieDefaults.size);
  defaults.flags = nextIf((flags & hasDefaultFlags) != 0, fields, movieDefaults.flags);

  defaults.decodeStart = decodeStartOf(bytes, parts);
  place.next = defaults.base;
  TrackFragments& track = tracks_[index->second];
  for (const Atom& part : parts.atoms) {
    if (part.type != code::trun || part.bodySize() < 8) continue;
    addRun(bodyOf(bytes, part), defaults, place, track);
    defaults.decodeStart.reset();
  }
  return {};
}

void FragmentCollector::addRun(ByteView body, const RunDefaults& defaults, Place& place, TrackFragments& track) {
  Fields fields(body);
  const auto flags = static_cast<std::uint32_t>(fields.next(4));  // below the version
  std::uint64_t left = fields.next(4);
  if ((flags & hasDataOffset) != 0) {
    const auto offset = static_cast<std::int64_t>(static_cast<std::int32_t>(fields.next(4)));
    place.next = defaults.base + static_cast<std::uint64_t>(offset);
  }
  const std::uint32_t firstFlags = nextIf((flags & hasFirstFlags) != 0, fields, defaults.flags);
  std::size_t row = 0;
  for (const std::uint32_t column : {hasDuration, hasSize, hasFlags, hasComposition})
    row += (flags & column) != 0 ? 4 : 0;
  if (row != 0) left = std::min<std::uint64_t>(left, fields.left() / row);

  std::optional<std::int64_t> decodeStart = defaults.decodeStart;
  for (bool first = true; left > 0; first = false) {
    // Without columns all samples but the first are alike, and none is looked at alone.
    const std::uint64_t count = row != 0 || first ? 1 : left;
    const std::uint32_t duration = nextIf((flags & hasDuration) != 0, fields, defaults.duration);
    const std::uint32_t size = nextIf((flags & hasSize) != 0, fields, defaults.size);
    const std::uint32_t sampleFlags = nextIf((flags & hasFlags) != 0, fields, first ? firstFlags : defaults.flags);
    const auto composition = static_cast<std::int32_t>(nextIf((flags & hasComposition) != 0, fields, 0));
    appendRun(track.runs, {count, duration, composition, decodeStart});
    if (isSync(sampleFlags)) appendRange(track.sync, {track.sampleCount, count});
    appendData(track.data, {track.sampleCount, count, place.next, size, defaults.description});
    const bool goesOn = !track.descriptions.empty() && track.descriptions.back().description == defaults.description;
    if (!goesOn) track.descriptions.push_back({track.sampleCount, defaults.description});
    place.next += count * size;
    track.sampleCount += count;
    left -= count;
    decodeStart.reset();
  }
}

}  // namespace movie

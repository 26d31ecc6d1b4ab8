#include "movie/atoms/MovieFragments.h"

#include <algorithm>
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

/// Reads 32-bit fields one after the other; past the end they are 0.
class Fields {
 public:
  Fields(ByteView body, std::size_t at) : body_(body), at_(at) {}
  std::uint32_t next() {
    const std::uint32_t value = left() >= 4 ? read32(body_, at_) : 0;
    at_ += 4;
    return value;
  }
  std::uint32_t nextIf(bool there, std::uint32_t otherwise) { return there ? next() : otherwise; }
  std::size_t left() const { return at_ < body_.size() ? body_.size() - at_ : 0; }

 private:
  ByteView body_;
  std::size_t at_;
};

std::uint32_t flagsOf(ByteView body) {
  return body.size() >= 4 ? read32(body, 0) & 0xFFFFFF : 0;
}

void appendTime(std::vector<TimeRun>& runs, const TimeRun& run) {
  const bool goesOn = !runs.empty() && !run.decodeStart && runs.back().duration == run.duration &&
                      runs.back().compositionOffset == run.compositionOffset;
  if (goesOn)
    runs.back().count += run.count;
  else
    runs.push_back(run);
}

void appendSync(std::vector<SampleRange>& ranges, const SampleRange& range) {
  if (!ranges.empty() && ranges.back().first + ranges.back().count == range.first)
    ranges.back().count += range.count;
  else
    ranges.push_back(range);
}

void appendData(std::vector<FragmentData>& data, const FragmentData& piece) {
  const bool goesOn = !data.empty() && data.back().size == piece.size &&
                      data.back().offset + data.back().count * data.back().size == piece.offset;
  if (goesOn)
    data.back().count += piece.count;
  else
    data.push_back(piece);
}

void appendDescription(std::vector<DescriptionRun>& runs, const DescriptionRun& run) {
  if (runs.empty() || runs.back().description != run.description) runs.push_back(run);
}

}  // namespace

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
  return SampleLocation{piece.offset + (sample - piece.firstSample) * piece.size, piece.size,
                        descriptionRunOf(sample).description};
}

DescriptionRun TrackFragments::descriptionRunOf(std::uint64_t sample) const {
  const auto after = std::upper_bound(descriptions.begin(), descriptions.end(), sample,
                                      [](std::uint64_t value, const DescriptionRun& run) { return value < run.first; });
  return after == descriptions.begin() ? DescriptionRun{} : *(after - 1);
}

FragmentCollector::FragmentCollector(const MovieAtoms& movie, std::string file)
    : file_(std::move(file)), tracks_(movie.tracks.size()) {
  for (std::size_t i = 0; i < movie.tracks.size(); ++i) {
    indexOfId_.emplace(movie.tracks[i].info.id, i);
    descriptionCounts_.push_back(movie.tracks[i].info.sampleDescriptions.size());
  }
  for (const FragmentDefaults& defaults : movie.fragmentDefaults) defaultsOfId_.emplace(defaults.trackId, defaults);
}

Result<void> FragmentCollector::add(const ReadableFile& file, const Atom& fragment) {
  BytesOrigin origin{file_, fragment.offset};
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
  const ByteView body = bodyOf(bytes, *header);
  const std::uint32_t flags = flagsOf(body);
  Fields fields(body, 4);
  const std::uint32_t id = fields.next();
  const auto index = indexOfId_.find(id);
  if (index == indexOfId_.end()) return {};

  const auto known = defaultsOfId_.find(id);
  const FragmentDefaults movieDefaults = known == defaultsOfId_.end() ? FragmentDefaults{} : known->second;
  RunDefaults defaults;
  defaults.base = (flags & baseIsFragment) != 0 ? place.fragment : place.next;
  if ((flags & hasBaseOffset) != 0) {
    const std::uint64_t high = fields.next();
    defaults.base = (high << 32) | fields.next();
  }
  const std::uint32_t description = fields.nextIf((flags & hasDescription) != 0, movieDefaults.description);
  defaults.description = descriptionIndex(description, descriptionCounts_[index->second]);
  defaults.duration = fields.nextIf((flags & hasDefaultDuration) != 0, movieDefaults.duration);
  defaults.size = fields.nextIf((flags & hasDefaultSize) != 0, movieDefaults.size);
  defaults.flags = fields.nextIf((flags & hasDefaultFlags) != 0, movieDefaults.flags);

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
  const std::uint32_t flags = flagsOf(body);
  Fields fields(body, 4);
  std::uint64_t left = fields.next();
  if ((flags & hasDataOffset) != 0) {
    const auto offset = static_cast<std::int64_t>(static_cast<std::int32_t>(fields.next()));
    place.next = defaults.base + static_cast<std::uint64_t>(offset);
  }
  const std::uint32_t firstFlags = fields.nextIf((flags & hasFirstFlags) != 0, defaults.flags);
  std::size_t row = 0;
  for (const std::uint32_t column : {hasDuration, hasSize, hasFlags, hasComposition})
    row += (flags & column) != 0 ? 4 : 0;
  if (row != 0) left = std::min<std::uint64_t>(left, fields.left() / row);

  std::optional<std::int64_t> decodeStart = defaults.decodeStart;
  for (bool first = true; left > 0; first = false) {
    // Without columns all samples but the first are alike, and none is looked at alone.
    const std::uint64_t count = row != 0 || first ? 1 : left;
    const std::uint32_t duration = fields.nextIf((flags & hasDuration) != 0, defaults.duration);
    const std::uint32_t size = fields.nextIf((flags & hasSize) != 0, defaults.size);
    const std::uint32_t sampleFlags = fields.nextIf((flags & hasFlags) != 0, first ? firstFlags : defaults.flags);
    const auto composition = static_cast<std::int32_t>(fields.nextIf((flags & hasComposition) != 0, 0));
    appendTime(track.runs, {count, duration, composition, decodeStart});
    if (isSync(sampleFlags)) appendSync(track.sync, {track.sampleCount, count});
    appendData(track.data, {track.sampleCount, count, place.next, size});
    appendDescription(track.descriptions, {track.sampleCount, defaults.description});
    place.next += count * size;
    track.sampleCount += count;
    left -= count;
    decodeStart.reset();
  }
}

}  // namespace movie

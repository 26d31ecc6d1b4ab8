#include "movie/atoms/MovieAtoms.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::uint64_t longestDuration = std::uint64_t{1} << 62;

/// A duration field; all ones mean that it is not known.
std::uint64_t durationAt(ByteView body, std::size_t at, bool wide) {
  const std::uint64_t value = wide ? read64(body, at) : read32(body, at);
  const bool unknown = wide ? value > longestDuration : value == std::numeric_limits<std::uint32_t>::max();
  return unknown ? 0 : value;
}

/// Time scale and duration of a mvhd or mdhd; a scale of 0 where they cannot be had.
struct Clock {
  std::int32_t scale = 0;
  std::uint64_t duration = 0;
};

Clock clockOf(ByteView body) {
  const bool wide = !body.empty() && body[0] == 1;
  const std::size_t scaleAt = wide ? 20 : 12;
  if (body.size() < scaleAt + 4 + (wide ? 8 : 4)) return {};
  const std::uint32_t scale = read32(body, scaleAt);
  if (scale > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) return {};
  return {static_cast<std::int32_t>(scale), durationAt(body, scaleAt + 4, wide)};
}

void readTrackHeader(ByteView body, TrackInfo& info) {
  const bool wide = !body.empty() && body[0] == 1;
  const std::size_t idAt = wide ? 20 : 12;
  const std::size_t durationStart = idAt + 8;
  if (body.size() < durationStart + (wide ? 8 : 4)) return;
  info.enabled = (body[3] & 1) != 0;
  info.id = read32(body, idAt);
  info.duration = durationAt(body, durationStart, wide);
  const std::size_t matrixAt = wide ? 52 : 40;
  if (body.size() < matrixAt + 36 + 8) return;
  for (std::size_t i = 0; i < info.matrix.size(); ++i) {
    info.matrix[i] = static_cast<std::int32_t>(read32(body, matrixAt + 4 * i));
  }
  info.width = read32(body, matrixAt + 36);
  info.height = read32(body, matrixAt + 40);
}

std::vector<EditListEntry> readEditList(ByteView body) {
  constexpr std::int64_t emptyEdit = -1;
  constexpr auto latestTime = static_cast<std::int64_t>(longestDuration);
  std::vector<EditListEntry> edits;
  if (body.size() < 8) return edits;
  const bool wide = body[0] == 1;
  const std::size_t row = wide ? 20 : 12;
  const std::size_t count = std::min<std::size_t>(read32(body, 4), (body.size() - 8) / row);
  edits.reserve(count);
  for (std::size_t at = 8; edits.size() < count; at += row) {
    const std::int64_t time = wide ? static_cast<std::int64_t>(read64(body, at + 8))
                                   : static_cast<std::int64_t>(static_cast<std::int32_t>(read32(body, at + 4)));
    edits.push_back({durationAt(body, at, wide), std::clamp(time, emptyEdit, latestTime),
                     static_cast<std::int32_t>(read32(body, at + (wide ? 16 : 8)))});
  }
  return edits;
}

class Parser {
 public:
  Parser(ByteView bytes, const BytesOrigin& origin) : bytes_(bytes), origin_(origin) {}

  Result<MovieAtoms> movie(const Atom& atom);

 private:
  using Status = Result<void>;

  Result<AtomList> children(const Atom& atom, const std::string& path) const {
    return wellFormedChildren(bytes_, atom, path, origin_);
  }
  ByteView body(const Atom& atom) const { return bodyOf(bytes_, atom); }

  Status movieHeader(const AtomList& parts, const Atom& atom, MovieAtoms& movie) const;
  Status track(const Atom& atom, TrackAtoms& track) const;
  Status media(const Atom& atom, TrackAtoms& track) const;
  Status mediaInformation(const Atom& atom, const std::string& path, TrackAtoms& track) const;
  Status sampleDescriptions(const Atom& atom, const std::string& path, TrackInfo& info) const;
  Status dataReferences(const Atom& atom, const std::string& path, TrackAtoms& track) const;
  Status extends(const Atom& atom, MovieAtoms& movie) const;

  ByteView bytes_;
  const BytesOrigin& origin_;
};

Result<MovieAtoms> Parser::movie(const Atom& atom) {
  TRY(const auto parts, children(atom, "moov"));
  MovieAtoms movie;
  TRY(movieHeader(parts, atom, movie));
  for (const Atom& part : parts.atoms) {
    if (part.type == code::trak) {
      if (movie.tracks.size() == maximumTrackCount) {
        return origin_.failure("moov/trak", part.offset, Reason::TooManyTracks);
      }
      TRY(track(part, movie.tracks.emplace_back()));
    } else if (part.type == code::mvex) {
      TRY(extends(part, movie));
    }
  }
  for (TrackAtoms& track : movie.tracks) {
    if (track.info.mediaTimeScale <= 0) track.info.mediaTimeScale = movie.timeScale;
  }
  return movie;
}

Parser::Status Parser::movieHeader(const AtomList& parts, const Atom& atom, MovieAtoms& movie) const {
  const auto header = firstAtom(parts, code::mvhd);
  if (!header) {
    const bool reference = firstAtom(parts, code::rmra).has_value();
    return origin_.failure("moov", atom.offset, reference ? Reason::ReferenceMovie : Reason::NoMovieHeader);
  }
  const Clock clock = clockOf(body(*header));
  if (clock.scale <= 0) return origin_.failure("moov/mvhd", header->offset, Reason::NoTimeScale);
  movie.timeScale = clock.scale;
  movie.duration = clock.duration;
  return {};
}

Parser::Status Parser::track(const Atom& atom, TrackAtoms& track) const {
  TRY(const auto parts, children(atom, "moov/trak"));
  if (const auto header = firstAtom(parts, code::tkhd)) readTrackHeader(body(*header), track.info);
  if (const auto list = firstAtom(parts, code::edts)) {
    TRY(const auto inside, children(*list, "moov/trak/edts"));
    if (const auto edits = firstAtom(inside, code::elst)) track.info.edits = readEditList(body(*edits));
  }
  const auto mediaAtom = firstAtom(parts, code::mdia);
  return mediaAtom ? media(*mediaAtom, track) : Status{};
}

Parser::Status Parser::media(const Atom& atom, TrackAtoms& track) const {
  const std::string path = "moov/trak/mdia";
  TRY(const auto parts, children(atom, path));
  if (const auto header = firstAtom(parts, code::mdhd)) {
    const Clock clock = clockOf(body(*header));
    track.info.mediaTimeScale = clock.scale;
    track.info.mediaDuration = clock.duration;
  }
  const auto handler = firstAtom(parts, code::hdlr);
  if (handler && handler->bodySize() >= 12) track.info.mediaType = read32(body(*handler), 8);
  const auto information = firstAtom(parts, code::minf);
  return information ? mediaInformation(*information, path + "/minf", track) : Status{};
}

Parser::Status Parser::mediaInformation(const Atom& atom, const std::string& path, TrackAtoms& track) const {
  TRY(const auto parts, children(atom, path));
  if (const auto tables = firstAtom(parts, code::stbl)) {
    TRY(const auto tableAtoms, children(*tables, path + "/stbl"));
    track.tables = SampleTableAtoms::among(bytes_, tableAtoms);
    track.info.sampleCount = track.tables.sampleCount();
    if (const auto list = firstAtom(tableAtoms, code::stsd)) {
      TRY(sampleDescriptions(*list, path + "/stbl/stsd", track.info));
    }
    track.tables.descriptionCount = track.info.sampleDescriptions.size();
  }
  const auto data = firstAtom(parts, code::dinf);
  return data ? dataReferences(*data, path + "/dinf", track) : Status{};
}

Parser::Status Parser::sampleDescriptions(const Atom& atom, const std::string& path, TrackInfo& info) const {
  constexpr std::uint64_t head = 8;
  if (atom.bodySize() < head) return {};
  const std::uint32_t count = read32(body(atom), 4);
  const AtomList entries = readAtoms(bytes_, atom.bodyOffset() + head, atom.end());
  if (entries.atoms.empty() && entries.malformed() && count > 0) {
    return origin_.failure(path + "/" + fourCCText(entries.defectType), entries.defectOffset, describe(entries.defect));
  }
  for (const Atom& entry : entries.atoms) {
    if (info.sampleDescriptions.size() == count) break;
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(entry.offset);
    info.sampleDescriptions.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(entry.size));
  }
  return {};
}

Parser::Status Parser::dataReferences(const Atom& atom, const std::string& path, TrackAtoms& track) const {
  TRY(const auto parts, children(atom, path));
  const auto list = firstAtom(parts, code::dref);
  if (!list) return {};
  const AtomList references = dataReferencesIn(bytes_, *list);
  for (const Bytes& description : track.info.sampleDescriptions) {
    const std::size_t index = description.size() >= 16 ? read16(description, 14) : 0;  // 1-based
    const bool named = index != 0 && index <= references.atoms.size();
    track.elsewhere.push_back(named ? otherFileOf(bytes_, references.atoms[index - 1]) : std::nullopt);
    track.info.external.push_back(track.elsewhere.back().has_value());
  }
  return {};
}

Parser::Status Parser::extends(const Atom& atom, MovieAtoms& movie) const {
  TRY(const auto parts, children(atom, "moov/mvex"));
  movie.fragmented = true;
  for (const Atom& part : parts.atoms) {
    if (part.type != code::trex || part.bodySize() < 24) continue;
    const ByteView fields = body(part);
    movie.fragmentDefaults.push_back(
        {read32(fields, 4), read32(fields, 12), read32(fields, 16), read32(fields, 20), read32(fields, 8)});
  }
  return {};
}

}  // namespace

tl::unexpected<MovieError> BytesOrigin::failure(const std::string& atomPath, std::uint64_t at, Clause why) const {
  return failed(file, std::move(why), atomPath, inflated ? offset : offset + at);
}

Result<AtomList> wellFormedChildren(ByteView bytes, const Atom& atom, const std::string& path,
                                    const BytesOrigin& origin) {
  AtomList list = readChildren(bytes, atom);
  if (!list.malformed()) return list;
  return origin.failure(path + "/" + fourCCText(list.defectType), list.defectOffset, describe(list.defect));
}

AtomList dataReferencesIn(ByteView bytes, const Atom& list) {
  constexpr std::uint64_t head = 8;  // version, flags, count
  return list.bodySize() < head ? AtomList{} : readAtoms(bytes, list.bodyOffset() + head, list.end());
}

std::optional<DataReference> otherFileOf(ByteView bytes, const Atom& reference) {
  constexpr std::uint32_t selfContained = 1;
  const ByteView body = bodyOf(bytes, reference);
  // A reference with nothing behind version and flags names no other file, whatever its flag says.
  if (body.size() <= 4 || (read32(body, 0) & selfContained) != 0) return std::nullopt;
  return DataReference{reference.type, body.subspan(4)};
}

Result<MovieAtoms> parseMovieAtom(ByteView bytes, const Atom& movie, const BytesOrigin& origin) {
  return Parser(bytes, origin).movie(movie);
}

}  // namespace movie

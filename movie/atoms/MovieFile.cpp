#include "movie/atoms/MovieFile.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>

#include <zlib.h>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/FileAtoms.h"
#include "movie/atoms/MovieFragments.h"

namespace movie {

namespace {

/// A track's tables as they lie in the movie atom and in its fragments, and what is made of them once.
struct LazyTrack {
  SampleTableAtoms atoms;
  TrackFragments more;
  std::once_flag built;
  SampleTable table;

  SampleTable build() const {
    std::vector<TimeRun> runs = atoms.timeRuns();
    auto sync = atoms.syncSamples();
    if (more.sampleCount == 0) return SampleTable(runs, std::move(sync));
    const std::uint64_t before = atoms.sampleCount();
    if (!sync) sync.emplace(1, SampleRange{0, before});
    for (const SampleRange& range : more.sync) sync->push_back({before + range.first, range.count});
    runs.insert(runs.end(), more.runs.begin(), more.runs.end());
    return SampleTable(runs, std::move(sync));
  }

  std::optional<SampleLocation> locate(std::uint64_t sample) const {
    const std::uint64_t before = atoms.sampleCount();
    if (sample < before) return atoms.locationOf(sample);
    auto location = more.locationOf(sample - before);
    if (location) location->neighbours.first += before;
    return location;
  }

  DescriptionRun descriptionRunOf(std::uint64_t sample) const {
    const std::uint64_t before = atoms.sampleCount();
    if (sample < before) return atoms.descriptionRunOf(sample).value_or(DescriptionRun{});
    if (more.sampleCount == 0) return {};
    DescriptionRun run = more.descriptionRunOf(sample - before);
    run.first += before;
    if (run.first > before || before == 0) return run;
    const DescriptionRun earlier = descriptionRunOf(before - 1);
    return earlier.description == run.description ? earlier : run;
  }
};

struct TopLevel {
  Atom movie;
  FourCC majorBrand = 0;
};

constexpr std::uint64_t longestShown = std::uint64_t{1} << 62;

/// Why a walk that came to its end found none.
tl::unexpected<MovieError> noMovieAtom(const ReadableFile& file, const FileAtoms& walk) {
  const Atom& last = walk.defective();
  switch (walk.defect()) {
    case AtomDefect::TooMany:
      return failed(file.path(), Reason::NoMovieAmongFirst);
    case AtomDefect::SizeBelowHeader:
    case AtomDefect::ReachesPastParent:
      if (last.type == code::moov) {
        const bool cut = walk.defect() == AtomDefect::ReachesPastParent;
        return failed(file.path(), cut ? Reason::MoviePastEnd : describe(walk.defect()), "moov", last.offset);
      }
      if (last.offset == 0) return failed(file.path(), Reason::NotMovie);
      return failed(file.path(), Reason::NoMovieBeforeDamage, fourCCText(last.type), last.offset);
    default:
      return failed(file.path(), Reason::NoMovieAtom);
  }
}

Result<TopLevel> findMovie(const ReadableFile& file) {
  TopLevel found;
  FileAtoms walk(file);
  while (const auto atom = walk.next()) {
    if (atom->type == code::moov) {
      found.movie = *atom;
      return found;
    }
    if (atom->type == code::ftyp && found.majorBrand == 0 && atom->bodySize() >= 4) {
      TRY(const auto brand, file.read(atom->bodyOffset(), 4));
      if (brand.size() == 4) found.majorBrand = read32(brand, 0);
    }
  }
  TRY(walk.readStatus());
  return noMovieAtom(file, walk);
}

/// The whole movie atom. Its children are walked first, by their headers, so that a movie atom whose size has grown
/// over the media data is refused before it is loaded.
Result<Bytes> loadMovieAtom(const ReadableFile& file, const Atom& movie) {
  const auto failure = [&](Reason why) { return failed(file.path(), why, "moov", movie.offset); };
  if (movie.size > MovieFile::maximumMovieAtomSize) return failure(Reason::MovieTooLarge);
  FileAtoms children(file, movie.bodyOffset(), movie.end());
  for (std::size_t count = 0; count <= maximumAtomCount; ++count) {
    const auto child = children.next();
    if (!child) break;
    for (const FourCC topLevel : {code::mdat, code::moof, code::ftyp, code::moov}) {
      if (child->type == topLevel) return failure(Reason::MovieOverOthers);
    }
  }
  TRY(children.readStatus());
  auto bytes = file.read(movie.offset, static_cast<std::size_t>(movie.size));
  if (bytes && bytes->size() != movie.size) return failure(Reason::BecameShorterWhileRead);
  return bytes;
}

/// The movie atom, header included, that a 'cmov' atom holds compressed. `compressed` was read from `bytes`. Source:
/// QTFF "Compressed movie resources".
tl::expected<Bytes, Clause> inflated(ByteView bytes, const Atom& compressed) {
  const auto failure = [](Clause why) { return tl::make_unexpected(std::move(why)); };
  const AtomList parts = readChildren(bytes, compressed);
  const auto method = firstAtom(parts, code::dcom);
  const auto data = firstAtom(parts, code::cmvd);
  if (!method || method->bodySize() < 4 || !data || data->bodySize() < 4) return failure(Reason::CompressedIncomplete);
  const FourCC algorithm = read32(bodyOf(bytes, *method), 0);
  if (algorithm != code::zlib) return failure({Reason::UnknownCompression, {verbatim(fourCCText(algorithm))}});
  const ByteView body = bodyOf(bytes, *data);
  uLongf size = read32(body, 0);
  if (size > maximumInflatedSize) return failure(Reason::CompressedTooLarge);
  Bytes movie(size);
  if (uncompress(movie.data(), &size, body.data() + 4, static_cast<uLong>(body.size() - 4)) != Z_OK) {
    return failure(Reason::CompressedDamaged);
  }
  movie.resize(size);
  return movie;
}

/// Where the movie atom stands in `bytes`, which are replaced by the inflated ones when they hold a compressed movie.
Result<Atom> inflateIfCompressed(Bytes& bytes, const Atom& outer, BytesOrigin& origin) {
  const auto compressed = firstAtom(readChildren(bytes, outer), code::cmov);
  if (!compressed) return outer;
  auto movie = inflated(bytes, *compressed);
  if (!movie) return origin.failure("moov/cmov", compressed->offset, movie.error());
  bytes = std::move(*movie);
  origin.inflated = true;
  const auto inner = firstAtom(readAtoms(bytes), code::moov);
  if (!inner) return origin.failure("moov/cmov", 0, Reason::CompressedWithoutMovie);
  return *inner;
}

std::uint64_t rescaled(std::uint64_t value, std::int32_t from, std::int32_t to) {
  const auto source = static_cast<std::uint64_t>(from);
  const auto target = static_cast<std::uint64_t>(to);
  if (value / source >= longestShown / target) return longestShown;
  return value / source * target + value % source * target / source;
}

}  // namespace

struct MovieFile::Lazy {
  Bytes movieAtom;  ///< inflated where it was compressed
  Atom whole;       ///< where the movie atom stands in those bytes
  std::deque<LazyTrack> tracks;
};

MovieFile::MovieFile(Private, ReadableFile file) : file_(std::move(file)) {}
MovieFile::~MovieFile() = default;

Result<std::shared_ptr<const MovieFile>> MovieFile::open(const std::string& path) {
  TRY(auto file, ReadableFile::open(path));
  if (file.size() == 0) return failed(path, Reason::EmptyFile);
  auto movie = std::make_shared<MovieFile>(Private{}, std::move(file));
  TRY(movie->load());
  return movie;
}

Result<void> MovieFile::load() {
  TRY(const auto top, findMovie(file_));
  movieAtomOffset_ = top.movie.offset;
  TRY(auto bytes, loadMovieAtom(file_, top.movie));
  majorBrand_ = top.majorBrand;
  lazy_ = std::make_unique<Lazy>();
  lazy_->movieAtom = std::move(bytes);

  BytesOrigin origin{path(), top.movie.offset};
  Atom outer = top.movie;
  outer.offset = 0;
  TRY(const auto atom, inflateIfCompressed(lazy_->movieAtom, outer, origin));
  lazy_->whole = atom;
  compressed_ = origin.inflated;

  TRY(auto movie, parseMovieAtom(lazy_->movieAtom, atom, origin));
  timeScale_ = movie.timeScale;
  duration_ = movie.duration;
  fragmented_ = movie.fragmented;
  for (const TrackAtoms& track : movie.tracks) lazy_->tracks.emplace_back().atoms = track.tables;
  if (fragmented_) {
    TRY(loadFragments(movie, top.movie.end()));
  }
  for (TrackAtoms& track : movie.tracks) tracks_.push_back(std::move(track.info));
  settleDurations();
  return {};
}

ByteView MovieFile::movieAtom() const {
  return ByteView(lazy_->movieAtom)
      .subspan(static_cast<std::size_t>(lazy_->whole.offset), static_cast<std::size_t>(lazy_->whole.size));
}

Result<void> MovieFile::loadFragments(const MovieAtoms& movie, std::uint64_t begin) {
  FragmentCollector collector(movie);
  FileAtoms walk(file_, begin, file_.size());
  while (const auto atom = walk.next()) {
    if (atom->type != code::moof) continue;
    TRY(collector.add(file_, *atom));
  }
  TRY(walk.readStatus());
  if (walk.defect() == AtomDefect::TooMany) return failed(path(), Reason::TooManyAtoms);
  std::vector<TrackFragments> fragments = collector.take();
  for (std::size_t i = 0; i < fragments.size(); ++i) lazy_->tracks[i].more = std::move(fragments[i]);
  return {};
}

void MovieFile::settleDurations() {
  for (std::size_t i = 0; i < tracks_.size(); ++i) {
    TrackInfo& track = tracks_[i];
    track.sampleCount += lazy_->tracks[i].more.sampleCount;
    if (fragmented_ || track.mediaDuration == 0) {
      const auto ofSamples = static_cast<std::uint64_t>(sampleTable(i).duration());
      track.mediaDuration = std::max(track.mediaDuration, ofSamples);
    }
    if (!track.edits.empty() && track.edits.back().segmentDuration == 0 && track.edits.back().mediaTime >= 0) {
      const auto from = static_cast<std::uint64_t>(track.edits.back().mediaTime);
      const std::uint64_t rest = track.mediaDuration - std::min(from, track.mediaDuration);
      track.edits.back().segmentDuration = rescaled(rest, track.mediaTimeScale, timeScale_);
    }
    if (fragmented_ || track.duration == 0) {
      std::uint64_t shown = track.edits.empty() ? rescaled(track.mediaDuration, track.mediaTimeScale, timeScale_) : 0;
      for (const EditListEntry& edit : track.edits) shown = std::min(shown + edit.segmentDuration, longestShown);
      track.duration = std::max(track.duration, shown);
    }
  }
  if (!fragmented_ && duration_ != 0) return;
  for (const TrackInfo& track : tracks_) duration_ = std::max(duration_, track.duration);
}

const SampleTable& MovieFile::sampleTable(std::size_t track) const {
  static const SampleTable empty;
  if (track >= tracks_.size()) return empty;
  LazyTrack& lazy = lazy_->tracks[track];
  std::call_once(lazy.built, [&lazy] { lazy.table = lazy.build(); });
  return lazy.table;
}

DescriptionRun MovieFile::descriptionRunOf(std::size_t track, std::uint64_t sample) const {
  return track < tracks_.size() ? lazy_->tracks[track].descriptionRunOf(sample) : DescriptionRun{};
}

Result<SampleLocation> MovieFile::locateSample(std::size_t track, std::uint64_t sample) const {
  const auto failure = [&](Reason why) { return failed(path(), why); };
  if (track >= tracks_.size()) return failure(Reason::NoSuchTrack);
  const auto place = lazy_->tracks[track].locate(sample);
  if (!place) return failure(Reason::SampleNotFound);
  if (tracks_[track].isExternal(place->description)) return failure(Reason::MediaElsewhere);
  if (place->offset > size() || place->size > size() - place->offset) return failure(Reason::SamplePastEnd);
  return *place;
}

Result<Bytes> MovieFile::readSample(std::size_t track, std::uint64_t sample, std::size_t limit) const {
  TRY(const auto place, locateSample(track, sample));
  return file_.read(place.offset, static_cast<std::size_t>(std::min<std::uint64_t>(place.size, limit)));
}

}  // namespace movie

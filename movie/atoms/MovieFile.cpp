#include "movie/atoms/MovieFile.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>

#include <sys/stat.h>

#include "movie/atoms/CompressedMovie.h"
#include "movie/atoms/FileAtoms.h"
#include "movie/atoms/MovieFragments.h"

namespace movie {

namespace {

/// One track's table, built once.
struct LazyTable {
  std::once_flag built;
  SampleTable table;
};

struct TopLevel {
  Atom movie;
  FourCC majorBrand = 0;
};

constexpr std::uint64_t longestDuration = std::uint64_t{1} << 62;

MovieError noMovieAtom(const ReadableFile& file, const FileAtoms& walk) {
  if (walk.readError()) return *walk.readError();
  const Atom& last = walk.defective();
  switch (walk.defect()) {
    case AtomDefect::TooMany:
      return {file.path(), {}, 0, "there is no movie atom among its first atoms"};
    case AtomDefect::SizeBelowHeader:
    case AtomDefect::ReachesPastParent:
      if (last.type == fourCC("moov")) {
        const bool cut = walk.defect() == AtomDefect::ReachesPastParent;
        return {file.path(), "moov", last.offset,
                cut ? "the movie atom reaches past the end of the file" : describe(walk.defect())};
      }
      if (last.offset == 0) return {file.path(), {}, 0, "it is not a movie"};
      return {file.path(), fourCCText(last.type), last.offset,
              "there is no movie atom; the walk over the atoms ends at a damaged one, or the file was cut"};
    default:
      return {file.path(), {}, 0, "there is no movie atom"};
  }
}

Result<TopLevel> findMovie(const ReadableFile& file) {
  TopLevel found;
  FileAtoms walk(file);
  while (const auto atom = walk.next()) {
    if (atom->type == fourCC("moov")) {
      found.movie = *atom;
      return found;
    }
    if (atom->type == fourCC("ftyp") && found.majorBrand == 0 && atom->bodySize() >= 4) {
      const auto brand = file.read(atom->bodyOffset(), 4);
      if (!brand) return tl::make_unexpected(brand.error());
      if (brand->size() == 4) found.majorBrand = read32(*brand, 0);
    }
  }
  return tl::make_unexpected(noMovieAtom(file, walk));
}

/// The whole movie atom. Its children are walked first, by their headers, so that a movie atom whose size has grown
/// over the media data is refused before it is loaded.
Result<Bytes> loadMovieAtom(const ReadableFile& file, const Atom& movie) {
  const auto failure = [&](std::string reason) {
    return tl::make_unexpected(MovieError{file.path(), "moov", movie.offset, std::move(reason)});
  };
  if (movie.size > MovieFile::maximumMovieAtomSize) return failure("the movie atom is too large");
  FileAtoms children(file, movie.bodyOffset(), movie.end());
  for (std::size_t count = 0; count <= maximumAtomCount; ++count) {
    const auto child = children.next();
    if (!child) break;
    for (const FourCC topLevel : {fourCC("mdat"), fourCC("moof"), fourCC("ftyp"), fourCC("moov")}) {
      if (child->type == topLevel) return failure("the movie atom reaches over other atoms of the file");
    }
  }
  if (children.readError()) return tl::make_unexpected(*children.readError());
  auto bytes = file.read(movie.offset, static_cast<std::size_t>(movie.size));
  if (bytes && bytes->size() != movie.size) return failure("the file became shorter while it was read");
  return bytes;
}

/// Where the movie atom stands in `bytes`, which are replaced by the inflated ones when they hold a compressed movie.
Result<Atom> inflateIfCompressed(Bytes& bytes, const Atom& movie, BytesOrigin& origin) {
  const auto compressed = firstAtom(readChildren(bytes, movie), fourCC("cmov"));
  if (!compressed) return movie;
  auto inflated = inflateMovie(bytes, *compressed);
  if (!inflated) return tl::make_unexpected(origin.error("moov/cmov", compressed->offset, inflated.error().reason));
  bytes = std::move(*inflated);
  origin.inflated = true;
  const auto inner = firstAtom(readAtoms(bytes), fourCC("moov"));
  if (!inner) return tl::make_unexpected(origin.error("moov/cmov", 0, "no movie atom comes out of it"));
  return *inner;
}

std::uint64_t rescaled(std::uint64_t value, std::int32_t from, std::int32_t to) {
  const auto source = static_cast<std::uint64_t>(from);
  const auto target = static_cast<std::uint64_t>(to);
  if (value / source >= longestDuration / target) return longestDuration;
  return value / source * target + value % source * target / source;
}

}  // namespace

struct MovieFile::Lazy {
  Bytes movieAtom;  ///< inflated where it was compressed
  Atom whole;       ///< where the movie atom stands in those bytes
  std::vector<SampleTableAtoms> atoms;
  std::vector<TrackFragments> fragments;  ///< empty, or one per track
  std::deque<LazyTable> tables;

  SampleTable build(std::size_t track) const {
    std::vector<TimeRun> runs = atoms[track].timeRuns();
    auto sync = atoms[track].syncSamples();
    if (track >= fragments.size() || fragments[track].sampleCount == 0) return SampleTable(runs, std::move(sync));
    const TrackFragments& more = fragments[track];
    const std::uint64_t before = atoms[track].sampleCount();
    if (!sync) sync.emplace(1, SampleRange{0, before});
    for (const SampleRange& range : more.sync) sync->push_back({before + range.first, range.count});
    runs.insert(runs.end(), more.runs.begin(), more.runs.end());
    return SampleTable(runs, std::move(sync));
  }

  std::optional<SampleLocation> locate(std::size_t track, std::uint64_t sample) const {
    const std::uint64_t before = atoms[track].sampleCount();
    if (sample < before) return atoms[track].locationOf(sample);
    return track < fragments.size() ? fragments[track].locationOf(sample - before) : std::nullopt;
  }

  DescriptionRun descriptionRunOf(std::size_t track, std::uint64_t sample) const {
    const std::uint64_t before = atoms[track].sampleCount();
    if (sample < before) return atoms[track].descriptionRunOf(sample).value_or(DescriptionRun{});
    if (track >= fragments.size()) return {};
    DescriptionRun run = fragments[track].descriptionRunOf(sample - before);
    run.first += before;
    if (run.first > before || before == 0) return run;
    const DescriptionRun earlier = descriptionRunOf(track, before - 1);
    return earlier.description == run.description ? earlier : run;
  }
};

MovieFile::MovieFile(Private, ReadableFile file) : file_(std::move(file)) {}
MovieFile::~MovieFile() = default;

Result<std::shared_ptr<const MovieFile>> MovieFile::open(const std::string& path) {
  auto file = ReadableFile::open(path);
  if (!file) return tl::make_unexpected(file.error());
  if (file->size() == 0) return tl::make_unexpected(MovieError{path, {}, 0, "the file is empty"});
  auto movie = std::make_shared<MovieFile>(Private{}, std::move(*file));
  if (auto status = movie->load(); !status) return tl::make_unexpected(status.error());
  return movie;
}

Result<void> MovieFile::load() {
  struct stat onDisk {};
  if (::fstat(descriptor(), &onDisk) != 0) return tl::make_unexpected(MovieError{path(), {}, 0, "it has no status"});
  stamp_ = {onDisk.st_dev, onDisk.st_ino, static_cast<std::uint64_t>(onDisk.st_size), onDisk.st_mtim.tv_sec,
            onDisk.st_mtim.tv_nsec};
  const auto top = findMovie(file_);
  if (!top) return tl::make_unexpected(top.error());
  movieAtomOffset_ = top->movie.offset;
  auto bytes = loadMovieAtom(file_, top->movie);
  if (!bytes) return tl::make_unexpected(bytes.error());
  majorBrand_ = top->majorBrand;
  lazy_ = std::make_unique<Lazy>();
  lazy_->movieAtom = std::move(*bytes);

  BytesOrigin origin{path(), top->movie.offset};
  Atom outer = top->movie;
  outer.offset = 0;
  const auto atom = inflateIfCompressed(lazy_->movieAtom, outer, origin);
  if (!atom) return tl::make_unexpected(atom.error());
  lazy_->whole = *atom;
  compressed_ = origin.inflated;

  auto movie = parseMovieAtom(lazy_->movieAtom, *atom, origin);
  if (!movie) return tl::make_unexpected(movie.error());
  timeScale_ = movie->timeScale;
  duration_ = movie->duration;
  fragmented_ = movie->fragmented;
  if (fragmented_) {
    if (auto status = loadFragments(*movie, top->movie.end()); !status) return status;
  }
  for (TrackAtoms& track : movie->tracks) {
    tracks_.push_back(std::move(track.info));
    lazy_->atoms.push_back(track.tables);
  }
  lazy_->tables.resize(tracks_.size());
  settleDurations();
  return {};
}

ByteView MovieFile::movieAtom() const {
  return ByteView(lazy_->movieAtom)
      .subspan(static_cast<std::size_t>(lazy_->whole.offset), static_cast<std::size_t>(lazy_->whole.size));
}

Result<void> MovieFile::loadFragments(const MovieAtoms& movie, std::uint64_t begin) {
  FragmentCollector collector(movie, path());
  FileAtoms walk(file_, begin, file_.size());
  while (const auto atom = walk.next()) {
    if (atom->type != fourCC("moof")) continue;
    if (auto status = collector.add(file_, *atom); !status) return status;
  }
  if (walk.readError()) return tl::make_unexpected(*walk.readError());
  if (walk.defect() == AtomDefect::TooMany) {
    return tl::make_unexpected(MovieError{path(), {}, 0, "there are too many atoms in the file"});
  }
  lazy_->fragments = collector.take();
  return {};
}

void MovieFile::settleDurations() {
  for (std::size_t i = 0; i < tracks_.size(); ++i) {
    TrackInfo& track = tracks_[i];
    if (i < lazy_->fragments.size()) track.sampleCount += lazy_->fragments[i].sampleCount;
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
      for (const EditListEntry& edit : track.edits) shown = std::min(shown + edit.segmentDuration, longestDuration);
      track.duration = std::max(track.duration, shown);
    }
  }
  if (!fragmented_ && duration_ != 0) return;
  for (const TrackInfo& track : tracks_) duration_ = std::max(duration_, track.duration);
}

const SampleTable& MovieFile::sampleTable(std::size_t track) const {
  static const SampleTable empty;
  if (track >= tracks_.size()) return empty;
  LazyTable& lazy = lazy_->tables[track];
  std::call_once(lazy.built, [&] { lazy.table = lazy_->build(track); });
  return lazy.table;
}

DescriptionRun MovieFile::descriptionRunOf(std::size_t track, std::uint64_t sample) const {
  return track < tracks_.size() ? lazy_->descriptionRunOf(track, sample) : DescriptionRun{};
}

Result<SampleLocation> MovieFile::locateSample(std::size_t track, std::uint64_t sample) const {
  const auto failure = [&](std::string reason) {
    return tl::make_unexpected(MovieError{path(), {}, 0, std::move(reason)});
  };
  if (track >= tracks_.size()) return failure("there is no such track");
  const auto place = lazy_->locate(track, sample);
  if (!place) return failure("the sample tables do not lead to the sample");
  if (tracks_[track].isExternal(place->description)) return failure("the track's media is in another file");
  if (place->offset > size() || place->size > size() - place->offset) {
    return failure("the sample lies past the end of the file");
  }
  return *place;
}

Result<Bytes> MovieFile::readSample(std::size_t track, std::uint64_t sample, std::size_t limit) const {
  const auto place = locateSample(track, sample);
  if (!place) return tl::make_unexpected(place.error());
  return file_.read(place->offset, static_cast<std::size_t>(std::min<std::uint64_t>(place->size, limit)));
}

}  // namespace movie

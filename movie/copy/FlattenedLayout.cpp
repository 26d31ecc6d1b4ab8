#include "movie/copy/FlattenedLayout.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/FileAtoms.h"
#include "movie/atoms/MovieFragments.h"
#include "movie/copy/ExternalMedia.h"

namespace movie {

namespace {

constexpr std::uint64_t largestNarrow = std::numeric_limits<std::uint32_t>::max();

/// A top-level atom of the movie's file.
struct TopAtom {
  Atom atom;
  bool holdsChunks = false;
  std::uint64_t newBody = 0;  ///< where its body goes
};

/// A run of another file that one or several chunks consist of.
struct GatheredChunk {
  std::size_t source = 0;  ///< 1-based, among the media files
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  double time = 0;           ///< seconds, of the first sample in it
  std::uint64_t placed = 0;  ///< from the start of the gathering mdat's body
};

/// Zeros at the end of a file read as an atom of no type.
bool isPadding(FourCC type) {
  return type == 0 || type == code::free || type == code::skip || type == code::wide;
}

class LayoutMaker {
 public:
  LayoutMaker(const MovieFile& movie, ByteView movieAtom) : movie_(movie), movieAtom_(movieAtom) {}

  Result<FlattenedLayout> make();

 private:
  Result<void> walkFile();
  Result<void> keep(const Atom& atom);
  Result<void> refuseItemLocations(const Atom& meta) const;
  Result<void> claimChunks();
  Result<void> claimOwn(std::size_t track, const Chunk& chunk);
  Result<void> claimExternal(std::size_t track, const Chunk& chunk, const DataReference& reference);
  Result<std::size_t> sourceOf(const DataReference& reference);
  TopAtom* atomAround(const Chunk& chunk);
  void dropPadding();
  void orderGathered();
  void placeAtoms(std::uint64_t movieSize);
  Result<std::vector<std::uint64_t>> newOffsets(std::size_t track);
  Result<Bytes> relocatedMovie();
  void describe(Bytes movieAtom);

  tl::unexpected<MovieError> refusal(Clause why, std::string atom = {}, std::uint64_t offset = 0) const {
    return failed(movie_.path(), std::move(why), std::move(atom), offset);
  }
  tl::unexpected<MovieError> refusal(Reason why, std::size_t track, const Chunk& chunk, std::string file = {}) const;

  const MovieFile& movie_;
  ByteView movieAtom_;
  MovieMap map_;
  std::vector<TopAtom> atoms_;              ///< those that are kept, in file order, without the movie atom
  std::optional<std::size_t> movieBefore_;  ///< the index in atoms_ that the movie atom came before
  bool movieFirst_ = false;
  FlattenedLayout layout_;
  std::map<std::pair<FourCC, std::vector<std::uint8_t>>, std::size_t> sourceOfReference_;
  std::map<std::tuple<std::size_t, std::uint64_t, std::uint64_t>, std::size_t> gatheredIndex_;
  std::vector<GatheredChunk> gathered_;
  std::vector<std::vector<std::size_t>> gatheredOf_;  ///< per track, its external chunks in their order
  std::uint64_t gatheredSize_ = 0;
  std::uint64_t gatheredBody_ = 0;
  std::uint64_t movieAt_ = 0;
  std::vector<bool> wide_;  ///< per track: its table of chunk offsets has 64 bits
};

Result<FlattenedLayout> LayoutMaker::make() {
  if (movie_.isFragmented()) return refusal(Reason::Fragmented, "moov/mvex");
  TRY(auto map, mapMovie(movieAtom_, movie_.path()));
  map_ = std::move(map);
  if (map_.tracks.size() != movie_.tracks().size()) return refusal(Reason::OtherTracksInEdit, "moov");
  TRY(walkFile());
  TRY(claimChunks());
  dropPadding();
  orderGathered();
  TRY(auto relocated, relocatedMovie());
  describe(std::move(relocated));
  return std::move(layout_);
}

Result<void> LayoutMaker::walkFile() {
  FileAtoms walk(movie_.readable());
  while (const auto atom = walk.next()) {
    TRY(keep(*atom));
  }
  TRY(walk.readStatus());
  if (walk.defect() == AtomDefect::TooMany) return refusal(Reason::TooManyAtoms);
  Atom last = walk.defective();
  if (walk.defect() == AtomDefect::ReachesPastParent && last.type == code::mdat &&
      movie_.size() - last.offset >= last.headerSize) {
    // Cut off; that nothing which counts is missing shows when the chunks are looked at.
    last.size = movie_.size() - last.offset;
    TRY(keep(last));
  }
  return movieBefore_ ? Result<void>() : refusal(Reason::ChangedSinceOpened);
}

Result<void> LayoutMaker::keep(const Atom& atom) {
  if (isOfFragments(atom.type)) return refusal(Reason::Fragmented, fourCCText(atom.type), atom.offset);
  if (atom.type == code::moov) {
    if (movieBefore_) return {};
    movieBefore_ = atoms_.size();
    movieFirst_ = std::none_of(atoms_.begin(), atoms_.end(),
                               [](const TopAtom& before) { return before.atom.type == code::mdat; });
    return {};
  }
  if (atom.type == code::meta) {
    TRY(refuseItemLocations(atom));
  }
  atoms_.push_back({atom});
  return {};
}

Result<void> LayoutMaker::refuseItemLocations(const Atom& meta) const {
  for (const std::uint64_t head : {0U, 4U}) {  // without version and flags, and with
    if (meta.bodySize() < head) continue;
    FileAtoms walk(movie_.readable(), meta.bodyOffset() + head, meta.end());
    while (const auto child = walk.next()) {
      if (child->type == code::iloc) return refusal(Reason::OffsetsImmovable, "meta/iloc", child->offset);
    }
    TRY(walk.readStatus());
  }
  return {};
}

Result<void> LayoutMaker::claimChunks() {
  gatheredOf_.resize(map_.tracks.size());
  for (std::size_t track = 0; track < map_.tracks.size(); ++track) {
    const TrackChunks& chunks = map_.tracks[track].chunks;
    TRY(inFile(movie_.path(), chunks.visit([&](const Chunk& chunk) -> Result<void> {
      const DataReference* const reference = chunks.externalReference(chunk.description);
      if (chunk.size == 0) return {};
      return reference ? claimExternal(track, chunk, *reference) : claimOwn(track, chunk);
    })));
  }
  return {};
}

TopAtom* LayoutMaker::atomAround(const Chunk& chunk) {
  auto after =
      std::upper_bound(atoms_.begin(), atoms_.end(), chunk.offset,
                       [](std::uint64_t offset, const TopAtom& top) { return offset < top.atom.bodyOffset(); });
  if (after == atoms_.begin()) return nullptr;
  TopAtom& top = *--after;
  const bool inside = chunk.offset <= top.atom.end() && chunk.size <= top.atom.end() - chunk.offset;
  return inside ? &top : nullptr;
}

tl::unexpected<MovieError> LayoutMaker::refusal(Reason why, std::size_t track, const Chunk& chunk,
                                                std::string file) const {
  return refusal({why,
                  {verbatim(std::to_string(chunk.index + 1)), verbatim(std::to_string(movie_.tracks()[track].id)),
                   verbatim(std::move(file))}});
}

Result<void> LayoutMaker::claimOwn(std::size_t track, const Chunk& chunk) {
  if (chunk.offset > movie_.size() || chunk.size > movie_.size() - chunk.offset) {
    return refusal(Reason::ChunkPastEnd, track, chunk);
  }
  TopAtom* const around = atomAround(chunk);
  if (!around) return refusal(Reason::ChunkOutsideAtoms, track, chunk);
  around->holdsChunks = true;
  return {};
}

Result<std::size_t> LayoutMaker::sourceOf(const DataReference& reference) {
  const auto key = std::pair(reference.type, Bytes(reference.data.begin(), reference.data.end()));
  if (const auto found = sourceOfReference_.find(key); found != sourceOfReference_.end()) return found->second;
  TRY(auto file, openBeside(movie_.readable(), reference));
  layout_.media.push_back(std::move(file));
  return sourceOfReference_[key] = layout_.media.size();
}

Result<void> LayoutMaker::claimExternal(std::size_t track, const Chunk& chunk, const DataReference& reference) {
  TRY(const auto source, sourceOf(reference));
  const ReadableFile& file = layout_.media[source - 1];
  if (chunk.offset > file.size() || chunk.size > file.size() - chunk.offset) {
    return refusal(Reason::ChunkPastEndOf, track, chunk, file.path());
  }
  const double time = static_cast<double>(movie_.sampleTable(track).decodeTimeOf(chunk.firstSample)) /
                      movie_.tracks()[track].mediaTimeScale;
  const auto [entry, isNew] = gatheredIndex_.try_emplace({source, chunk.offset, chunk.size}, gathered_.size());
  if (isNew) gathered_.push_back({source, chunk.offset, chunk.size, time});
  gatheredOf_[track].push_back(entry->second);
  return {};
}

void LayoutMaker::dropPadding() {
  std::vector<TopAtom> kept;
  std::size_t before = 0;
  for (std::size_t i = 0; i < atoms_.size(); ++i) {
    TopAtom& top = atoms_[i];
    if (isPadding(top.atom.type)) {
      if (!top.holdsChunks) continue;
      top.atom.type = code::mdat;  // else the next program to tidy up would take it for padding
      if (i < movieBefore_) movieFirst_ = false;
    }
    if (i < movieBefore_) ++before;
    kept.push_back(top);
  }
  atoms_ = std::move(kept);
  movieBefore_ = before;
}

void LayoutMaker::orderGathered() {
  std::vector<std::size_t> order(gathered_.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return gathered_[a].time < gathered_[b].time; });
  for (const std::size_t index : order) {
    GatheredChunk& chunk = gathered_[index];
    chunk.placed = gatheredSize_;
    gatheredSize_ += chunk.size;
    std::vector<CopiedRange>& copied = layout_.copied;
    const bool follows = !copied.empty() && copied.back().source == chunk.source &&
                         copied.back().from + copied.back().size == chunk.offset;
    if (follows)
      copied.back().size += chunk.size;
    else
      copied.push_back({chunk.source, chunk.offset, chunk.size, chunk.placed});
  }
}

void LayoutMaker::placeAtoms(std::uint64_t movieSize) {
  std::uint64_t at = 0;
  const auto placeMovie = [&] {
    movieAt_ = at;
    at += movieSize + (movieFirst_ ? spaceBehindMovie : 0);
  };
  for (std::size_t i = 0; i < atoms_.size(); ++i) {
    if (movieFirst_ && i == movieBefore_) placeMovie();
    const Atom& atom = atoms_[i].atom;
    at += atomHeader(atom.type, atom.bodySize(), atom.headerSize == 16).size();
    atoms_[i].newBody = at;
    at += atom.bodySize();
  }
  if (movieFirst_ && movieBefore_ == atoms_.size()) placeMovie();
  if (gatheredSize_ > 0) {
    gatheredBody_ = at + atomHeader(code::mdat, gatheredSize_).size();
    at = gatheredBody_ + gatheredSize_;
  }
  if (!movieFirst_) placeMovie();
  layout_.size = at;
}

/// A chunk without samples goes where its atom goes, or stays a number that leads nowhere.
Result<std::vector<std::uint64_t>> LayoutMaker::newOffsets(std::size_t track) {
  const TrackChunks& chunks = map_.tracks[track].chunks;
  std::vector<std::uint64_t> offsets;
  auto external = gatheredOf_[track].begin();
  TRY(chunks.visit([&](const Chunk& chunk) -> Result<void> {
    std::uint64_t offset = chunk.offset;
    if (chunk.size > 0 && chunks.externalReference(chunk.description)) {
      offset = gatheredBody_ + gathered_[*external++].placed;
    } else if (const TopAtom* const around = atomAround(chunk)) {
      offset = around->newBody + (chunk.offset - around->atom.bodyOffset());
    }
    offsets.push_back(offset);
    return {};
  }));
  return offsets;
}

/// A wider table moves what stands behind the movie atom, which can make another table need to be wider: repeated until
/// none does. A table never becomes narrow again, so this ends.
Result<Bytes> LayoutMaker::relocatedMovie() {
  std::vector<Splice> references;
  for (const MovieMap::Track& track : map_.tracks) {
    wide_.push_back(track.offsets && track.offsets->type == code::co64);
    auto splice = track.references ? selfContained(movieAtom_, *track.references) : std::nullopt;
    if (splice) references.push_back(std::move(*splice));
  }
  std::uint64_t size = movieAtom_.size();
  for (;;) {
    placeAtoms(size);
    std::vector<Splice> splices = references;
    bool widened = false;
    for (std::size_t i = 0; i < map_.tracks.size(); ++i) {
      TRY(const auto offsets, newOffsets(i));
      if (offsets.empty()) continue;
      if (!wide_[i] && *std::max_element(offsets.begin(), offsets.end()) > largestNarrow) widened = wide_[i] = true;
      splices.push_back(chunkOffsetTable(movieAtom_, *map_.tracks[i].offsets, offsets, wide_[i]));
    }
    auto moved = spliced(movieAtom_, map_.containers, std::move(splices));
    if (!moved || moved->size() > MovieFile::maximumMovieAtomSize) {
      return refusal(Reason::MovieWouldBeTooLarge, "moov");
    }
    if (!widened && moved->size() == size) return std::move(*moved);
    size = moved->size();
  }
}

void LayoutMaker::describe(Bytes movieAtom) {
  for (CopiedRange& range : layout_.copied) range.to += gatheredBody_;
  std::vector<CopiedRange> own;
  for (const TopAtom& top : atoms_) {
    Bytes header = atomHeader(top.atom.type, top.atom.bodySize(), top.atom.headerSize == 16);
    layout_.written.push_back({top.newBody - header.size(), std::move(header)});
    own.push_back({0, top.atom.bodyOffset(), top.atom.bodySize(), top.newBody});
  }
  layout_.copied.insert(layout_.copied.begin(), own.begin(), own.end());
  if (gatheredSize_ > 0) {
    Bytes header = atomHeader(code::mdat, gatheredSize_);
    layout_.written.push_back({gatheredBody_ - header.size(), std::move(header)});
  }
  const std::uint64_t behind = movieAt_ + movieAtom.size();
  layout_.written.push_back({movieAt_, std::move(movieAtom)});
  if (!movieFirst_) return;
  Bytes space = atomHeader(code::free, spaceBehindMovie - 8);
  space.resize(spaceBehindMovie);
  layout_.written.push_back({behind, std::move(space)});
}

}  // namespace

Result<FlattenedLayout> layOutFlattened(const MovieFile& movie, ByteView movieAtom) {
  return LayoutMaker(movie, movieAtom).make();
}

}  // namespace movie

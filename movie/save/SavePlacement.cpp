#include "movie/save/SavePlacement.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::uint64_t smallestAtom = 8;

/// Whether a field of four bytes there lies inside one sector.
bool inOneSector(std::uint64_t offset) {
  return offset % sectorSize <= sectorSize - 4;
}

/// Both of the same length. `offset` is where they stand in the file.
bool differInOneSector(ByteView before, ByteView after, std::uint64_t offset) {
  const auto first = std::mismatch(before.begin(), before.end(), after.begin()).first - before.begin();
  const auto fromBack = std::mismatch(before.rbegin(), before.rend(), after.rbegin()).first - before.rbegin();
  const std::uint64_t begin = offset + static_cast<std::uint64_t>(first);
  const std::uint64_t last = offset + before.size() - static_cast<std::uint64_t>(fromBack) - 1;
  return begin / sectorSize == last / sectorSize;
}

bool isFree(const Atom& atom) {
  return atom.type == code::free || atom.type == code::skip;
}

/// The atoms around the movie atom that are free, the movie atom among them: [first, last].
struct Neighbours {
  std::size_t first = 0, last = 0;
};

Neighbours neighboursOf(const SaveSurvey& survey) {
  Neighbours found{survey.movie, survey.movie};
  while (found.first > 0 && isFree(survey.atoms[found.first - 1])) --found.first;
  while (found.last + 1 < survey.atoms.size() && isFree(survey.atoms[found.last + 1])) ++found.last;
  return found;
}

/// A slot for `size` bytes that begins at an atom; the movie moves as little as can be.
bool placeInSlot(const SaveSurvey& survey, const Neighbours& around, SavePlacement& placement) {
  const std::uint64_t size = placement.movie.size();
  const auto narrow = [](const Atom& atom) { return atom.headerSize == 8; };
  std::size_t end = survey.movie;
  if (!narrow(survey.atoms[end])) return false;
  while (end < around.last && narrow(survey.atoms[end + 1])) ++end;
  for (std::size_t begin = survey.movie + 1; begin-- > around.first && narrow(survey.atoms[begin]);) {
    const std::uint64_t from = survey.atoms[begin].offset, to = survey.atoms[end].end();
    const std::uint64_t room = to - from;
    if (room > std::numeric_limits<std::uint32_t>::max()) break;
    if (!inOneSector(from) || room < size || (room != size && room - size < smallestAtom)) continue;
    placement.place = SavePlace::Slot;
    placement.slotBegin = from;
    placement.slotEnd = to;
    return true;
  }
  return false;
}

Result<void> checkOpenMediaData(const SaveSurvey& survey, const std::string& file) {
  if (!survey.openMediaData) return {};
  const Atom& data = survey.atoms.back();
  const auto refusal = [&](Reason why) { return failed(file, why, "mdat", data.offset); };
  if (data.size > std::numeric_limits<std::uint32_t>::max()) return refusal(Reason::OpenMediaTooLarge);
  if (!inOneSector(data.offset)) return refusal(Reason::OpenMediaUnsafe);
  return {};
}

/// Where the movie atom goes to the end of the file, if only for a while, what is free before it there becomes free
/// space beside it, and the next save has to be able to go on from that.
Result<void> checkEnd(const SaveSurvey& survey, const std::string& file) {
  std::size_t first = survey.atoms.size() - (survey.secondMovie ? 1 : 0);
  while (first > 0 && isFree(survey.atoms[first - 1])) --first;
  if (first == survey.atoms.size() || !survey.media.overlaps(survey.atoms[first].offset, survey.end)) return {};
  const Atom& space = survey.atoms[first];
  return failed(file, Reason::MediaAtEnd, fourCCText(space.type), space.offset);
}

}  // namespace

Result<SavePlacement> placeMovie(const SaveSurvey& survey, const MovieFile& loaded,
                                 const std::vector<SampleDescriptionEdit>& edits) {
  const Atom& old = survey.movieAtom();
  TRY(auto edited, inFile(loaded.path(), editedMovieAtom(loaded.movieAtom(), edits)));
  SavePlacement placement{SavePlace::Tail, std::move(edited)};
  const Neighbours around = neighboursOf(survey);
  if (survey.media.overlaps(survey.atoms[around.first].offset, survey.atoms[around.last].end())) {
    return failed(loaded.path(), Reason::MediaBesideMovie, "moov", old.offset);
  }
  const bool unchanged = std::ranges::equal(placement.movie, loaded.movieAtom());
  if (unchanged && !edits.empty()) {
    placement.place = SavePlace::Unchanged;
    return placement;
  }
  if (auto same = movieAtomOfSize(placement.movie, old.size)) {
    placement.movie = std::move(*same);
    if (!unchanged && differInOneSector(loaded.movieAtom(), placement.movie, old.offset)) {
      placement.place = SavePlace::Sector;
      return placement;
    }
    placement.place = SavePlace::Slot;
    placement.slotBegin = old.offset;
    placement.slotEnd = old.end();
  } else if (!placeInSlot(survey, around, placement)) {
    placement.place = SavePlace::Tail;
  }
  // At the very end, with nothing free beside it, it stays at the end.
  if (survey.movie + 1 == survey.atoms.size() && around.first == around.last) placement.place = SavePlace::Tail;
  TRY(checkOpenMediaData(survey, loaded.path()));
  TRY(checkEnd(survey, loaded.path()));
  if (unchanged) placement.place = SavePlace::Unchanged;
  return placement;
}

}  // namespace movie

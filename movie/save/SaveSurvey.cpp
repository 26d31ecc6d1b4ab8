#include "movie/save/SaveSurvey.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "movie/atoms/MovieEdit.h"

namespace movie {

namespace {

constexpr std::size_t mostAtoms = 1'000'000;
constexpr std::size_t longHeader = 16;
constexpr std::uint64_t largestMeta = std::uint64_t{64} << 20;

class Surveyor {
 public:
  Surveyor(const WritableFile& file, const MovieFile& loaded) : file_(file), loaded_(loaded) {}

  Result<SaveSurvey> survey() {
    using Step = Result<void> (Surveyor::*)();
    for (const Step step : {&Surveyor::compareStamp, &Surveyor::walk, &Surveyor::settleMovies, &Surveyor::compareMovie,
                            &Surveyor::collectMedia, &Surveyor::checkMedia}) {
      if (auto status = (this->*step)(); !status) return tl::make_unexpected(status.error());
    }
    return std::move(found_);
  }

 private:
  tl::unexpected<MovieError> refusal(std::string reason, const Atom& atom = {}) const {
    return tl::make_unexpected(MovieError{file_.path(), atom.size == 0 ? std::string() : fourCCText(atom.type),
                                          atom.offset, std::move(reason)});
  }

  Result<void> compareStamp();
  Result<void> walk();
  Result<void> take(const Atom& atom);
  Result<void> checkRest(std::uint64_t begin);
  Result<bool> onlyZeros(std::uint64_t begin) const;
  Result<void> settleMovies();
  Result<void> compareMovie();
  Result<void> collectMedia();
  Result<void> checkMedia();

  const WritableFile& file_;
  const MovieFile& loaded_;
  SaveSurvey found_;
};

Result<void> Surveyor::compareStamp() {
  const auto now = file_.stamp();
  if (!now) return tl::make_unexpected(now.error());
  if (*now != loaded_.stamp()) return refusal("the file was changed on disk since it was loaded");
  found_.fileSize = now->size;
  found_.end = now->size;
  if (loaded_.isCompressed()) return refusal("its movie atom is compressed");
  if (loaded_.isFragmented()) return refusal("the movie is fragmented");
  return {};
}

Result<void> Surveyor::walk() {
  std::uint64_t at = 0;
  while (at < found_.fileSize) {
    const auto bytes = file_.read(at, longHeader);
    if (!bytes) return tl::make_unexpected(bytes.error());
    auto [atom, defect] = readAtomHeader(*bytes, at, found_.fileSize - at);
    const bool open = defect == AtomDefect::SizeBelowHeader && atom.size == 0 && atom.headerSize == 8;
    if (open && atom.type == fourCC("mdat")) {
      atom.size = found_.fileSize - at;
      found_.openMediaData = true;
    } else if (defect != AtomDefect::None) {
      return checkRest(at);
    }
    if (auto status = take(atom); !status) return status;
    at = atom.end();
  }
  return {};
}

Result<void> Surveyor::take(const Atom& atom) {
  constexpr std::array ofFragments{fourCC("moof"), fourCC("styp"), fourCC("sidx"), fourCC("ssix"), fourCC("mfra")};
  if (std::find(ofFragments.begin(), ofFragments.end(), atom.type) != ofFragments.end()) {
    return refusal("the movie is fragmented", atom);
  }
  if (found_.atoms.size() == mostAtoms) return refusal("there are too many atoms in the file");
  found_.atoms.push_back(atom);
  return {};
}

Result<bool> Surveyor::onlyZeros(std::uint64_t begin) const {
  constexpr std::size_t piece = std::size_t{1} << 20;
  if (found_.fileSize - begin > MovieFile::maximumMovieAtomSize) return false;
  for (std::uint64_t at = begin; at < found_.fileSize;) {
    const auto bytes = file_.read(at, static_cast<std::size_t>(std::min<std::uint64_t>(piece, found_.fileSize - at)));
    if (!bytes) return tl::make_unexpected(bytes.error());
    if (bytes->empty() || std::any_of(bytes->begin(), bytes->end(), [](std::uint8_t byte) { return byte != 0; })) {
      return false;
    }
    at += bytes->size();
  }
  return true;
}

/// What stands behind the last whole atom. A save first makes the file longer by the header of a `free`, in zeros; then
/// the type becomes `free`; then the size is written, larger than what is there; then the body follows. Only such a
/// rest may be cut.
Result<void> Surveyor::checkRest(std::uint64_t begin) {
  const auto head = file_.read(begin, longHeader);
  if (!head) return tl::make_unexpected(head.error());
  const auto [atom, defect] = readAtomHeader(*head, begin, found_.fileSize - begin);
  constexpr std::array<std::uint8_t, 4> freeType{'f', 'r', 'e', 'e'};
  bool started = head->size() >= 8 && read32(*head, 0) == 0;
  for (std::size_t i = 0; i < 4 && started; ++i) {
    started = (*head)[4 + i] == 0 || (*head)[4 + i] == freeType[i];
  }
  const auto zeros = onlyZeros(started ? begin + 8 : begin);
  if (!zeros) return tl::make_unexpected(zeros.error());
  const bool incomplete = head->size() >= 8 && atom.type == fourCC("free") &&
                          (defect == AtomDefect::ReachesPastParent || found_.fileSize - begin <= longHeader);
  if (!*zeros && !incomplete) {
    if (head->size() >= 8 && read32(*head, 0) == 0) return refusal("an atom has no size of its own", atom);
    return refusal("its atoms do not end where the file does", atom);
  }
  found_.end = begin;
  return {};
}

Result<void> Surveyor::settleMovies() {
  std::vector<std::size_t> movies;
  for (std::size_t i = 0; i < found_.atoms.size(); ++i) {
    if (found_.atoms[i].type == fourCC("moov")) movies.push_back(i);
  }
  if (movies.empty() || found_.atoms[movies[0]].offset != loaded_.movieAtomOffset()) {
    return refusal("the file was changed on disk since it was loaded");
  }
  found_.movie = movies[0];
  if (movies.size() == 1) return {};
  const Atom& second = found_.atoms[movies[1]];
  if (movies.size() > 2 || movies[1] + 1 != found_.atoms.size()) return refusal("it holds several movies", second);
  if (second.size > MovieFile::maximumMovieAtomSize) return refusal("it holds a second movie", second);
  const auto bytes = file_.read(second.offset, static_cast<std::size_t>(second.size));
  if (!bytes) return tl::make_unexpected(bytes.error());
  if (!equalButForColors(loaded_.movieAtom(), *bytes)) return refusal("it holds a second movie", second);
  found_.secondMovie = true;
  return {};
}

Result<void> Surveyor::compareMovie() {
  const Atom& movie = found_.movieAtom();
  const ByteView loaded = loaded_.movieAtom();
  const auto bytes =
      file_.read(movie.offset, static_cast<std::size_t>(std::min<std::uint64_t>(movie.size, loaded.size() + 1)));
  if (!bytes) return tl::make_unexpected(bytes.error());
  if (!std::equal(bytes->begin(), bytes->end(), loaded.begin(), loaded.end())) {
    return refusal("the file was changed on disk since it was loaded");
  }
  return {};
}

Result<void> Surveyor::collectMedia() {
  if (auto status = addMediaOfMovie(loaded_.movieAtom(), file_.path(), found_.media); !status) return status;
  for (const Atom& atom : found_.atoms) {
    if (atom.type != fourCC("meta")) continue;
    if (atom.size > largestMeta) return refusal("the atom is too large to be looked through", atom);
    const auto bytes = file_.read(atom.offset, static_cast<std::size_t>(atom.size));
    if (!bytes) return tl::make_unexpected(bytes.error());
    if (auto status = addMediaOfMeta(*bytes, file_.path(), found_.media); !status) return status;
  }
  found_.media.settle();
  return {};
}

Result<void> Surveyor::checkMedia() {
  const Atom& movie = found_.movieAtom();
  if (found_.media.overlaps(movie.offset, movie.end())) return refusal("media data lie inside the movie atom", movie);
  if (found_.media.end() > found_.end) return refusal("media data lie past the end of the file");
  const Atom& last = found_.atoms.back();
  if (found_.secondMovie && found_.media.overlaps(last.offset, last.end())) {
    return refusal("media data lie inside a second movie atom", last);
  }
  return {};
}

}  // namespace

Result<SaveSurvey> surveyForSave(const WritableFile& file, const MovieFile& loaded) {
  return Surveyor(file, loaded).survey();
}

}  // namespace movie

#include "movie/save/SaveSurvey.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/MovieEdit.h"
#include "movie/atoms/MovieFragments.h"

namespace movie {

namespace {

constexpr std::size_t mostAtoms = 1'000'000;
constexpr std::size_t longHeaderSize = 16;
constexpr std::uint64_t largestMeta = std::uint64_t{64} << 20;

class Surveyor {
 public:
  Surveyor(const WritableFile& file, const MovieFile& loaded) : file_(file), loaded_(loaded) {}

  Result<SaveSurvey> survey() {
    using Step = Result<void> (Surveyor::*)();
    for (const Step step : {&Surveyor::compareStamp, &Surveyor::walk, &Surveyor::settleMovies, &Surveyor::compareMovie,
                            &Surveyor::collectMedia, &Surveyor::checkMedia}) {
      TRY((this->*step)());
    }
    return std::move(found_);
  }

 private:
  tl::unexpected<MovieError> refusal(Reason why, const Atom& atom = {}) const {
    return failed(file_.path(), why, atom.size == 0 ? std::string() : fourCCText(atom.type), atom.offset);
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
  TRY(const auto now, file_.stamp());
  if (now != loaded_.stamp()) return refusal(Reason::ChangedSinceLoaded);
  found_.fileSize = now.size;
  found_.end = now.size;
  if (loaded_.isCompressed()) return refusal(Reason::ItsMovieCompressed);
  if (loaded_.isFragmented()) return refusal(Reason::Fragmented);
  return {};
}

Result<void> Surveyor::walk() {
  std::uint64_t at = 0;
  while (at < found_.fileSize) {
    TRY(const auto bytes, file_.read(at, longHeaderSize));
    auto [atom, defect] = readAtomHeader(bytes, at, found_.fileSize - at);
    const bool open = defect == AtomDefect::SizeBelowHeader && atom.size == 0 && atom.headerSize == 8;
    if (open && atom.type == code::mdat) {
      atom.size = found_.fileSize - at;
      found_.openMediaData = true;
    } else if (defect != AtomDefect::None) {
      return checkRest(at);
    }
    TRY(take(atom));
    at = atom.end();
  }
  return {};
}

Result<void> Surveyor::take(const Atom& atom) {
  if (isOfFragments(atom.type)) return refusal(Reason::Fragmented, atom);
  if (found_.atoms.size() == mostAtoms) return refusal(Reason::TooManyAtoms);
  found_.atoms.push_back(atom);
  return {};
}

Result<bool> Surveyor::onlyZeros(std::uint64_t begin) const {
  constexpr std::size_t piece = std::size_t{1} << 20;
  if (found_.fileSize - begin > MovieFile::maximumMovieAtomSize) return false;
  for (std::uint64_t at = begin; at < found_.fileSize;) {
    TRY(const auto bytes,
        file_.read(at, static_cast<std::size_t>(std::min<std::uint64_t>(piece, found_.fileSize - at))));
    if (bytes.empty() || std::any_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; })) {
      return false;
    }
    at += bytes.size();
  }
  return true;
}

/// What stands behind the last whole atom. A save first makes the file longer by the header of a `free`, in zeros; then
/// the type becomes `free`; then the size is written, larger than what is there; then the body follows. Only such a
/// rest may be cut.
Result<void> Surveyor::checkRest(std::uint64_t begin) {
  TRY(const auto head, file_.read(begin, longHeaderSize));
  const auto [atom, defect] = readAtomHeader(head, begin, found_.fileSize - begin);
  constexpr std::array<std::uint8_t, 4> freeType{'f', 'r', 'e', 'e'};
  bool started = head.size() >= 8 && read32(head, 0) == 0;
  for (std::size_t i = 0; i < 4 && started; ++i) {
    started = head[4 + i] == 0 || head[4 + i] == freeType[i];
  }
  TRY(const auto zeros, onlyZeros(started ? begin + 8 : begin));
  const bool incomplete = head.size() >= 8 && atom.type == code::free &&
                          (defect == AtomDefect::ReachesPastParent || found_.fileSize - begin <= longHeaderSize);
  if (!zeros && !incomplete) {
    if (head.size() >= 8 && read32(head, 0) == 0) return refusal(Reason::NoSizeOfItsOwn, atom);
    return refusal(Reason::AtomsEndElsewhere, atom);
  }
  found_.end = begin;
  return {};
}

Result<void> Surveyor::settleMovies() {
  std::vector<std::size_t> movies;
  for (std::size_t i = 0; i < found_.atoms.size(); ++i) {
    if (found_.atoms[i].type == code::moov) movies.push_back(i);
  }
  if (movies.empty() || found_.atoms[movies[0]].offset != loaded_.movieAtomOffset()) {
    return refusal(Reason::ChangedSinceLoaded);
  }
  found_.movie = movies[0];
  if (movies.size() == 1) return {};
  const Atom& second = found_.atoms[movies[1]];
  if (movies.size() > 2 || movies[1] + 1 != found_.atoms.size()) return refusal(Reason::SeveralMovies, second);
  if (second.size > MovieFile::maximumMovieAtomSize) return refusal(Reason::SecondMovie, second);
  TRY(const auto bytes, file_.read(second.offset, static_cast<std::size_t>(second.size)));
  if (!equalButForColors(loaded_.movieAtom(), bytes)) return refusal(Reason::SecondMovie, second);
  found_.secondMovie = true;
  return {};
}

Result<void> Surveyor::compareMovie() {
  const Atom& movie = found_.movieAtom();
  const ByteView loaded = loaded_.movieAtom();
  TRY(const auto bytes,
      file_.read(movie.offset, static_cast<std::size_t>(std::min<std::uint64_t>(movie.size, loaded.size() + 1))));
  if (!std::equal(bytes.begin(), bytes.end(), loaded.begin(), loaded.end())) return refusal(Reason::ChangedSinceLoaded);
  return {};
}

Result<void> Surveyor::collectMedia() {
  TRY(addMediaOfMovie(loaded_.movieAtom(), file_.path(), found_.media));
  for (const Atom& atom : found_.atoms) {
    if (atom.type != code::meta) continue;
    if (atom.size > largestMeta) return refusal(Reason::AtomTooLarge, atom);
    TRY(const auto bytes, file_.read(atom.offset, static_cast<std::size_t>(atom.size)));
    TRY(addMediaOfMeta(bytes, file_.path(), found_.media));
  }
  found_.media.settle();
  return {};
}

Result<void> Surveyor::checkMedia() {
  const Atom& movie = found_.movieAtom();
  if (found_.media.overlaps(movie.offset, movie.end())) return refusal(Reason::MediaInMovie, movie);
  if (found_.media.end() > found_.end) return refusal(Reason::MediaPastEnd);
  const Atom& last = found_.atoms.back();
  if (found_.secondMovie && found_.media.overlaps(last.offset, last.end())) {
    return refusal(Reason::MediaInSecondMovie, last);
  }
  return {};
}

}  // namespace

Result<SaveSurvey> surveyForSave(const WritableFile& file, const MovieFile& loaded) {
  return Surveyor(file, loaded).survey();
}

}  // namespace movie

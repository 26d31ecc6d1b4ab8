#include "tests/fuzz/SavedStateJudge.h"

#include <algorithm>

namespace fuzz {

namespace {

using movie::Bytes;
using movie::ByteView;
using movie::fourCC;

constexpr std::uint64_t mostJudged = 500;  // of a track

std::optional<TopAtom> firstMovie(const std::vector<TopAtom>& atoms) {
  const auto found =
      std::find_if(atoms.begin(), atoms.end(), [](const TopAtom& atom) { return atom.type == fourCC("moov"); });
  if (found == atoms.end()) return std::nullopt;
  return *found;
}

ByteView viewOf(ByteView file, const TopAtom& atom) {
  return file.subspan(atom.offset, atom.size);
}

/// The size field of a mdat that had none may be filled in, with what it reached over, wherever the file ends now.
bool onlySized(ByteView before, ByteView after, const TopAtom& atom) {
  const std::uint32_t size = movie::read32(after, atom.offset);
  const ByteView left = viewOf(before, atom), right = viewOf(after, atom);
  return (size == 0 || size == atom.size) && std::equal(left.begin() + 4, left.end(), right.begin() + 4, right.end());
}

}  // namespace

std::vector<TopAtom> topAtoms(ByteView file) {
  std::vector<TopAtom> atoms;
  std::size_t at = 0;
  while (file.size() - at >= 8) {
    std::uint64_t size = movie::read32(file, at);
    const movie::FourCC type = movie::read32(file, at + 4);
    std::uint64_t head = 8;
    if (size == 1 && file.size() - at >= 16) {
      size = movie::read64(file, at + 8);
      head = 16;
    }
    const bool open = size == 0 && type == fourCC("mdat");
    if (open) size = file.size() - at;
    if (size < head || size > file.size() - at) break;
    atoms.push_back({type, at, static_cast<std::size_t>(size), open});
    at += static_cast<std::size_t>(size);
  }
  return atoms;
}

SavedStateJudge::SavedStateJudge(const Bytes& before, const movie::MovieFile& movie)
    : before_(before), atoms_(topAtoms(before)) {
  if (const auto atom = firstMovie(atoms_)) {
    const ByteView view = viewOf(before, *atom);
    old_.assign(view.begin(), view.end());
  }
  for (std::size_t track = 0; track < movie.tracks().size(); ++track) {
    const std::uint64_t count = std::min(movie.tracks()[track].sampleCount, mostJudged);
    for (std::uint64_t sample = 0; sample < count; ++sample) {
      const auto place = movie.locateSample(track, sample);
      if (!place) continue;
      const auto begin = static_cast<std::size_t>(place->offset);
      media_.emplace_back(begin, begin + static_cast<std::size_t>(place->size));
    }
  }
}

bool SavedStateJudge::learn(const Bytes& after) {
  const auto movie = firstMovie(topAtoms(after));
  if (!movie) return false;
  const ByteView view = viewOf(after, *movie);
  new_.assign(view.begin(), view.end());
  return true;
}

/// Torn between its size and its type, the movie atom still has the size of the free space that it was laid into: the
/// new one with one more `free` at its end.
bool SavedStateJudge::isNew(ByteView atom) const {
  if (std::equal(atom.begin(), atom.end(), new_.begin(), new_.end())) return true;
  if (atom.size() < new_.size() + 8 || movie::read32(atom, 0) != atom.size()) return false;
  const ByteView rest = atom.subspan(new_.size());
  return std::equal(new_.begin() + 4, new_.end(), atom.begin() + 4) && movie::read32(rest, 0) == rest.size() &&
         movie::read32(rest, 4) == fourCC("free");
}

std::string SavedStateJudge::verdictOnMedia(const Bytes& file) const {
  const ByteView before = before_, after = file;
  std::size_t movies = 0;
  for (const TopAtom& atom : atoms_) {
    if (atom.type == fourCC("free") || atom.type == fourCC("skip")) continue;
    if (atom.type == fourCC("moov") && ++movies <= 2) continue;
    if (file.size() < atom.end()) return "an atom of the file is cut";
    const ByteView left = viewOf(before, atom), right = viewOf(after, atom);
    const bool same = atom.open ? onlySized(before, after, atom) : std::equal(left.begin(), left.end(), right.begin());
    if (!same) return "an atom of the file has changed";
  }
  for (const auto& [begin, end] : media_) {
    if (file.size() < end) return "media data are cut";
    const auto at = static_cast<std::ptrdiff_t>(begin), behind = static_cast<std::ptrdiff_t>(end);
    if (!std::equal(before_.begin() + at, before_.begin() + behind, file.begin() + at))
      return "media data have changed";
  }
  return {};
}

std::string SavedStateJudge::verdict(const Bytes& file, Metadata metadata) const {
  const auto movie = firstMovie(topAtoms(file));
  if (!movie) return "there is no movie atom";
  const ByteView atom = viewOf(file, *movie);
  const bool old = std::equal(atom.begin(), atom.end(), old_.begin(), old_.end());
  if (metadata == Metadata::Old && !old) return "the metadata are not the old";
  if (metadata == Metadata::New && !isNew(atom)) return "the metadata are not the new";
  if (!old && !isNew(atom)) return "the metadata are neither the old nor the new";
  return verdictOnMedia(file);
}

}  // namespace fuzz

#include <algorithm>
#include <optional>
#include <vector>

#include "movie/atoms/MovieEdit.h"
#include "movie/atoms/MovieFile.h"
#include "tests/fuzz/ColorChoice.h"
#include "tests/fuzz/FuzzInputs.h"
#include "tests/fuzz/MemoryFile.h"

namespace fuzz {

namespace {

using movie::fourCC;
using movie::ImageDescription;
using movie::MovieFile;
using Kind = ColorChoice::Kind;

bool hasExtension(const ImageDescription& description, movie::FourCC type) {
  const auto& all = description.extensions();
  return std::any_of(all.begin(), all.end(), [type](const movie::Atom& atom) { return atom.type == type; });
}

/// The value that was set is there, and the other two properties are what they were.
std::string judgeSet(const ImageDescription& before, const ImageDescription& after, const ColorChoice& choice) {
  const bool gamma = choice.kind == Kind::SetGamma, nclc = choice.kind == Kind::SetNclc;
  if (gamma ? after.gamma() != choice.gamma() : after.gamma() != before.gamma()) return "the gamma is wrong";
  if (nclc ? after.nclc() != choice.nclc() : after.nclc() != before.nclc()) return "the colour parameters are wrong";
  const bool profile = choice.kind == Kind::SetProfile;
  if (profile ? after.iccProfile() != choice.profile() : after.iccProfile() != before.iccProfile()) {
    return "the profile is wrong";
  }
  return {};
}

/// Taken back, or set to what it was, the property leaves the first bytes.
std::string judgeUndone(const ImageDescription& before, const ImageDescription& after, const ColorChoice& choice) {
  ImageDescription undone = after;
  const movie::FourCC type = choice.kind == Kind::SetGamma ? fourCC("gama") : fourCC("colr");
  if (!hasExtension(before, type)) {
    if (undone.removeExtension(type) != movie::noErr) return "what was added cannot be removed";
  } else if (choice.kind == Kind::SetGamma && before.gamma()) {
    undone.setGamma(*before.gamma());
  } else if (choice.kind == Kind::SetNclc && before.nclc()) {
    undone.setNclc(*before.nclc(), movie::ColorAtomFlavour::Nclc);
  } else {
    return {};  // a profile that stands as rICC becomes prof, and a second colr is not the first one to be removed
  }
  return undone.bytes() == before.bytes() ? "" : "added and removed again, it is not what it was";
}

/// Exactly one extension of that type is gone.
std::string judgeRemoved(const ImageDescription& before, const ImageDescription& after) {
  if (after.extensions().size() + 1 != before.extensions().size()) return "a removal took not exactly one extension";
  const std::size_t gone = before.bytes().size() - after.bytes().size();
  for (const movie::Atom& atom : before.extensions()) {
    if (atom.size != gone) continue;
    Bytes expected = before.bytes();
    const auto begin = expected.begin() + static_cast<std::ptrdiff_t>(atom.offset);
    expected.erase(begin, begin + static_cast<std::ptrdiff_t>(atom.size));
    movie::write32(expected, 0, static_cast<std::uint32_t>(expected.size()));
    if (expected == after.bytes()) return {};
  }
  return "a removal changed more than the extension";
}

std::string applyAndJudge(ImageDescription& description, const ColorChoice& choice) {
  const ImageDescription before = description;
  const movie::OSErr error = choice.apply(description);
  if (error != movie::noErr) return description.bytes() == before.bytes() ? "" : "a refused edit changed something";
  if (ImageDescription(description.bytes()).bytes() != description.bytes()) return "an edited description is reread";
  const ImageDescription after(description.bytes());
  const bool removal = choice.kind >= Kind::RemoveGamma;
  if (removal) return judgeRemoved(before, after);
  if (auto wrong = judgeSet(before, after, choice); !wrong.empty()) return wrong;
  return judgeUndone(before, after, choice);
}

/// Where in a movie atom a sample description stands, found without the program's own atom walk.
struct Place {
  struct Size {
    std::size_t offset = 0, width = 4;
  };
  std::vector<Size> around;  ///< the size fields of the atoms around it
  std::size_t offset = 0, size = 0;
};

std::optional<Place> placeOf(const Bytes& atom, std::size_t track, std::size_t description) {
  Place place;
  std::size_t begin = 0, end = atom.size();
  const auto enter = [&](movie::FourCC type, std::size_t index) {
    while (begin + 8 <= end) {
      std::uint64_t size = movie::read32(atom, begin);
      std::size_t head = 8;
      if (size == 1 && end - begin >= 16) {
        size = movie::read64(atom, begin + 8);
        head = 16;
      }
      if (size < head || size > end - begin) return false;
      if ((type == 0 || movie::read32(atom, begin + 4) == type) && index-- == 0) {
        place.around.push_back(head == 8 ? Place::Size{begin, 4} : Place::Size{begin + 8, 8});
        end = begin + static_cast<std::size_t>(size);
        place.offset = begin;
        place.size = static_cast<std::size_t>(size);
        begin += head;
        return true;
      }
      begin += static_cast<std::size_t>(size);
    }
    return false;
  };
  if (!enter(fourCC("moov"), 0) || !enter(fourCC("trak"), track) || !enter(fourCC("mdia"), 0)) return std::nullopt;
  if (!enter(fourCC("minf"), 0) || !enter(fourCC("stbl"), 0) || !enter(fourCC("stsd"), 0)) return std::nullopt;
  begin += 8;
  if (!enter(0, description)) return std::nullopt;
  place.around.pop_back();
  return place;
}

/// Outside of the description nothing differs but the sizes around it.
bool onlyDiffersThere(const Bytes& before, const Bytes& after, const Place& place) {
  Bytes left = before, right = after;
  for (const Place::Size& size : place.around) {
    std::fill_n(left.begin() + static_cast<std::ptrdiff_t>(size.offset), size.width, std::uint8_t{0});
    std::fill_n(right.begin() + static_cast<std::ptrdiff_t>(size.offset), size.width, std::uint8_t{0});
  }
  const auto begin = static_cast<std::ptrdiff_t>(place.offset);
  const auto behind = static_cast<std::ptrdiff_t>(before.size() - place.offset - place.size);
  return left.size() - place.size <= right.size() && std::equal(left.begin(), left.begin() + begin, right.begin()) &&
         std::equal(left.end() - behind, left.end(), right.end() - behind);
}

/// The file with another movie atom, opened.
movie::Result<std::shared_ptr<const MovieFile>> reopened(const MovieFile& movie, ByteView input, const Bytes& atom) {
  static MemoryFile file;
  if (movie.isCompressed()) return MovieFile::open(file.holding(atom));
  const std::uint64_t offset = movie.movieAtomOffset();
  Bytes bytes(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(offset));
  bytes.insert(bytes.end(), atom.begin(), atom.end());
  const ByteView behind = input.subspan(static_cast<std::size_t>(offset) + movie.movieAtom().size());
  bytes.insert(bytes.end(), behind.begin(), behind.end());
  return MovieFile::open(file.holding(bytes));
}

std::string judgeReopened(const MovieFile& before, const MovieFile& after, std::size_t track, std::size_t description,
                          const Bytes& entry) {
  if (after.tracks().size() != before.tracks().size()) return "the edited movie has other tracks";
  for (std::size_t i = 0; i < before.tracks().size(); ++i) {
    std::vector<Bytes> expected = before.tracks()[i].sampleDescriptions;
    if (i == track) expected[description] = entry;
    if (after.tracks()[i].sampleDescriptions != expected) return "the edited movie has other sample descriptions";
    if (after.tracks()[i].sampleCount != before.tracks()[i].sampleCount) return "the edited movie has other samples";
  }
  return {};
}

std::string editAndJudge(const MovieFile& movie, ByteView input, std::size_t track, std::size_t index,
                         ByteView choices) {
  const Bytes& entry = movie.tracks()[track].sampleDescriptions[index];
  ImageDescription description(entry);
  for (std::size_t i = 0; i + 1 < choices.size(); i += 2) {
    if (auto wrong = applyAndJudge(description, {choices[i], choices[i + 1]}); !wrong.empty()) return wrong;
  }
  const auto base = movie::editedMovieAtom(movie.movieAtom(), {});
  if (!base) return {};
  const auto edited = movie::editedMovieAtom(*base, {{track, index, description.bytes()}});
  if (!edited) return edited.error().reason().empty() ? "an error without a reason" : "";
  const auto place = placeOf(*base, track, index);
  if (!place) return "an edited description is nowhere";
  if (!onlyDiffersThere(*base, *edited, *place)) return "the edit changed more than the description";
  const auto undone = movie::editedMovieAtom(*edited, {{track, index, entry}});
  if (!undone || *undone != *base) return "undone, the edit leaves another movie atom";
  const auto after = reopened(movie, input, *edited);
  if (!after) return "the edited movie does not open: " + after.error().message();
  return judgeReopened(movie, **after, track, index, description.bytes());
}

}  // namespace

std::string tryEdit(ByteView input) {
  if (input.size() <= editChoices) return {};
  const ByteView choices = input.first(editChoices);
  const ByteView content = input.subspan(editChoices);
  static MemoryFile file;
  const auto movie = MovieFile::open(file.holding(content));
  if (!movie || (*movie)->tracks().empty()) return {};
  const std::size_t track = choices[0] % (*movie)->tracks().size();
  const auto& descriptions = (*movie)->tracks()[track].sampleDescriptions;
  if (descriptions.empty()) return {};
  return editAndJudge(**movie, content, track, choices[1] % descriptions.size(), choices.subspan(2));
}

}  // namespace fuzz

#include "tests/fuzz/MovieMutator.h"

#include <algorithm>
#include <array>

#include "movie/atoms/AtomReader.h"

namespace fuzz {

namespace {

using movie::Atom;
using movie::Bytes;
using movie::ByteView;
using movie::FourCC;
using movie::fourCC;

constexpr std::array containers{fourCC("moov"), fourCC("trak"), fourCC("mdia"), fourCC("minf"), fourCC("stbl"),
                                fourCC("edts"), fourCC("dinf"), fourCC("udta"), fourCC("mvex"), fourCC("moof"),
                                fourCC("traf"), fourCC("cmov"), fourCC("meta")};
constexpr std::array knownTypes{
    fourCC("ftyp"), fourCC("moov"), fourCC("mdat"), fourCC("free"), fourCC("skip"), fourCC("wide"), fourCC("uuid"),
    fourCC("udta"), fourCC("meta"), fourCC("trak"), fourCC("mdia"), fourCC("stbl"), fourCC("stsd"), fourCC("stts"),
    fourCC("ctts"), fourCC("stss"), fourCC("stps"), fourCC("stsz"), fourCC("stz2"), fourCC("stsc"), fourCC("stco"),
    fourCC("co64"), fourCC("elst"), fourCC("edts"), fourCC("dref"), fourCC("saio"), fourCC("iloc"), fourCC("mvex"),
    fourCC("moof"), fourCC("gama"), fourCC("colr"), fourCC("clap"), fourCC("sidx"), fourCC("mfra"), fourCC("hdlr")};

struct Place {
  Atom atom;
  std::vector<Atom> around;
};

/// How many bytes of a body come before its children; none where it has no children.
std::optional<std::uint64_t> childrenAt(FourCC type, FourCC parent) {
  if (type == fourCC("stsd") || type == fourCC("dref")) return 8;
  if (parent == fourCC("stsd")) return 78;
  if (std::find(containers.begin(), containers.end(), type) == containers.end()) return std::nullopt;
  return 0;
}

void collect(ByteView file, std::uint64_t begin, std::uint64_t end, const std::vector<Atom>& around,
             std::vector<Place>& places) {
  constexpr std::size_t most = 400, deepest = 9;
  for (const Atom& atom : movie::readAtoms(file, begin, end).atoms) {
    if (places.size() >= most) return;
    places.push_back({atom, around});
    const auto skip = childrenAt(atom.type, around.empty() ? 0 : around.back().type);
    if (!skip || *skip > atom.bodySize() || around.size() >= deepest) continue;
    std::vector<Atom> path = around;
    path.push_back(atom);
    collect(file, atom.bodyOffset() + *skip, atom.end(), path, places);
  }
}

class Mutation {
 public:
  Mutation(Bytes& file, std::mt19937& random) : file_(file), random_(random) {
    collect(file_, 0, file_.size(), {}, places_);
  }

  bool possible() const { return !places_.empty(); }
  std::size_t upTo(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }
  const Place& pick() { return places_[upTo(places_.size())]; }

  /// Puts bytes in the place of others inside the atoms around.
  void replace(const std::vector<Atom>& around, std::size_t at, std::size_t length, const Bytes& with) {
    for (const Atom& atom : around) {
      const auto size = static_cast<std::uint32_t>(atom.size - length + with.size());
      movie::write32(file_, static_cast<std::size_t>(atom.offset) + (atom.headerSize == 16 ? 12 : 0), size);
    }
    if (upTo(8) != 0) moveChunks(at, length, with.size());
    const auto begin = file_.begin() + static_cast<std::ptrdiff_t>(at);
    file_.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
    file_.insert(file_.begin() + static_cast<std::ptrdiff_t>(at), with.begin(), with.end());
  }

  std::uint32_t number() {
    const Place& place = pick();
    const std::array<std::uint64_t, 12> numbers{0,
                                                1,
                                                7,
                                                8,
                                                16,
                                                0x7FFFFFFF,
                                                0x80000000,
                                                0xFFFFFFFF,
                                                file_.size(),
                                                place.atom.offset,
                                                place.atom.bodyOffset(),
                                                place.atom.size};
    return static_cast<std::uint32_t>(numbers[upTo(numbers.size())] + (upTo(4) == 0 ? random_() % 17 - 8 : 0));
  }

  Bytes copyOf(const Atom& atom) const {
    const auto begin = file_.begin() + static_cast<std::ptrdiff_t>(atom.offset);
    return {begin, begin + static_cast<std::ptrdiff_t>(atom.size)};
  }

  Bytes anAtom() {
    if (upTo(2) == 0) return copyOf(pick().atom);
    Bytes atom(8 + upTo(40));
    movie::write32(atom, 0, static_cast<std::uint32_t>(atom.size()));
    movie::write32(atom, 4, upTo(2) == 0 ? fourCC("free") : knownTypes[upTo(knownTypes.size())]);
    return atom;
  }

 private:
  /// What lay behind the change lies elsewhere now.
  void moveChunks(std::size_t at, std::size_t length, std::size_t newLength) {
    for (const Place& place : places_) {
      const bool wide = place.atom.type == fourCC("co64");
      if (!wide && place.atom.type != fourCC("stco")) continue;
      const std::size_t step = wide ? 8 : 4;
      for (auto row = static_cast<std::size_t>(place.atom.bodyOffset()) + 8; row + step <= place.atom.end();
           row += step) {
        const std::size_t field = row + step - 4;
        const std::uint32_t offset = movie::read32(file_, field);
        if (offset < at + length) continue;
        movie::write32(file_, field,
                       offset - static_cast<std::uint32_t>(length) + static_cast<std::uint32_t>(newLength));
      }
    }
  }

  Bytes& file_;
  std::mt19937& random_;
  std::vector<Place> places_;
};

}  // namespace

void mutateMovie(Bytes& file, std::size_t largest, std::mt19937& random,
                 const std::function<std::size_t(std::uint8_t*, std::size_t, std::size_t)>& mutate) {
  Mutation mutation(file, random);
  const Place place = mutation.possible() ? mutation.pick() : Place{};
  const auto offset = static_cast<std::size_t>(place.atom.offset);
  const auto size = static_cast<std::size_t>(place.atom.size);
  switch (mutation.possible() ? mutation.upTo(9) : 0) {
    case 1:
      mutation.replace(place.around, offset, size, {});
      break;
    case 2:
      mutation.replace(place.around, offset + size, 0, mutation.copyOf(place.atom));
      break;
    case 3:
      mutation.replace(place.around, offset, 0, mutation.anAtom());
      break;
    case 4:
      mutation.replace(place.around, offset + size, 0, mutation.anAtom());
      break;
    case 5:
      movie::write32(file, offset, mutation.number());
      break;
    case 6:
      movie::write32(file, offset + 4, knownTypes[mutation.upTo(knownTypes.size())]);
      break;
    case 7: {
      if (size < 12) break;
      movie::write32(file, offset + 8 + mutation.upTo((size - 8) / 4) * 4, mutation.number());
      break;
    }
    case 8: {
      Bytes atom = mutation.copyOf(place.atom);
      const std::size_t body = place.atom.headerSize, room = size - body + 16;
      atom.resize(size + 16);
      atom.resize(body + mutate(atom.data() + body, size - body, room));
      if (body == 8) movie::write32(atom, 0, static_cast<std::uint32_t>(atom.size()));
      mutation.replace(place.around, offset, size, atom);
      break;
    }
    default: {
      const std::size_t before = file.size();
      file.resize(largest);
      file.resize(mutate(file.data(), before, largest));
    }
  }
  if (file.size() > largest) file.resize(largest);
}

}  // namespace fuzz

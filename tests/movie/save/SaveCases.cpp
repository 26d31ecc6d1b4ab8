#include "tests/movie/save/SaveCases.h"

#include <algorithm>
#include <string_view>

#include "tests/support/AtomBuilder.h"

namespace movie::test {

namespace {

constexpr std::size_t chunkSize = 30;

Bytes entryWith(const std::vector<Bytes>& extensions) {
  ImageEntry entry;
  entry.extensions = extensions;
  return entry.build();
}

/// The parts of a file, one word each; '*' stands for chunks of media data.
struct Layout {
  std::string name;
  std::vector<std::string> parts;
  Bytes before, after;  ///< the sample description
  SavePlace place = SavePlace::Tail;
  std::size_t innerFree = 0;  ///< a `free` of that size in moov/udta
  bool wideMovie = false;     ///< a 64-bit size
  bool wideOffsets = false;
  std::size_t bulk = 0;
};

Bytes movieAtom(const Layout& layout, const std::vector<std::uint64_t>& chunks) {
  MovieSpec movie;
  TrackSpec& track = movie.tracks[0];
  track.entries = {layout.before};
  track.chunkOffsets = chunks;
  track.wideOffsets = layout.wideOffsets;
  track.sizes.assign(3 * chunks.size(), chunkSize / 3);
  track.durations = {{static_cast<std::uint32_t>(3 * chunks.size()), 1}};
  std::vector<Bytes> data{AtomBuilder("name").zeros(layout.bulk).build()};
  if (layout.innerFree != 0) data.push_back(AtomBuilder("free").zeros(layout.innerFree - 8).build());
  movie.more = {atomOf("udta", data)};
  const Bytes narrow = movie.build();
  if (!layout.wideMovie) return narrow;
  Bytes wide = AtomBuilder("moov").u64(narrow.size() + 8).bytes(ByteView(narrow).subspan(8)).build();
  write32(wide, 0, 1);
  return wide;
}

Bytes mediaBytes(std::size_t count, unsigned seed) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(1 + (i * 7 + seed * 31) % 255);
  return bytes;
}

/// One part, and where in it a chunk lies, if any.
struct Part {
  Bytes bytes;
  std::size_t chunkAt = 0;  ///< 0 for none
};

Part partOf(const std::string& word, const Bytes& movie, unsigned seed) {
  const Bytes data = mediaBytes(700, seed);
  if (word == "ftyp") return {fileType("qt  ")};
  if (word == "wide") return {AtomBuilder("wide").build()};
  if (word == "mdat") return {AtomBuilder("mdat").bytes(data).build(), 8 + 600};
  if (word == "mdat64") {
    Bytes wide = AtomBuilder("mdat").u64(16 + data.size()).bytes(data).build();
    write32(wide, 0, 1);
    return {wide, 16 + 600};
  }
  if (word == "mdat0") {
    Bytes open = AtomBuilder("mdat").bytes(data).build();
    write32(open, 0, 0);
    return {open, 8 + 600};
  }
  if (word == "chunkInFree") return {AtomBuilder("free").bytes(data).build(), 8 + 100};
  if (word == "uuid") return {AtomBuilder("uuid").bytes(mediaBytes(40, 9)).build()};
  if (word == "moov" || word == "moov2") return {movie};
  if (word == "cutMoov") {
    Bytes cut(movie.begin(), movie.begin() + static_cast<std::ptrdiff_t>(movie.size() / 2));
    write32(cut, 4, fourCC("free"));
    return {cut};
  }
  if (word == "zeros") return {Bytes(8)};
  const auto size = static_cast<std::size_t>(std::stoul(word.substr(4)));  // free123, skip123
  return {AtomBuilder(word.substr(0, 4)).bytes(mediaBytes(size - 8, 3)).build()};
}

SaveCase laidOut(Layout layout, std::size_t padding, std::size_t bulk) {
  layout.bulk = bulk;
  std::vector<std::uint64_t> chunks;
  Bytes file, movie;
  for (int pass = 0; pass < 2; ++pass) {
    const std::vector<std::uint64_t> known = chunks;
    std::size_t count = 0;
    for (const std::string& word : layout.parts) count += partOf(word, Bytes(16), 0).chunkAt != 0 ? 1U : 0U;
    movie = movieAtom(layout, pass == 0 ? std::vector<std::uint64_t>(count) : known);
    chunks.clear();
    file.clear();
    unsigned seed = 0;
    for (const std::string& word : layout.parts) {
      const Part part = partOf(word, movie, seed++);
      if (part.chunkAt != 0) chunks.push_back(file.size() + part.chunkAt);
      file.insert(file.end(), part.bytes.begin(), part.bytes.end());
      if (word == "ftyp" && padding != 0) {
        const Bytes pad = AtomBuilder("uuid").zeros(padding - 8).build();
        file.insert(file.end(), pad.begin(), pad.end());
      }
    }
  }
  return {layout.name, file, movie, {{0, 0, layout.after}}, layout.place};
}

/// A last mdat of size 0 whose size field lies in two sectors: such a movie is not saved in place.
bool sizelessAcrossSectors(const Bytes& file) {
  using namespace std::string_view_literals;
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  const std::size_t at = text.find("\0\0\0\0mdat"sv);
  return at != std::string_view::npos && at % 512 > 508;
}

}  // namespace

std::vector<SaveCase> saveCases(std::size_t padding, std::size_t bulk) {
  const Bytes bare = entryWith({});
  const Bytes gama = entryWith({gamaExtension(0x10000)});
  const Bytes otherGama = entryWith({gamaExtension(0x23333)});
  const Bytes profile = entryWith({profileExtension("prof", mediaBytes(900, 1))});
  const Bytes otherProfile = entryWith({profileExtension("prof", mediaBytes(900, 2))});
  using enum SavePlace;
  const std::vector<Layout> layouts{
      {"same size, movie first", {"ftyp", "moov", "mdat"}, profile, otherProfile, Slot},
      {"same size, movie first, 64-bit movie", {"ftyp", "moov", "mdat"}, profile, otherProfile, Slot, 0, true},
      {"same size, movie last", {"ftyp", "mdat", "moov"}, profile, otherProfile, Tail},
      {"grows into free", {"ftyp", "moov", "free600", "mdat"}, bare, gama, Slot},
      {"grows into a skip, all of it", {"ftyp", "moov", "skip12", "mdat"}, bare, gama, Slot},
      {"would leave too little", {"ftyp", "moov", "free16", "mdat"}, bare, gama, Tail},
      {"shrinks", {"ftyp", "moov", "mdat"}, gama, bare, Slot},
      {"shrinks by too little",
       {"ftyp", "moov", "mdat"},
       entryWith({AtomBuilder("gama").zeros(12).build(), gamaExtension(1)}),
       entryWith({AtomBuilder("gama").zeros(7).build(), gamaExtension(1)}),
       Tail},
      {"movie last", {"ftyp", "mdat", "moov"}, bare, gama, Tail},
      {"movie last behind free", {"ftyp", "mdat", "free2000", "moov"}, bare, gama, Slot},
      {"movie first with no room", {"ftyp", "moov", "mdat"}, bare, gama, Tail},
      {"room before the movie", {"ftyp", "free600", "moov", "mdat"}, bare, gama, Slot},
      {"room on both sides", {"ftyp", "free8", "moov", "free8", "skip8", "mdat"}, bare, gama, Slot},
      {"free inside udta", {"ftyp", "moov", "mdat"}, bare, gama, Slot, 64},
      {"64-bit mdat", {"ftyp", "moov", "mdat64"}, bare, gama, Tail},
      {"64-bit movie", {"ftyp", "moov", "free99", "mdat"}, bare, gama, Tail, 0, true},
      {"64-bit movie last", {"ftyp", "mdat", "moov"}, bare, gama, Tail, 0, true},
      {"mdat of size 0", {"ftyp", "moov", "mdat0"}, bare, gama, Tail},
      {"mdat of size 0, room", {"ftyp", "moov", "free40", "mdat0"}, bare, gama, Slot},
      {"64-bit offsets", {"ftyp", "moov", "free100", "mdat"}, bare, gama, Slot, 0, false, true},
      {"wide", {"ftyp", "wide", "mdat", "moov"}, bare, gama, Tail},
      {"several mdat", {"ftyp", "mdat", "moov", "mdat", "mdat64"}, bare, gama, Tail},
      {"chunks inside a free", {"ftyp", "moov", "mdat", "chunkInFree", "uuid"}, bare, gama, Tail},
      {"trailing free", {"ftyp", "mdat", "moov", "free1500"}, bare, gama, Slot},
      {"trailing free far away", {"ftyp", "moov", "mdat", "free1500"}, bare, gama, Tail},
      {"leftover: incomplete free", {"ftyp", "moov", "mdat", "cutMoov"}, bare, gama, Tail},
      {"leftover: zeros", {"ftyp", "moov", "free400", "mdat", "zeros"}, bare, gama, Slot},
      {"leftover: second movie", {"ftyp", "moov", "mdat", "moov2"}, bare, gama, Tail},
      {"leftover: second movie, room", {"ftyp", "moov", "free300", "mdat", "moov2"}, gama, bare, Slot},
      {"leftover: second movie, same size", {"ftyp", "mdat", "moov", "moov2"}, profile, otherProfile, Slot}};
  std::vector<SaveCase> cases;
  for (const Layout& layout : layouts) {
    cases.push_back(laidOut(layout, padding, bulk));
    if (sizelessAcrossSectors(cases.back().file)) cases.pop_back();
  }
  cases.push_back(laidOut({"within one sector", {"ftyp", "moov", "mdat"}, gama, otherGama, Sector}, padding, bulk));
  return cases;
}

}  // namespace movie::test

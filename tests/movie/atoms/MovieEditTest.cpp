#include <algorithm>

#include <gtest/gtest.h>

#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieEdit.h"
#include "movie/atoms/MovieFile.h"
#include "tests/movie/atoms/BuiltFiles.h"

namespace movie {
namespace {

using namespace test;

Bytes movieWith(const std::vector<Bytes>& entries, const std::vector<Bytes>& more = {}) {
  MovieSpec movie;
  movie.tracks[0].entries = entries;
  movie.more = more;
  return movie.build();
}

TEST(MovieEdit, ReplacesOneDescriptionAndNothingElse) {
  const Bytes first = entryWith({}, {0, 0, 0, 0});
  const Bytes second = entryWith({gamaExtension(0x10000)});
  const Bytes larger = entryWith({gamaExtension(0x20000), unknownExtension()}, {0, 0, 0, 0});
  const Bytes movie = movieWith({first, second}, {unknownExtension()});
  const auto edited = editedMovieAtom(movie, {{0, 1, larger}});
  ASSERT_TRUE(edited) << edited.error().reason();
  EXPECT_EQ(*edited, movieWith({first, larger}, {unknownExtension()}));
  EXPECT_EQ(*editedMovieAtom(*edited, {{0, 1, second}}), movie);
}

TEST(MovieEdit, ReplacesInTheTrackThatIsMeant) {
  MovieSpec spec;
  spec.tracks.push_back(TrackSpec{});
  const Bytes entry = entryWith({gamaExtension(0x20000)});
  const auto edited = editedMovieAtom(spec.build(), {{1, 0, entry}});
  spec.tracks[1].entries = {entry};
  EXPECT_EQ(*edited, spec.build());
}

TEST(MovieEdit, KeepsSixtyFourBitSizes) {
  const Bytes plain = movieWith({entryWith({})});
  Bytes wide = AtomBuilder("moov").u64(plain.size() + 8).bytes(ByteView(plain).subspan(8)).build();
  write32(wide, 0, 1);
  const Bytes larger = entryWith({gamaExtension(0x20000)});
  const auto edited = editedMovieAtom(wide, {{0, 0, larger}});
  ASSERT_TRUE(edited) << edited.error().reason();
  EXPECT_EQ(read32(*edited, 0), 1U);
  EXPECT_EQ(read64(*edited, 8), edited->size());
  const Bytes narrow = movieWith({larger});
  EXPECT_EQ(Bytes(edited->begin() + 16, edited->end()), Bytes(narrow.begin() + 8, narrow.end()));
}

TEST(MovieEdit, KeepsTheTerminatorOfTheList) {
  const Bytes entry = entryWith({});
  const Bytes movie = movieWith({entry});
  // Four zero bytes behind the last entry, counted by every size around it.
  const auto terminated = editedMovieAtom(movie, {{0, 0, entry}});
  ASSERT_EQ(*terminated, movie);
  Bytes larger = entry;
  larger.insert(larger.end(), {0, 0, 0, 0});
  write32(larger, 0, static_cast<std::uint32_t>(larger.size()));
  Bytes withRest = *editedMovieAtom(movie, {{0, 0, larger}});
  const auto at = std::search(withRest.begin(), withRest.end(), larger.begin(), larger.end()) - withRest.begin();
  write32(withRest, static_cast<std::size_t>(at), static_cast<std::uint32_t>(entry.size()));
  const auto edited = editedMovieAtom(withRest, {{0, 0, entryWith({unknownExtension()})}});
  ASSERT_TRUE(edited);
  EXPECT_EQ(edited->size(), withRest.size() + unknownExtension().size());
  EXPECT_EQ(*editedMovieAtom(*edited, {{0, 0, entry}}), withRest);
}

TEST(MovieEdit, WritesDownTheSizeOfAMovieAtomThatReachesToTheEnd) {
  const Bytes movie = movieWith({entryWith({})});
  Bytes open = movie;
  write32(open, 0, 0);
  EXPECT_EQ(*editedMovieAtom(open, {}), movie);
}

TEST(MovieEdit, RefusesWhatItCannotPlace) {
  const Bytes movie = movieWith({entryWith({})});
  Bytes liar = entryWith({});
  liar.push_back(0);
  const Bytes cut(movie.begin(), movie.end() - 1);
  EXPECT_FALSE(editedMovieAtom(movie, {{1, 0, entryWith({})}}));
  EXPECT_FALSE(editedMovieAtom(movie, {{0, 1, entryWith({})}}));
  EXPECT_FALSE(editedMovieAtom(movie, {{0, 0, liar}}));
  EXPECT_FALSE(editedMovieAtom(cut, {}));
  EXPECT_FALSE(editedMovieAtom({}, {}));
  EXPECT_FALSE(editedMovieAtom(unknownExtension(), {}));
}

Bytes freeOf(std::size_t size) {
  return AtomBuilder("free").zeros(size - 8).build();
}

struct FreeCase {
  const char* name;
  Bytes (*around)(std::size_t freeSize);
};

const std::vector<FreeCase> freeCases{
    {"in moov",
     [](std::size_t size) {
       return movieWith({entryWith({})}, {freeOf(size), unknownExtension()});
     }},
    {"in udta",
     [](std::size_t size) {
       return movieWith({entryWith({})}, {atomOf("udta", {unknownExtension(), freeOf(size)})});
     }},
    {"in an ISO meta",
     [](std::size_t size) {
       const Bytes meta = AtomBuilder("meta").u32(0).bytes(unknownExtension()).bytes(freeOf(size)).build();
       return movieWith({entryWith({})}, {atomOf("udta", {meta})});
     }},
    {"in a QuickTime meta without a handler",
     [](std::size_t size) {
       return movieWith({entryWith({})}, {atomOf("meta", {unknownExtension(), freeOf(size)})});
     }},
    {"in a QuickTime meta", [](std::size_t size) {
       const Bytes meta = atomOf("meta", {AtomBuilder("hdlr").zeros(24).build(), freeOf(size)});
       return movieWith({entryWith({})}, {meta});
     }}};

TEST(MovieEdit, ResizesAFreeToReachASize) {
  for (const FreeCase& row : freeCases) {
    SCOPED_TRACE(row.name);
    const Bytes movie = row.around(40);
    for (const std::size_t size : {8U, 9U, 39U, 40U, 41U, 100U}) {
      const auto resized = movieAtomOfSize(movie, movie.size() - 40 + size);
      ASSERT_TRUE(resized) << size;
      EXPECT_EQ(*resized, row.around(size)) << size;
      EXPECT_TRUE(equalButForColors(movie, *resized));
    }
    for (const std::size_t size : {1U, 7U}) EXPECT_FALSE(movieAtomOfSize(movie, movie.size() - 40 + size)) << size;
    EXPECT_EQ(movieAtomOfSize(movie, movie.size() - 40)->size(), movie.size() - 40);
  }
  const Bytes none = movieWith({entryWith({})});
  EXPECT_FALSE(movieAtomOfSize(none, none.size() + 12));
}

// Without it, what follows could be taken for version and flags.
TEST(MovieEdit, LeavesAFreeThatAMetaBeginsWithAsItIs) {
  const Bytes movie = movieWith({entryWith({})}, {atomOf("meta", {freeOf(16), Bytes(4), freeOf(12)})});
  EXPECT_FALSE(movieAtomOfSize(movie, movie.size() - 16));
}

TEST(MovieEdit, TellsMoviesApartByAnythingButColors) {
  const Bytes movie = movieWith({entryWith({unknownExtension()})}, {freeOf(20)});
  EXPECT_TRUE(equalButForColors(movie, movieWith({entryWith({gamaExtension(5), unknownExtension()})}, {freeOf(8)})));
  EXPECT_TRUE(equalButForColors(movie, movieWith({entryWith({unknownExtension(), test::nclcExtension(1, 1, 1)})})));
  EXPECT_FALSE(equalButForColors(movie, movieWith({entryWith({})}, {freeOf(20)})));
  EXPECT_FALSE(equalButForColors(movie, movieWith({entryWith({unknownExtension()})}, {unknownExtension()})));
  for (std::size_t at = 4; at < movie.size() - 20; ++at) {
    Bytes other = movie;
    other[at] = static_cast<std::uint8_t>(other[at] ^ 0x55);
    EXPECT_FALSE(equalButForColors(movie, other)) << at;
  }
}

TEST(MovieEdit, KnowsAVideoTrackWhereverItsHandlerStands) {
  const auto handlerLast = [](Bytes movie) {
    const auto typeAt = [&](const char* type) { return std::search(movie.begin(), movie.end(), type, type + 4) - 4; };
    const auto handler = typeAt("hdlr"), information = typeAt("minf");
    const auto size = static_cast<std::ptrdiff_t>(read32(movie, static_cast<std::size_t>(information - movie.begin())));
    std::rotate(handler, information, information + size);
    return movie;
  };
  const Bytes movie = handlerLast(movieWith({entryWith({unknownExtension()})}));
  EXPECT_TRUE(equalButForColors(movie, handlerLast(movieWith({entryWith({gamaExtension(5), unknownExtension()})}))));
  EXPECT_FALSE(equalButForColors(movie, handlerLast(movieWith({entryWith({})}))));
}

TEST(MovieEdit, LooksOnlySoDeepIntoAtomsThatNestWithoutEnd) {
  for (const char* type : {"meta", "trak"}) {
    constexpr std::size_t levels = 200'000, step = 12;
    Bytes nest(levels * step);
    for (std::size_t i = 0; i < levels; ++i) {
      write32(nest, i * step, static_cast<std::uint32_t>((levels - i) * step));
      std::copy_n(type, 4, nest.begin() + static_cast<std::ptrdiff_t>(i * step + 4));
    }
    const Bytes movie = movieWith({entryWith({})}, {nest});
    EXPECT_FALSE(movieAtomOfSize(movie, movie.size() - step));
    EXPECT_TRUE(equalButForColors(movie, movie));
    EXPECT_TRUE(editedMovieAtom(movie, {{0, 0, entryWith({gamaExtension(1)})}}));
  }
}

}  // namespace
}  // namespace movie

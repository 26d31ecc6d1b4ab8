#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/movie/atoms/BuiltFiles.h"

namespace movie {
namespace {

using namespace test;

// --- the top level ---

Bytes wideMediaData(std::size_t body) {
  Bytes bytes = AtomBuilder("mdat").u64(16 + body).zeros(body).build();
  write32(bytes, 0, 1);
  return bytes;
}

Bytes openEnded(const Bytes& atom) {
  Bytes bytes = atom;
  write32(bytes, 0, 0);
  return bytes;
}

struct LayoutRow {
  const char* name;
  Bytes file;
  friend void PrintTo(const LayoutRow& row, std::ostream* out) { *out << row.name; }
};

class Layouts : public testing::TestWithParam<LayoutRow> {};

TEST_P(Layouts, Open) {
  const auto movie = opened(GetParam().file);
  ASSERT_TRUE(movie) << movie.error().message();
  EXPECT_EQ((*movie)->tracks().size(), 1U);
  EXPECT_EQ((*movie)->duration(), 72U);
}

const Bytes ftyp = fileType("qt  ");
const Bytes moov = MovieSpec{}.build();
const Bytes mdat = AtomBuilder("mdat").zeros(64).build();
const Bytes wideAtom = AtomBuilder("wide").build();
const Bytes space = AtomBuilder("free").zeros(30).build();
const Bytes skip = AtomBuilder("skip").zeros(3).build();
const Bytes otherMoov = atomOf("moov", {AtomBuilder("mvhd").zeros(12).u32(1).u32(1).zeros(80).build()});
const Bytes halfMdat(mdat.begin(), mdat.begin() + 30);

INSTANTIATE_TEST_SUITE_P(
    Files, Layouts,
    testing::Values(LayoutRow{"MovieLast", joined({ftyp, wideAtom, mdat, moov})},
                    LayoutRow{"MovieFirst", joined({ftyp, moov, mdat})}, LayoutRow{"MovieAlone", moov},
                    LayoutRow{"WithoutType", joined({mdat, moov})},
                    LayoutRow{"PaddedAllOver", joined({ftyp, space, skip, mdat, skip, moov, space})},
                    LayoutRow{"WideMediaData", joined({ftyp, wideMediaData(64), moov})},
                    LayoutRow{"OpenEndedMediaData", joined({ftyp, moov, openEnded(mdat)})},
                    LayoutRow{"OpenEndedMovie", joined({ftyp, mdat, openEnded(moov)})},
                    LayoutRow{"CutInTheMediaData", joined({ftyp, moov, halfMdat})},
                    LayoutRow{"ZerosAtTheEnd", joined({ftyp, mdat, moov, Bytes(100, 0)})},
                    LayoutRow{"ThreeBytesAtTheEnd", joined({ftyp, mdat, moov, Bytes{1, 2, 3}})},
                    LayoutRow{"JunkAtTheEnd", joined({ftyp, mdat, moov, Bytes(100, 0xEE)})},
                    LayoutRow{"TheFirstOfTwoMovies", joined({ftyp, mdat, moov, otherMoov})},
                    LayoutRow{"UnknownAtoms", joined({AtomBuilder("uuid").zeros(16).build(), ftyp,
                                                      AtomBuilder("meta").zeros(9).build(), mdat, moov})}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(MovieLayout, IgnoresWhatItDoesNotNeedInsideTheMovieAtom) {
  MovieSpec spec;
  Bytes broken = AtomBuilder("zzzz").zeros(4).build();
  write32(broken, 0, 0xFFFFFFFF);
  spec.more = {atomOf("udta", {broken}), atomOf("meta", {broken}), AtomBuilder("iods").zeros(5).build(), Bytes(4, 0)};
  EXPECT_EQ(opening(around(spec.build()))->tracks().size(), 1U);
}

TEST(MovieLayout, TakesZerosBehindTheLastChildAsPadding) {
  MovieSpec spec;
  spec.more = {Bytes(32, 0)};
  EXPECT_EQ(opening(around(spec.build()))->tracks().size(), 1U);
}

// --- what is no movie ---

struct RefusalRow {
  const char* name;
  Bytes file;
  const char* reason;
  const char* atom;
  std::uint64_t offset;
  friend void PrintTo(const RefusalRow& row, std::ostream* out) { *out << row.name; }
};

class Refusals : public testing::TestWithParam<RefusalRow> {};

TEST_P(Refusals, NameTheReasonAndThePlace) {
  const auto movie = opened(GetParam().file);
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().reason(), GetParam().reason);
  EXPECT_EQ(movie.error().atom, GetParam().atom);
  EXPECT_EQ(movie.error().offset, GetParam().offset);
  EXPECT_NE(movie.error().message().find("Cannot read \""), std::string::npos);
}

Bytes text(std::string_view words) {
  return Bytes(words.begin(), words.end());
}
Bytes cutAt(const Bytes& bytes, std::size_t length) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
}
Bytes withSize(Bytes bytes, std::size_t at, std::uint32_t size) {
  write32(bytes, at, size);
  return bytes;
}
Bytes manyTracks() {
  Bytes one = AtomBuilder("trak").build();
  std::vector<Bytes> parts{AtomBuilder("mvhd").zeros(12).u32(600).u32(1).zeros(80).build()};
  parts.insert(parts.end(), 4097, one);
  return atomOf("moov", parts);
}

const Bytes noHeader = atomOf("moov", {TrackSpec{}.build()});
const Bytes reference = atomOf("moov", {atomOf("rmra", {})});
const Bytes noScale = atomOf("moov", {AtomBuilder("mvhd").zeros(100).build()});
const Bytes shortHeader = atomOf("moov", {AtomBuilder("mvhd").zeros(12).u32(600).build()});
const Bytes negativeScale = atomOf("moov", {AtomBuilder("mvhd").zeros(12).u32(0x80000000).zeros(84).build()});
constexpr const char* past = "the atom reaches past the end of its parent";
constexpr const char* below = "the size of the atom is below that of its header";

INSTANTIATE_TEST_SUITE_P(
    Files, Refusals,
    testing::Values(
        RefusalRow{"Empty", {}, "the file is empty", "", 0},
        RefusalRow{"OneByte", {0}, "there is no movie atom", "", 0},
        RefusalRow{"Text", text("This is not a movie, but a letter to a friend."), "it is not a movie", "", 0},
        RefusalRow{"ShortText", text("hi\n"), "there is no movie atom", "", 0},
        RefusalRow{"Zeros", Bytes(4096, 0), "there is no movie atom", "", 0},
        RefusalRow{"NoMovieAtom", joined({ftyp, mdat}), "there is no movie atom", "", 0},
        RefusalRow{"CutInTheMediaData", joined({ftyp, halfMdat}),
                   "there is no movie atom; the walk over the atoms ends at a damaged one, or the file was cut", "mdat",
                   20},
        RefusalRow{"CutInTheMovieAtom", cutAt(joined({ftyp, moov}), 60),
                   "the movie atom reaches past the end of the file", "moov", 20},
        RefusalRow{"MovieAtomOfSeven", withSize(joined({ftyp, moov}), 20, 7), below, "moov", 20},
        RefusalRow{"MovieAtomOverTheMediaData",
                   withSize(joined({ftyp, moov, mdat}), 20, static_cast<std::uint32_t>(moov.size() + mdat.size())),
                   "the movie atom reaches over other atoms of the file", "moov", 20},
        RefusalRow{"OpenEndedMovieAtomBeforeTheMediaData", withSize(joined({ftyp, moov, mdat}), 20, 0),
                   "the movie atom reaches over other atoms of the file", "moov", 20},
        RefusalRow{"EmptyMovieAtom", AtomBuilder("moov").build(), "the movie atom has no movie header", "moov", 0},
        RefusalRow{"NoMovieHeader", joined({ftyp, noHeader}), "the movie atom has no movie header", "moov", 20},
        RefusalRow{"Reference", joined({ftyp, reference}), "it only refers to other movies", "moov", 20},
        RefusalRow{"NoTimeScale", joined({ftyp, noScale}), "the movie header has no time scale", "moov/mvhd", 28},
        RefusalRow{"NegativeTimeScale", joined({ftyp, negativeScale}), "the movie header has no time scale",
                   "moov/mvhd", 28},
        RefusalRow{"ShortMovieHeader", joined({ftyp, shortHeader}), "the movie header has no time scale", "moov/mvhd",
                   28},
        RefusalRow{"TrackHeaderTooLarge", withSize(joined({ftyp, moov}), 144, 0xFFFFFFFF), past, "moov/trak/tkhd", 144},
        RefusalRow{"TooManyTracks", manyTracks(), "the movie has too many tracks", "moov/trak", 116 + 8 * 4096}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(MovieLayout, RefusesAMovieAtomThatIsTooLargeToLoad) {
  Bytes head = AtomBuilder("moov").u64(std::uint64_t{600} << 20).build();
  write32(head, 0, 1);
  const TemporaryFile file(head);
  file.resize(std::uint64_t{601} << 20);
  const auto movie = MovieFile::open(file.path());
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().reason(), "the movie atom is too large");
}

// --- compressed ---

TEST(CompressedMovie, OpensAsTheMovieThatItHolds) {
  const auto movie = opening(around(test::compressedMovie(moov)));
  EXPECT_EQ(movie->duration(), 72U);
  EXPECT_EQ(movie->sampleTable(0).sampleCount(), 3U);
  EXPECT_EQ(*movie->readSample(0, 0, 2), (Bytes{0, 1}));
}

TEST(CompressedMovie, IsRefusedWithAReason) {
  Bytes damaged = test::compressedMovie(moov);
  damaged[damaged.size() - 20] ^= 0x55;
  const Bytes unknown =
      atomOf("moov", {atomOf("cmov", {AtomBuilder("dcom").code("abcd").build(), AtomBuilder("cmvd").u32(9).build()})});
  const Bytes incomplete = atomOf("moov", {atomOf("cmov", {AtomBuilder("dcom").code("zlib").build()})});
  const std::vector<std::pair<Bytes, const char*>> rows{
      {damaged, "the compressed movie atom is damaged"},
      {unknown, "the movie atom is compressed with the unknown method 'abcd'"},
      {incomplete, "the compressed movie atom is incomplete"},
      {test::compressedMovie(moov, 10), "the compressed movie atom is damaged"},
      {test::compressedMovie(moov, 0xFFFFFFFF), "the compressed movie atom claims to be too large"},
      {test::compressedMovie(mdat), "no movie atom comes out of it"},
      {test::compressedMovie(Bytes{}), "no movie atom comes out of it"},
      {test::compressedMovie(test::compressedMovie(moov)), "the movie atom has no movie header"}};
  for (const auto& [bytes, reason] : rows) {
    const auto movie = opened(around(bytes));
    ASSERT_FALSE(movie) << reason;
    EXPECT_EQ(movie.error().reason(), reason);
    EXPECT_EQ(movie.error().atom.substr(0, 4), "moov");
  }
}

TEST(CompressedMovie, TellsThePlaceOfTheWholeWhenItsInsideIsMalformed) {
  Bytes inside = moov;
  write32(inside, 8 + 108 + 8, 7);
  const auto movie = opened(around(test::compressedMovie(inside)));
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().atom, "moov/trak/tkhd");
  EXPECT_EQ(movie.error().offset, 20U + 72U);
}

}  // namespace
}  // namespace movie

#include <gtest/gtest.h>

#include "movie/quicktime/MovieFile.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::AtomBuilder;
using test::atomOf;
using test::fileType;
using test::ImageEntry;
using test::joined;
using test::MovieSpec;
using test::TemporaryFile;
using test::TrackSpec;
using test::typedMediaData;

using Opened = Result<std::shared_ptr<const MovieFile>>;

Opened opened(const Bytes& content, const std::string& extension = ".mov") {
  const TemporaryFile file(content, extension);
  return MovieFile::open(file.path());
}

/// A movie file around a moov: ftyp and 64 bytes of media data in front of it.
Bytes around(const Bytes& moov, std::string_view brand = "qt  ") {
  return joined({typedMediaData(brand, 64), moov});
}
Bytes around(const MovieSpec& movie) {
  return around(movie.build());
}

std::shared_ptr<const MovieFile> opening(const Bytes& content) {
  auto movie = opened(content);
  if (!movie) throw std::runtime_error(movie.error().message());
  return *movie;
}

std::shared_ptr<const MovieFile> withTrack(const TrackSpec& track) {
  MovieSpec movie;
  movie.tracks = {track};
  return opening(around(movie));
}

TEST(MovieFile, ReadsAnOrdinaryMovie) {
  const auto movie = opening(around(MovieSpec{}));
  EXPECT_EQ(movie->majorBrand(), fourCC("qt  "));
  EXPECT_TRUE(movie->isQuickTime());
  EXPECT_FALSE(movie->isFragmented());
  EXPECT_EQ(movie->timeScale(), 600);
  EXPECT_EQ(movie->duration(), 72U);
  ASSERT_EQ(movie->tracks().size(), 1U);
  const TrackInfo& track = movie->tracks()[0];
  EXPECT_EQ(track.id, 1U);
  EXPECT_TRUE(track.enabled);
  EXPECT_EQ(track.mediaType, videoMedia);
  EXPECT_EQ(track.duration, 75U);
  EXPECT_EQ(track.mediaTimeScale, 25);
  EXPECT_EQ(track.mediaDuration, 3U);
  EXPECT_EQ(track.width, 1920U << 16);
  EXPECT_EQ(track.height, 1080U << 16);
  EXPECT_EQ(track.matrix, TrackInfo().matrix);
  EXPECT_EQ(track.sampleCount, 3U);
  EXPECT_FALSE(track.external);
  ASSERT_EQ(track.sampleDescriptions.size(), 1U);
  EXPECT_EQ(track.sampleDescriptions[0], ImageEntry().build());
  EXPECT_EQ(movie->sampleTable(0).sampleCount(), 3U);
  EXPECT_EQ(movie->sampleTable(1).sampleCount(), 0U) << "there is no such track";
}

TEST(MovieFile, OpensWhateverTheExtension) {
  for (const char* extension : {".mov", ".mp4", ".m4v", ".qt", ".txt", ""}) {
    EXPECT_TRUE(opened(around(MovieSpec{}), extension)) << extension;
  }
}

TEST(MovieFile, KnowsTheBrand) {
  EXPECT_TRUE(opening(MovieSpec{}.build())->isQuickTime()) << "no ftyp";
  EXPECT_EQ(opening(MovieSpec{}.build())->majorBrand(), 0U);
  for (const char* brand : {"isom", "mp42", "M4V ", "iso5"}) {
    EXPECT_FALSE(opening(around(MovieSpec{}.build(), brand))->isQuickTime()) << brand;
  }
  EXPECT_TRUE(opening(joined({AtomBuilder("ftyp").u16(9).build(), MovieSpec{}.build()}))->isQuickTime()) << "cut off";
}

TEST(MovieFile, ReadsBothVersionsOfItsHeaders) {
  const std::uint64_t longTime = 0x1'2345'6789;
  MovieSpec spec;
  spec.version = 1;
  spec.duration = longTime;
  spec.tracks[0].version = 1;
  spec.tracks[0].flags = 0xE;
  spec.tracks[0].duration = longTime + 1;
  spec.tracks[0].mediaDuration = longTime + 2;
  spec.tracks[0].edits = {{longTime + 3, -1, 0x10000}, {5, std::int64_t{1} << 40, 0x8000}};
  const auto movie = opening(around(spec));
  const TrackInfo& track = movie->tracks()[0];
  EXPECT_EQ(movie->duration(), longTime);
  EXPECT_FALSE(track.enabled);
  EXPECT_EQ(track.duration, longTime + 1);
  EXPECT_EQ(track.mediaDuration, longTime + 2);
  EXPECT_EQ(track.mediaTimeScale, 25);
  EXPECT_EQ(track.width, 1920U << 16);
  EXPECT_EQ(track.matrix[8], 0x40000000);
  ASSERT_EQ(track.edits.size(), 2U);
  EXPECT_EQ(track.edits[0].segmentDuration, longTime + 3);
  EXPECT_EQ(track.edits[0].mediaTime, -1);
  EXPECT_EQ(track.edits[1].mediaTime, std::int64_t{1} << 40);
  EXPECT_EQ(track.edits[1].mediaRate, 0x8000);
}

TEST(MovieFile, ReadsANarrowEditListWithItsSign) {
  TrackSpec track;
  track.edits = {{30, -1, 0x10000}, {45, 2, 0x10000}};
  const auto movie = withTrack(track);
  ASSERT_EQ(movie->tracks()[0].edits.size(), 2U);
  EXPECT_EQ(movie->tracks()[0].edits[0].mediaTime, -1);
  EXPECT_EQ(movie->tracks()[0].edits[1].segmentDuration, 45U);
}

TEST(MovieFile, FindsDurationsThatItsHeadersDoNotGive) {
  for (const unsigned version : {0U, 1U}) {
    for (const std::uint64_t unknown : {std::uint64_t{0}, UINT64_MAX}) {
      MovieSpec spec;
      spec.version = spec.tracks[0].version = version;
      spec.duration = spec.tracks[0].duration = spec.tracks[0].mediaDuration = unknown;
      spec.tracks[0].durations = {{3, 5}};
      const auto movie = opening(around(spec));
      EXPECT_EQ(movie->tracks()[0].mediaDuration, 15U);
      EXPECT_EQ(movie->tracks()[0].duration, 360U);
      EXPECT_EQ(movie->duration(), 360U);
    }
  }
}

TEST(MovieFile, GivesALastEditOfNoLengthTheRestOfTheMedia) {
  TrackSpec track;
  track.duration = 0;
  track.mediaDuration = 50;
  track.edits = {{600, -1, 0x10000}, {0, 25, 0x10000}};
  const auto movie = withTrack(track);
  EXPECT_EQ(movie->tracks()[0].edits[1].segmentDuration, 600U);
  EXPECT_EQ(movie->tracks()[0].duration, 1200U);
}

TEST(MovieFile, KeepsAllSampleDescriptionsInOrder) {
  TrackSpec track;
  ImageEntry second;
  second.codec = "avc1";
  track.entries = {ImageEntry().build(), second.build()};
  const auto movie = withTrack(track);
  ASSERT_EQ(movie->tracks()[0].sampleDescriptions.size(), 2U);
  EXPECT_EQ(movie->tracks()[0].sampleDescriptions[1], second.build());
}

TEST(MovieFile, KeepsTheFirstSampleDescriptionWhenALaterOneIsBroken) {
  for (const std::uint32_t size : {0U, 1U, 7U, 0xFFFFFFFFU}) {
    TrackSpec track;
    Bytes broken = ImageEntry().build();
    write32(broken, 0, size);
    track.entries = {ImageEntry().build(), broken};
    EXPECT_EQ(withTrack(track)->tracks()[0].sampleDescriptions.size(), 1U) << size;
  }
}

TEST(MovieFile, TakesNoMoreSampleDescriptionsThanStsdSays) {
  TrackSpec track;
  track.entries = {ImageEntry().build(), ImageEntry().build()};
  track.entryCount = 1;
  EXPECT_EQ(withTrack(track)->tracks()[0].sampleDescriptions.size(), 1U);
  track.entryCount = 99;
  EXPECT_EQ(withTrack(track)->tracks()[0].sampleDescriptions.size(), 2U);
  track.entryCount = 0;
  EXPECT_TRUE(withTrack(track)->tracks()[0].sampleDescriptions.empty());
}

TEST(MovieFile, KnowsMediaInAnotherFile) {
  const Bytes self = AtomBuilder("alis").versionAndFlags(0, 1).build();
  const Bytes other = AtomBuilder("alis").versionAndFlags(0, 0).zeros(20).build();
  const Bytes nowhere = AtomBuilder("url ").versionAndFlags(0, 0).build();
  struct Row {
    std::vector<Bytes> references;
    unsigned index;
    bool external;
  };
  const std::vector<Row> rows{
      {{self}, 1, false},       {{other}, 1, true},    {{self, other}, 1, false},
      {{self, other}, 2, true}, {{other}, 0, false},   {{other}, 9, false},
      {{nowhere}, 1, false},    {{Bytes{}}, 1, false}, {{AtomBuilder("alis").build()}, 1, false}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    TrackSpec track;
    track.dataReferences = rows[i].references;
    ImageEntry entry;
    entry.dataReference = rows[i].index;
    track.entries = {entry.build()};
    const auto movie = withTrack(track);
    EXPECT_EQ(movie->tracks()[0].external, rows[i].external) << i;
    EXPECT_EQ(movie->readSample(0, 0, 4).has_value(), !rows[i].external) << i;
  }
}

TEST(MovieFile, OpensWithoutWhatATrackLacks) {
  for (const char* type :
       {"tkhd", "mdia", "mdhd", "hdlr", "minf", "dinf", "stbl", "stsd", "stts", "stsz", "stsc", "stco"}) {
    MovieSpec spec;
    spec.tracks.emplace_back();
    spec.tracks[0].without = {type};
    spec.tracks[1].id = 2;
    const auto movie = opening(around(spec));
    ASSERT_EQ(movie->tracks().size(), 2U) << type;
    EXPECT_GT(movie->tracks()[0].mediaTimeScale, 0) << type;
    EXPECT_LE(movie->sampleTable(0).sampleCount(), 3U) << type;
    movie->readSample(0, 2, 4).has_value();
    EXPECT_EQ(movie->tracks()[1].sampleCount, 3U) << type;
    EXPECT_EQ(movie->sampleTable(1).sampleCount(), 3U) << type;
  }
}

TEST(MovieFile, UsesTheMoviesScaleWhereTheMediaHasNone) {
  for (const std::uint32_t scale : {0U, 0x80000000U, 0xFFFFFFFFU}) {
    TrackSpec track;
    track.timeScale = scale;
    EXPECT_EQ(withTrack(track)->tracks()[0].mediaTimeScale, 600) << scale;
  }
}

TEST(MovieFile, ReadsOneSample) {
  TrackSpec track;
  track.sizes = {4, 6, 8};
  const auto movie = withTrack(track);
  EXPECT_EQ(*movie->readSample(0, 0, 100), (Bytes{0, 1, 2, 3}));
  EXPECT_EQ(*movie->readSample(0, 1, 4), (Bytes{4, 5, 6, 7}));
  EXPECT_EQ(*movie->readSample(0, 2, 100), (Bytes{10, 11, 12, 13, 14, 15, 16, 17}));
  EXPECT_FALSE(movie->readSample(0, 3, 100));
  EXPECT_FALSE(movie->readSample(1, 0, 100));
}

TEST(MovieFile, RefusesToReadASamplePastTheEnd) {
  TrackSpec track;
  track.wideOffsets = true;
  for (const std::uint64_t offset : {std::uint64_t{100'000}, UINT64_MAX - 4, UINT64_MAX}) {
    track.chunkOffsets = {offset};
    const auto sample = withTrack(track)->readSample(0, 0, 4);
    ASSERT_FALSE(sample);
    EXPECT_EQ(sample.error().reason, "the sample lies past the end of the file");
  }
  track.chunkOffsets = {28};
  track.sizes = {0xFFFFFFFF};
  EXPECT_FALSE(withTrack(track)->readSample(0, 0, 4));
}

TEST(MovieFile, ReadsATimecodeTrack) {
  TrackSpec timecode;
  timecode.mediaType = "tmcd";
  timecode.entries = {test::timecodeEntry(1, 30000, 1001, 30)};
  timecode.commonSize = 4;
  timecode.sampleCount = 1;
  timecode.durations = {{1, 900}};
  const auto movie = withTrack(timecode);
  EXPECT_EQ(movie->tracks()[0].mediaType, timecodeMedia);
  EXPECT_EQ(movie->tracks()[0].sampleCount, 1U);
  EXPECT_EQ(*movie->readSample(0, 0, 4), (Bytes{0, 1, 2, 3}));
}

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
};

class Layouts : public testing::TestWithParam<LayoutRow> {};

TEST_P(Layouts, Open) {
  const auto movie = opened(GetParam().file);
  ASSERT_TRUE(movie) << movie.error().message();
  EXPECT_EQ((*movie)->tracks().size(), 1U);
  EXPECT_EQ((*movie)->duration(), 72U);
}

const Bytes type = fileType("qt  ");
const Bytes moov = MovieSpec{}.build();
const Bytes mdat = AtomBuilder("mdat").zeros(64).build();
const Bytes wide = AtomBuilder("wide").build();
const Bytes space = AtomBuilder("free").zeros(30).build();
const Bytes skip = AtomBuilder("skip").zeros(3).build();
const Bytes otherMoov = atomOf("moov", {AtomBuilder("mvhd").zeros(12).u32(1).u32(1).zeros(80).build()});
const Bytes halfMdat(mdat.begin(), mdat.begin() + 30);

INSTANTIATE_TEST_SUITE_P(
    Files, Layouts,
    testing::Values(LayoutRow{"MovieLast", joined({type, wide, mdat, moov})},
                    LayoutRow{"MovieFirst", joined({type, moov, mdat})}, LayoutRow{"MovieAlone", moov},
                    LayoutRow{"WithoutType", joined({mdat, moov})},
                    LayoutRow{"PaddedAllOver", joined({type, space, skip, mdat, skip, moov, space})},
                    LayoutRow{"WideMediaData", joined({type, wideMediaData(64), moov})},
                    LayoutRow{"OpenEndedMediaData", joined({type, moov, openEnded(mdat)})},
                    LayoutRow{"OpenEndedMovie", joined({type, mdat, openEnded(moov)})},
                    LayoutRow{"CutInTheMediaData", joined({type, moov, halfMdat})},
                    LayoutRow{"ZerosAtTheEnd", joined({type, mdat, moov, Bytes(100, 0)})},
                    LayoutRow{"ThreeBytesAtTheEnd", joined({type, mdat, moov, Bytes{1, 2, 3}})},
                    LayoutRow{"JunkAtTheEnd", joined({type, mdat, moov, Bytes(100, 0xEE)})},
                    LayoutRow{"TheFirstOfTwoMovies", joined({type, mdat, moov, otherMoov})},
                    LayoutRow{"UnknownAtoms", joined({AtomBuilder("uuid").zeros(16).build(), type,
                                                      AtomBuilder("meta").zeros(9).build(), mdat, moov})}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(MovieFile, IgnoresWhatItDoesNotNeedInsideTheMovieAtom) {
  MovieSpec spec;
  Bytes broken = AtomBuilder("zzzz").zeros(4).build();
  write32(broken, 0, 0xFFFFFFFF);
  spec.more = {atomOf("udta", {broken}), atomOf("meta", {broken}), AtomBuilder("iods").zeros(5).build(), Bytes(4, 0)};
  EXPECT_EQ(opening(around(spec))->tracks().size(), 1U);
}

TEST(MovieFile, TakesZerosBehindTheLastChildAsPadding) {
  MovieSpec spec;
  spec.more = {Bytes(32, 0)};
  EXPECT_EQ(opening(around(spec))->tracks().size(), 1U);
}

// --- what is no movie ---

struct RefusalRow {
  const char* name;
  Bytes file;
  const char* reason;
  const char* atom;
  std::uint64_t offset;
};

class Refusals : public testing::TestWithParam<RefusalRow> {};

TEST_P(Refusals, NameTheReasonAndThePlace) {
  const auto movie = opened(GetParam().file);
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().reason, GetParam().reason);
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
        RefusalRow{"NoMovieAtom", joined({type, mdat}), "there is no movie atom", "", 0},
        RefusalRow{"CutInTheMediaData", joined({type, halfMdat}),
                   "there is no movie atom; the walk over the atoms ends at a damaged one, or the file was cut", "mdat",
                   20},
        RefusalRow{"CutInTheMovieAtom", cutAt(joined({type, moov}), 60),
                   "the movie atom reaches past the end of the file", "moov", 20},
        RefusalRow{"MovieAtomOfSeven", withSize(joined({type, moov}), 20, 7), below, "moov", 20},
        RefusalRow{"MovieAtomOverTheMediaData",
                   withSize(joined({type, moov, mdat}), 20, static_cast<std::uint32_t>(moov.size() + mdat.size())),
                   "the movie atom reaches over other atoms of the file", "moov", 20},
        RefusalRow{"OpenEndedMovieAtomBeforeTheMediaData", withSize(joined({type, moov, mdat}), 20, 0),
                   "the movie atom reaches over other atoms of the file", "moov", 20},
        RefusalRow{"EmptyMovieAtom", AtomBuilder("moov").build(), "the movie atom has no movie header", "moov", 0},
        RefusalRow{"NoMovieHeader", joined({type, noHeader}), "the movie atom has no movie header", "moov", 20},
        RefusalRow{"Reference", joined({type, reference}), "it only refers to other movies", "moov", 20},
        RefusalRow{"NoTimeScale", joined({type, noScale}), "the movie header has no time scale", "moov/mvhd", 28},
        RefusalRow{"NegativeTimeScale", joined({type, negativeScale}), "the movie header has no time scale",
                   "moov/mvhd", 28},
        RefusalRow{"ShortMovieHeader", joined({type, shortHeader}), "the movie header has no time scale", "moov/mvhd",
                   28},
        RefusalRow{"TrackHeaderTooLarge", withSize(joined({type, moov}), 144, 0xFFFFFFFF), past, "moov/trak/tkhd", 144},
        RefusalRow{"TooManyTracks", manyTracks(), "the movie has too many tracks", "moov/trak", 116 + 8 * 4096}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(MovieFile, RefusesAMovieAtomThatIsTooLargeToLoad) {
  Bytes head = AtomBuilder("moov").u64(std::uint64_t{600} << 20).build();
  write32(head, 0, 1);
  const TemporaryFile file(head);
  file.resize(std::uint64_t{601} << 20);
  const auto movie = MovieFile::open(file.path());
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().reason, "the movie atom is too large");
}

TEST(MovieFile, WritesItsErrorsAsSentences) {
  EXPECT_EQ((MovieError{"/a b.mov", "moov/trak", 44, "the atom is odd"}.message()),
            "Cannot read \"/a b.mov\": the atom is odd (atom moov/trak at offset 44).");
  EXPECT_EQ((MovieError{"/a.mov", "", 0, "it is a folder"}.message()), "Cannot read \"/a.mov\": it is a folder.");
  EXPECT_EQ((MovieError{"", "", 0, "there is no such file"}.message()),
            "Cannot read the movie: there is no such file.");
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
    EXPECT_EQ(movie.error().reason, reason);
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

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "movie/atoms/MovieFragments.h"
#include "tests/movie/atoms/BuiltFiles.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using namespace test;

constexpr std::uint32_t nonSync = 0x10000;

/// A moov whose one video track has no samples of its own, at offset 20 behind a ftyp.
Bytes emptyMovie(const Bytes& extends = movieExtends(1, 2, 10, nonSync)) {
  TrackSpec track;
  track.duration = track.mediaDuration = 0;
  track.durations.clear();
  track.sizes.clear();
  track.chunks.clear();
  track.chunkOffsets.clear();
  MovieSpec movie;
  movie.duration = 0;
  movie.tracks = {track};
  movie.more = {extends};
  return joined({test::fileType("iso5"), movie.build()});
}

Opened openedParts(const std::vector<Bytes>& parts) {
  return opened(joined(parts), ".mp4");
}

std::shared_ptr<const MovieFile> openingParts(const std::vector<Bytes>& parts) {
  return opening(joined(parts), ".mp4");
}

Bytes mediaData(std::size_t size, std::uint8_t from = 0) {
  AtomBuilder data("mdat");
  for (std::size_t i = 0; i < size; ++i) data.u8(static_cast<unsigned>(from + i) & 0xFF);
  return data.build();
}

TEST(MovieFragments, AreCountedAndTimed) {
  FragmentSpec first;
  first.decodeTime = 0;
  first.samples = {{2, 10}, {2, 10}, {3, 10}};
  FragmentSpec second;
  second.decodeTime = 7;
  second.samples = {{4, 10}, {5, 10}};
  const auto movie = openingParts({emptyMovie(), first.build(), mediaData(30), second.build(), mediaData(20)});
  EXPECT_TRUE(movie->isFragmented());
  EXPECT_FALSE(movie->isQuickTime());
  EXPECT_EQ(movie->tracks()[0].sampleCount, 5U);
  EXPECT_EQ(movie->tracks()[0].mediaDuration, 16U);
  EXPECT_EQ(movie->tracks()[0].duration, 384U);
  EXPECT_EQ(movie->duration(), 384U);
  const SampleTable& table = movie->sampleTable(0);
  const std::vector<std::int64_t> times{0, 2, 4, 7, 11};
  for (std::size_t i = 0; i < times.size(); ++i) EXPECT_EQ(table.decodeTimeOf(i), times[i]);
}

TEST(MovieFragments, FollowTheSamplesOfTheMovieAtom) {
  MovieSpec spec;
  spec.tracks[0].syncSamples = {{1, 3}};
  spec.more = {movieExtends(1, 1, 10, nonSync)};
  FragmentSpec fragment;
  fragment.runFlags = 0x401;
  fragment.samples = {{1, 10, nonSync}, {1, 10, 0}, {1, 10, nonSync}};
  const auto movie = openingParts({test::typedMediaData("qt  ", 64), spec.build(), fragment.build(), mediaData(30)});
  const SampleTable& table = movie->sampleTable(0);
  EXPECT_EQ(movie->tracks()[0].sampleCount, 6U);
  EXPECT_EQ(table.sampleCount(), 6U);
  EXPECT_EQ(table.duration(), 6);
  const std::vector<std::uint64_t> sync{0, 0, 2, 2, 4, 4};
  for (std::size_t i = 0; i < sync.size(); ++i) EXPECT_EQ(table.syncSampleAtOrBefore(i), sync[i]) << i;
}

TEST(MovieFragments, GoOnWithoutATimeOfTheirOwn) {
  FragmentSpec fragment;
  fragment.samples = {{2, 10}, {3, 10}};
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(20), fragment.build(), mediaData(20)});
  EXPECT_EQ(movie->sampleTable(0).decodeTimeOf(2), 5);
  EXPECT_EQ(movie->sampleTable(0).duration(), 10);
}

TEST(MovieFragments, LeaveAGapWhereTheirTimeSaysSo) {
  for (const unsigned version : {0U, 1U}) {
    FragmentSpec first;
    first.samples = {{2, 10}};
    FragmentSpec second = first;
    second.decodeTime = 50;
    second.decodeTimeVersion = version;
    const auto movie = openingParts({emptyMovie(), first.build(), mediaData(10), second.build(), mediaData(10)});
    EXPECT_EQ(movie->sampleTable(0).presentedAt(30)->index, 0U);
    EXPECT_EQ(movie->sampleTable(0).presentedAt(30)->duration, 50);
    EXPECT_EQ(movie->tracks()[0].mediaDuration, 52U);
  }
}

TEST(MovieFragments, TakeWhatTheyDoNotSayFromTheirHeaderThenFromTheMovie) {
  FragmentSpec plain;
  plain.runFlags = 0x1;
  plain.sampleCount = 3;
  FragmentSpec described = plain;
  described.headerFlags = 0x2003A;  // description, duration, size, flags
  described.headerFields = {1, 7, 5, 0};
  const auto movie = openingParts({emptyMovie(), plain.build(), mediaData(30), described.build(), mediaData(15)});
  const SampleTable& table = movie->sampleTable(0);
  EXPECT_EQ(table.sampleCount(), 6U);
  EXPECT_EQ(table.decodeTimeOf(3), 6);
  EXPECT_EQ(table.duration(), 27);
  EXPECT_EQ(table.syncSampleAtOrBefore(2), 0U);
  EXPECT_EQ(table.syncSampleAtOrBefore(5), 5U);
}

TEST(MovieFragments, GiveTheFirstSampleFlagsOfItsOwn) {
  FragmentSpec fragment;
  fragment.runFlags = 0x305;
  fragment.firstFlags = 0x2000000;
  fragment.samples = {{1, 10}, {1, 10}, {1, 10}};
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(30), fragment.build(), mediaData(30)});
  const SampleTable& table = movie->sampleTable(0);
  const std::vector<std::uint64_t> sync{0, 0, 0, 3, 3, 3};
  for (std::size_t i = 0; i < sync.size(); ++i) EXPECT_EQ(table.syncSampleAtOrBefore(i), sync[i]) << i;
}

TEST(MovieFragments, TakeASampleThatDependsOnOthersAsNoSync) {
  FragmentSpec fragment;
  fragment.runFlags = 0x401;
  fragment.samples = {{1, 10, 0x2000000}, {1, 10, 0x1000000}};
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(20)});
  EXPECT_EQ(movie->sampleTable(0).syncSampleAtOrBefore(1), 0U);
}

TEST(MovieFragments, ReorderTheirSamples) {
  FragmentSpec fragment;
  fragment.runFlags = 0xB01;
  fragment.samples = {{1, 10, 0, 1}, {1, 10, 0, 2}, {1, 10, 0, -1}};
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(30)});
  const SampleTable& table = movie->sampleTable(0);
  EXPECT_EQ(table.presentationTimeOf(2), 1);
  EXPECT_EQ(table.presentationTimeOf(1), 3);
  EXPECT_EQ(table.presentedAt(1)->index, 2U);
}

TEST(MovieFragments, LeadToTheirSamplesFromTheirOwnStart) {
  FragmentSpec fragment;
  fragment.samples = {{1, 2}, {1, 3}, {1, 3}};
  fragment.dataOffset = static_cast<std::int32_t>(fragment.build().size()) + 8;
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(8), fragment.build(), mediaData(8, 100)});
  EXPECT_EQ(*movie->readSample(0, 0, 9), (Bytes{0, 1}));
  EXPECT_EQ(*movie->readSample(0, 2, 9), (Bytes{5, 6, 7}));
  EXPECT_EQ(*movie->readSample(0, 4, 9), (Bytes{102, 103, 104}));
  EXPECT_FALSE(movie->readSample(0, 6, 9));
}

TEST(MovieFragments, LeadToTheirSamplesFromABaseOffset) {
  FragmentSpec fragment;
  fragment.headerFlags = 0x1;
  fragment.headerFields = {0, 0};
  fragment.runFlags = 0x300;
  fragment.samples = {{1, 2}, {1, 3}};
  const Bytes movieBytes = emptyMovie();
  fragment.headerFields[1] = static_cast<std::uint32_t>(movieBytes.size() + fragment.build().size()) + 8;
  const auto movie = openingParts({movieBytes, fragment.build(), mediaData(5, 40)});
  EXPECT_EQ(*movie->readSample(0, 1, 9), (Bytes{42, 43, 44}));
}

TEST(MovieFragments, OfAnotherTrackArePassedOver) {
  FragmentSpec fragment;
  fragment.trackId = 9;
  fragment.samples = {{1, 2}};
  const auto movie = openingParts({emptyMovie(), fragment.build(), mediaData(5)});
  EXPECT_EQ(movie->tracks()[0].sampleCount, 0U);
}

TEST(MovieFragments, AreIgnoredWhereTheMovieDoesNotAnnounceThem) {
  FragmentSpec fragment;
  fragment.samples = {{1, 2}};
  const auto movie = openingParts({emptyMovie(Bytes{}), fragment.build(), mediaData(5)});
  EXPECT_FALSE(movie->isFragmented());
  EXPECT_EQ(movie->tracks()[0].sampleCount, 0U);
}

TEST(MovieFragments, EndWhereTheFileWasCut) {
  FragmentSpec fragment;
  fragment.samples = {{1, 2}};
  const Bytes one = fragment.build();
  const Bytes half(one.begin(), one.begin() + 30);
  EXPECT_EQ(openingParts({emptyMovie(), one, mediaData(2), half})->tracks()[0].sampleCount, 1U);
}

TEST(MovieFragments, NameThePlaceWhereTheyAreMalformed) {
  FragmentSpec fragment;
  fragment.samples = {{1, 2}};
  for (const std::size_t at : {std::size_t{8}, std::size_t{24}, std::size_t{32}}) {
    for (const std::uint32_t size : {0U, 7U, 0xFFFFFFFFU}) {
      Bytes broken = fragment.build();
      write32(broken, at, size);
      const Bytes movieBytes = emptyMovie();
      const auto movie = openedParts({movieBytes, broken});
      ASSERT_FALSE(movie) << at;
      EXPECT_EQ(movie.error().offset, movieBytes.size() + at);
      EXPECT_EQ(movie.error().atom.substr(0, 5), "moof/");
    }
  }
}

TEST(MovieFragments, HoldTheirCountToTheBytesThatAreThere) {
  FragmentSpec fragment;
  fragment.samples = {{1, 2}, {1, 3}};
  fragment.sampleCount = 0xFFFFFFFF;
  EXPECT_EQ(openingParts({emptyMovie(), fragment.build()})->tracks()[0].sampleCount, 2U);
}

TEST(MovieFragments, AreQuickWithCountsThatNoBytesStandFor) {
  FragmentSpec fragment;
  fragment.runFlags = 0x1;
  fragment.sampleCount = 0xFFFFFFFF;
  for (const std::uint32_t flags : {0U, nonSync}) {
    const auto movie = openingParts({emptyMovie(movieExtends(1, 2, 0, flags)), fragment.build(), fragment.build()});
    EXPECT_EQ(movie->tracks()[0].sampleCount, 2 * std::uint64_t{0xFFFFFFFF});
    EXPECT_EQ(movie->sampleTable(0).syncSampleAtOrBefore(0xFFFF), flags == 0 ? 0xFFFFU : 0U);
  }
}

TEST(MovieFragments, MayCarryNothing) {
  const std::vector<Bytes> empty{
      AtomBuilder("moof").build(), atomOf("moof", {atomOf("traf", {})}),
      atomOf("moof", {atomOf("traf", {AtomBuilder("tfhd").u32(0).build()})}),
      atomOf("moof", {atomOf("traf", {AtomBuilder("tfhd").u32(0).u32(1).build(), AtomBuilder("tfdt").build(),
                                      AtomBuilder("trun").u32(0).build()})})};
  for (const Bytes& fragment : empty) EXPECT_EQ(openingParts({emptyMovie(), fragment})->tracks()[0].sampleCount, 0U);
}

TEST(MovieFragments, AreRefusedWhenOneIsTooLargeToLoad) {
  Bytes head = AtomBuilder("moof").build();
  write32(head, 0, std::uint32_t{65} << 20);
  const TemporaryFile file(joined({emptyMovie(), head}));
  file.resize(std::uint64_t{66} << 20);
  const auto movie = MovieFile::open(file.path());
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().reason(), "the movie fragments are too large");
}

}  // namespace
}  // namespace movie

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/movie/atoms/BuiltFiles.h"

namespace movie {
namespace {

using namespace test;

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
  EXPECT_FALSE(track.isExternal(0));
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
    EXPECT_EQ(movie->tracks()[0].isExternal(0), rows[i].external) << i;
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
    EXPECT_EQ(sample.error().reason(), "the sample lies past the end of the file");
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

}  // namespace
}  // namespace movie

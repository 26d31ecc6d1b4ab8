#include <algorithm>
#include <chrono>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/movie/decode/SoundFixture.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/MovieFixture.h"

namespace movie {
namespace {

using namespace movie::test;
using testing::Each;
using testing::HasSubstr;

constexpr std::uint64_t mediaData = 28;  // where the body of the mdat begins

/// A stsd entry of version 0.
Bytes soundEntry(const std::string& codec, unsigned channels, unsigned bits, unsigned rate = 48000) {
  return AtomBuilder(codec).zeros(6).u16(1).u16(0).zeros(6).u16(channels).u16(bits).zeros(4).u32(rate << 16).build();
}

/// A sound track of one sample for every frame.
TrackSpec soundTrack(const Bytes& entry, std::uint32_t frames, std::uint32_t sampleSize) {
  TrackSpec track;
  track.mediaType = "soun";
  track.timeScale = 48000;
  track.mediaDuration = frames;
  track.entries = {entry};
  track.durations = {{frames, 1}};
  track.commonSize = sampleSize;
  track.sampleCount = frames;
  track.sizes = {};
  track.chunks = {{1, frames, 1}};
  track.chunkOffsets = {mediaData};
  return track;
}

Bytes movieFile(const Bytes& content, const TrackSpec& track) {
  AtomBuilder data("mdat");
  data.bytes(content);
  MovieSpec movie;
  movie.tracks = {track};
  return joined({fileType("qt  "), data.build(), movie.build()});
}

void put16(Bytes& bytes, std::size_t at, int value, bool bigEndian = true) {
  bytes[at + (bigEndian ? 0 : 1)] = static_cast<std::uint8_t>(static_cast<unsigned>(value) >> 8);
  bytes[at + (bigEndian ? 1 : 0)] = static_cast<std::uint8_t>(value);
}

/// Frames of 16 bits, numbered: left n, right -n.
void putNumbered(Bytes& bytes, std::size_t at, int first, int count, bool bigEndian = true) {
  for (int i = 0; i < count; ++i, at += 4) {
    put16(bytes, at, first + i, bigEndian);
    put16(bytes, at + 2, -(first + i), bigEndian);
  }
}

void expectNumbered(SoundStream& stream, std::int64_t first, std::int64_t count) {
  const auto frames = readFrames(stream, first, count);
  for (std::int64_t i = 0; i < count; ++i) {
    const auto expected = static_cast<float>(first + i) / 32768.0F;
    ASSERT_EQ(frames[2 * static_cast<std::size_t>(i)], expected) << first << " " << i;
    ASSERT_EQ(frames[2 * static_cast<std::size_t>(i) + 1], -expected) << first << " " << i;
  }
}

// Chunks of several lengths that lie in no order, some of them behind each other.
TEST(SoundTables, FindChunksWhateverSizeTheTableGives) {
  Bytes content(8000);
  putNumbered(content, 4000, 0, 100);
  putNumbered(content, 100, 100, 100);
  putNumbered(content, 500, 200, 150);
  putNumbered(content, 7000, 350, 1);
  for (const std::uint32_t sampleSize : {1U, 4U, 2U}) {
    TrackSpec track = soundTrack(soundEntry("twos", 2, 16), 351, sampleSize);
    track.chunks = {{1, 100, 1}, {3, 150, 1}, {4, 1, 1}};
    track.chunkOffsets = {mediaData + 4000, mediaData + 100, mediaData + 500, mediaData + 7000};
    const TemporaryFile file(movieFile(content, track));
    const auto stream = streamOf(file.path());
    EXPECT_EQ(stream->rate(), 48000);
    EXPECT_EQ(stream->frameCount(), 351);
    expectNumbered(*stream, 0, 351);
    for (const std::int64_t first : {350, 0, 199, 99, 100, 101, 201, 349, 50}) {
      expectNumbered(*stream, first, std::min<std::int64_t>(60, 351 - first));
    }
  }
}

TEST(SoundTables, FollowTheSampleDescriptionOfEachChunk) {
  Bytes content(2000);
  putNumbered(content, 0, 0, 100, true);
  putNumbered(content, 400, 100, 100, false);
  TrackSpec track = soundTrack(soundEntry("twos", 2, 16), 200, 4);
  track.entries.push_back(soundEntry("sowt", 2, 16));
  track.chunks = {{1, 100, 1}, {2, 100, 2}};
  track.chunkOffsets = {mediaData, mediaData + 400};
  const TemporaryFile file(movieFile(content, track));
  const auto stream = streamOf(file.path());
  expectNumbered(*stream, 0, 200);
  expectNumbered(*stream, 150, 50);
  expectNumbered(*stream, 20, 100);
}

// What cannot be counted by frames is told, however many chunks of it there are, and what follows is heard.
TEST(SoundTables, TellOfAnotherKindOfSoundWithinTheTrack) {
  Bytes content(2000);
  putNumbered(content, 0, 0, 100);
  putNumbered(content, 1600, 300, 100);
  TrackSpec track = soundTrack(soundEntry("twos", 2, 16), 400, 4);
  track.entries.push_back(soundEntry(".mp3", 2, 16));
  track.chunks = {{1, 100, 1}, {2, 100, 2}, {4, 100, 1}};
  track.chunkOffsets = {mediaData, mediaData + 500, mediaData + 1000, mediaData + 1600};
  const TemporaryFile file(movieFile(content, track));
  const auto stream = streamOf(file.path());
  std::vector<float> frames(std::size_t{2} * 400, 5.0F);
  const auto read = stream->read(0, frames);
  ASSERT_FALSE(read.has_value());
  EXPECT_THAT(read.error().reason(), HasSubstr("the kind of sound changes"));
  EXPECT_EQ(frames[2 * 99], 99 / 32768.0F);
  EXPECT_THAT(std::vector<float>(frames.begin() + 200, frames.begin() + 600), Each(0.0F));
  EXPECT_EQ(frames[2 * 399], 399 / 32768.0F);
}

// As older writers put it: a sample for every frame, although 64 of them share a packet.
TEST(SoundTables, CountPacketsByTheirFrames) {
  const std::string modern = fixtureMovie(
      "ima.mov",
      {"-f", "lavfi", "-i", "aevalsrc=0.4*sin(2000*t)|0.3*sin(3000*t):s=48000:d=0.5", "-c:a", "adpcm_ima_qt"});
  const auto original = opened(modern);
  const std::uint64_t packets = original->sampleTable(0).sampleCount();
  Bytes content;
  for (std::uint64_t i = 0; i < packets; ++i) {
    const auto packet = original->readSample(0, i, 1000);
    ASSERT_TRUE(packet.has_value());
    content.insert(content.end(), packet->begin(), packet->end());
  }
  TrackSpec track =
      soundTrack(original->tracks()[0].sampleDescriptions[0], static_cast<std::uint32_t>(packets * 64), 1);
  const std::uint32_t perChunk = 64 * 20;
  track.chunks = {{1, perChunk, 1}};
  track.chunkOffsets.clear();
  for (std::uint64_t i = 0; i < packets; i += 20) track.chunkOffsets.push_back(mediaData + i * 68);
  const TemporaryFile file(movieFile(content, track));
  const auto stream = streamOf(file.path());
  EXPECT_EQ(stream->frameCount(), static_cast<std::int64_t>(packets * 64));
  const auto expected = readFrames(*streamOf(modern), 0, 20000);
  EXPECT_EQ(readFrames(*stream, 0, 20000), expected);
  const auto later = readFrames(*stream, 5001, 3000);
  for (std::size_t i = 0; i < later.size(); ++i) ASSERT_NEAR(later[i], expected[std::size_t{2} * 5001 + i], 0.005) << i;
}

struct Downmix {
  unsigned channels;
  std::vector<std::pair<double, double>> shares;  ///< left and right, before they are scaled to one
};

TEST(SoundTables, MixChannelsDownByTheirNumber) {
  constexpr double less = 0.70710678;
  const std::pair<double, double> left{1, 0}, right{0, 1}, middle{less, less}, none{0, 0}, leftBehind{less, 0},
      rightBehind{0, less}, behind{0.5, 0.5};
  const std::vector<Downmix> rows{
      {1, {{1, 1}}},
      {2, {left, right}},
      {3, {left, right, middle}},
      {4, {left, right, left, right}},
      {5, {left, right, middle, leftBehind, rightBehind}},
      {6, {left, right, middle, none, leftBehind, rightBehind}},
      {7, {left, right, middle, none, leftBehind, rightBehind, behind}},
      {8, {left, right, middle, none, leftBehind, rightBehind, leftBehind, rightBehind}},
      {9, {left, right, left, right, left, right, left, right, left}},
      {16, {left, right, left, right, left, right, left, right, left, right, left, right, left, right, left, right}},
  };
  for (const Downmix& row : rows) {
    const std::size_t channels = row.channels;
    Bytes content(channels * channels * 2 + 2);
    for (std::size_t i = 0; i < channels; ++i)
      put16(content, (i * channels + i) * 2, 16384);  // frame i: channel i only
    const auto frames = static_cast<std::uint32_t>(channels);
    const TemporaryFile file(
        movieFile(content, soundTrack(soundEntry("twos", row.channels, 16), frames, 2 * row.channels)));
    const auto read = readFrames(*streamOf(file.path()), 0, static_cast<std::int64_t>(channels));
    double allLeft = 0;
    double allRight = 0;
    for (const auto& [toLeft, toRight] : row.shares) {
      allLeft += toLeft;
      allRight += toRight;
    }
    for (std::size_t i = 0; i < channels; ++i) {
      EXPECT_NEAR(read[2 * i], 0.5 * row.shares[i].first / allLeft, 1e-6) << channels << " " << i;
      EXPECT_NEAR(read[2 * i + 1], 0.5 * row.shares[i].second / allRight, 1e-6) << channels << " " << i;
    }
  }
}

TEST(SoundTables, LeaveSilenceWhereTheFileEnds) {
  Bytes content(400);
  putNumbered(content, 0, 0, 100);
  TrackSpec track = soundTrack(soundEntry("twos", 2, 16), 200, 4);
  track.chunks = {{1, 100, 1}};
  track.chunkOffsets = {mediaData, 1'000'000};
  const TemporaryFile file(movieFile(content, track));
  const auto stream = streamOf(file.path());
  expectNumbered(*stream, 0, 100);
  std::vector<float> frames(std::size_t{2} * 150, 5.0F);
  const auto read = stream->read(50, frames);
  ASSERT_FALSE(read.has_value());
  EXPECT_THAT(read.error().message(), HasSubstr("past the end of the file"));
  EXPECT_EQ(frames[2], 51 / 32768.0F);
  EXPECT_THAT(std::vector<float>(frames.begin() + std::ptrdiff_t{2} * 50, frames.end()), Each(0.0F));
}

struct Refused {
  std::string what, reason;
  TrackSpec track;
};

TEST(SoundTables, RefuseWhatCannotBePlayed) {
  TrackSpec none = soundTrack(soundEntry("twos", 2, 16), 0, 4);
  TrackSpec elsewhere = soundTrack(soundEntry("twos", 2, 16), 10, 4);
  elsewhere.dataReferences = {AtomBuilder("url ").versionAndFlags(0, 0).code("file").zeros(4).build()};
  Bytes shortEntry = soundEntry("twos", 2, 16);
  shortEntry.resize(30);
  write32(shortEntry, 0, 30);
  Bytes shortWide = soundEntry("lpcm", 3, 16);
  write16(shortWide, 16, 2);
  const std::vector<Refused> rows{
      {"no samples", "the sound track has no samples", none},
      {"unknown", "there is no decoder for the codec 'QQQQ'", soundTrack(soundEntry("QQQQ", 2, 16), 10, 4)},
      {"encrypted", "the samples are encrypted", soundTrack(soundEntry("enca", 2, 16), 10, 4)},
      {"no channels", "a sound of 0 channels cannot be played", soundTrack(soundEntry("twos", 0, 16), 10, 4)},
      {"many channels", "a sound of 65 channels cannot be played", soundTrack(soundEntry("twos", 65, 16), 10, 130)},
      {"short", "the sound description is too short", soundTrack(shortEntry, 10, 4)},
      {"version 2 that is short", "the sound description is too short", soundTrack(shortWide, 10, 4)},
      {"33 bits", "there is no decoder for the codec 'twos'", soundTrack(soundEntry("twos", 2, 33), 10, 4)},
  };
  for (const Refused& row : rows) {
    const TemporaryFile file(movieFile(Bytes(100), row.track));
    const auto stream = soundOf(opened(file.path()));
    ASSERT_FALSE(stream.has_value()) << row.what;
    EXPECT_EQ(stream.error().reason(), row.reason) << row.what;
  }
  const TemporaryFile file(movieFile(Bytes(100), elsewhere));
  const auto stream = streamOf(file.path());
  std::vector<float> frames(20, 5.0F);
  const auto read = stream->read(0, frames);
  ASSERT_FALSE(read.has_value());
  EXPECT_THAT(read.error().reason(), HasSubstr("in another file"));
  EXPECT_THAT(frames, Each(0.0F));
}

// Thousands of millions of samples that last no time, and one that lasts: reading ends all the same.
TEST(SoundTables, EndWithSamplesThatLastNoTime) {
  TrackSpec track = soundTrack(soundEntry("twos", 2, 16), 4'000'000'000U, 4);
  track.durations = {{3'999'999'000U, 0}, {1000, 1000}};
  track.chunks = {{1, 1, 1}};
  const TemporaryFile file(movieFile(Bytes(100), track));
  const auto stream = streamOf(file.path());
  const auto begin = std::chrono::steady_clock::now();
  std::vector<float> frames(std::size_t{2} * 4096);
  for (int i = 0; i < 10; ++i) static_cast<void>(stream->read(std::int64_t{4096} * i, frames));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
}  // namespace movie

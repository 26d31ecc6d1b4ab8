#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/MovieFixture.h"

namespace {

using movie::Bytes;
using movie::Movie;
using movie::MovieTime;
using namespace movie::test;

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();
constexpr std::int64_t longest = std::numeric_limits<std::int64_t>::max();

struct VideoFrames {
  std::uint32_t frames = 30, frameDuration = 1001, timeScale = 30000;
};

TrackSpec videoTrack(const VideoFrames& video) {
  TrackSpec track;
  track.timeScale = video.timeScale;
  track.mediaDuration = std::uint64_t{video.frames} * video.frameDuration;
  track.durations = {{video.frames, video.frameDuration}};
  track.commonSize = 1;
  track.sampleCount = video.frames;
  track.chunks = {{1, std::max(video.frames, 1U), 1}};
  return track;
}

TrackSpec timecodeTrack(bool dropFrame) {
  TrackSpec track;
  track.id = 2;
  track.mediaType = "tmcd";
  track.timeScale = 30000;
  track.mediaDuration = 30030;
  track.durations = {{1, 30030}};
  track.entries = {movie::test::timecodeEntry(dropFrame ? 1 : 0, 30000, 1001, 30)};
  track.sizes = {4};
  track.chunks = {{1, 1, 1}};
  return track;
}

TrackSpec soundTrack(const Bytes& entry) {
  TrackSpec track;
  track.id = 3;
  track.mediaType = "soun";
  track.entries = {entry};
  return track;
}

/// Opens a movie whose media data begins with a timecode sample.
std::unique_ptr<Movie> movieOf(std::vector<TrackSpec> tracks, std::uint64_t duration, std::uint32_t timeScale = 600,
                               std::uint32_t firstFrameNumber = 107892) {
  movie::test::MovieSpec layout;
  layout.timeScale = timeScale;
  layout.duration = duration;
  layout.tracks = std::move(tracks);
  const Bytes mediaData = AtomBuilder("mdat").u32(firstFrameNumber).zeros(200).build();
  const movie::test::TemporaryFile file(
      movie::test::joined({movie::test::fileType("qt  "), mediaData, layout.build()}));
  auto opened = Movie::movieWithFile(file.path());
  return opened ? std::move(*opened) : nullptr;
}

const movie::Track* firstTrack(const Movie& movie, movie::FourCC type) {
  return movie.tracksOfMediaType(type).front();
}

std::string text(const QString& string) {
  return string.toStdString();
}

Bytes soundEntry(unsigned version, std::uint32_t fixedRate) {
  return AtomBuilder("sowt").zeros(6).u16(1).u16(version).zeros(6).u16(2).u16(16).u32(0).u32(fixedRate).build();
}

Bytes soundEntryWithFloatRate(double rate) {
  return AtomBuilder("lpcm")
      .zeros(6)
      .u16(1)
      .u16(2)
      .zeros(6)
      .u16(3)
      .u16(16)
      .u16(0xFFFE)
      .u16(0)
      .u32(0x10000)
      .u32(72)
      .u64(std::bit_cast<std::uint64_t>(rate))
      .u32(2)
      .zeros(20)
      .build();
}

/// An AAC track's description as files of the ISO format have it: a whole number in the rate's field, and the stream's
/// own setup.
Bytes aacEntry(std::uint32_t fieldRate, unsigned objectType, const Bytes& setup) {
  const auto size = static_cast<unsigned>(setup.size());
  AtomBuilder esds("esds");
  esds.u32(0).u8(3).u8(20 + size).u16(1).u8(0).u8(4).u8(15 + size).u8(objectType).u8(0x15).u8(0).u16(0).u32(0).u32(0);
  esds.u8(5).u8(size);
  for (const std::uint8_t byte : setup) esds.u8(byte);
  return AtomBuilder("mp4a")
      .zeros(6)
      .u16(1)
      .zeros(8)
      .u16(2)
      .u16(16)
      .u32(0)
      .u32(fieldRate << 16)
      .bytes(esds.build())
      .build();
}

double sampleRateOf(const Bytes& entry, std::uint32_t timeScale = 600) {
  TrackSpec track = soundTrack(entry);
  track.timeScale = timeScale;
  const auto movie = movieOf({track}, 600);
  return movie ? QVQuickTime::sampleRateFromQTTrack(firstTrack(*movie, movie::soundMedia)) : -1.0;
}

}  // namespace

TEST(QVQuickTime, ComputesTheRateOfAMedia) {
  EXPECT_DOUBLE_EQ(QVQuickTime::fpsFromMedia(30, 30030, 30000), 30000.0 / 1001.0);
  EXPECT_EQ(QVQuickTime::fpsFromMedia(3, 3, 25), 25.0);
  EXPECT_DOUBLE_EQ(QVQuickTime::fpsFromMedia(10, 700, 600),
                   10 * 600 / 700.0);  // frames of several lengths: the average
  EXPECT_EQ(QVQuickTime::fpsFromMedia(0, 3, 25), 0.0);
  EXPECT_EQ(QVQuickTime::fpsFromMedia(-1, 3, 25), 0.0);
  EXPECT_EQ(QVQuickTime::fpsFromMedia(3, 0, 25), 0.0);
  EXPECT_EQ(QVQuickTime::fpsFromMedia(3, 3, 0), 0.0);
}

TEST(QVQuickTime, TellsTimebaseAndNtscFromTheRate) {
  struct Row {
    double fps;
    int timebase;
    bool ntsc;
  };
  const std::vector<Row> rows = {
      {29.97, 30, true},     {30000.0 / 1001.0, 30, true},
      {23.976, 24, true},    {24000.0 / 1001.0, 24, true},
      {59.94, 60, true},     {60000.0 / 1001.0, 60, true},
      {30.0, 30, false},     {24.0, 24, false},
      {25.0, 25, false},     {60.0, 60, false},
      {29.0, 29, false},     {23.0, 23, false},
      {59.0, 59, false},     {12.5, 13, false},
      {14.985, 15, false},   {47.952, 48, false},
      {29.000001, 30, true}, {0.0, 0, false},
  };
  for (const Row& row : rows)
    for (const bool dropFrame : {false, true})
      EXPECT_EQ(QVQuickTime::timingInfoForRate(row.fps, dropFrame),
                (TimingInfo{.timebase = row.timebase, .ntsc = row.ntsc, .dropFrame = dropFrame}))
          << row.fps;
}

TEST(QVQuickTime, TurnsTimesIntoFrameNumbers) {
  struct Row {
    long value, scale;
    double fps;
    int frame;
  };
  const std::vector<Row> rows = {
      {0, 600, 25, 0},
      {600, 600, 25, 25},
      {1001, 30000, 30000.0 / 1001.0, 1},
      {12, 600, 25, 1},  // half a frame rounds away from 0
      {11, 600, 25, 0},
      {-12, 600, 25, -1},
      {-11, 600, 25, 0},
      {0, 0, 25, 0},
      {7, 0, 25, 0},
      {600, 600, 0.0, 0},
      {600, 600, std::nan(""), 0},
      {longest, 1, 30, highest},
      {-longest, 1, 30, lowest},
      {longest, longest, 25, 25},
  };
  for (const Row& row : rows)
    EXPECT_EQ(QVQuickTime::frameCountForTimeValue(row.value, row.scale, row.fps), row.frame)
        << row.value << "/" << row.scale << " at " << row.fps;
}

TEST(QVQuickTime, TurnsFrameNumbersIntoTimes) {
  const auto time = [](std::int64_t value, std::int32_t scale) { return MovieTime{.value = value, .scale = scale}; };
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(10, 600, 25.0), time(240, 600));
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(1, 600, 29.97), time(20, 600));  // 20.02, rounded down
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(-1, 600, 29.97), time(-21, 600));
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(0, 600, 0.0), time(0, 600));
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(5, 600, 0.0), time(0, 600));
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(5, 0, 25.0), time(0, 0));
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(highest, highest, 1e-300), time(0, highest));  // no end
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(highest, highest, 1e-10), time(longest, highest));
}

TEST(QVQuickTime, MeasuresAFrame) {
  EXPECT_EQ(QVQuickTime::frameLength(600, 29.97), 20);
  EXPECT_EQ(QVQuickTime::frameLength(600, 25.0), 24);
  EXPECT_EQ(QVQuickTime::frameLength(24000, 23.976), 1001);
  EXPECT_EQ(QVQuickTime::frameLength(600, 0.0), 0);
}

TEST(QVQuickTime, FormatsTimes) {
  struct Row {
    std::int64_t value;
    std::int32_t scale;
    double fps;
    const char* formatted;
  };
  constexpr std::int64_t day = 86400;
  const std::vector<Row> rows = {
      {0, 0, 25, "00:00:00:00"},
      {0, 600, 25, "00:00:00:00"},
      {600 * 3723 + 240, 600, 25, "01:02:03:10"},
      {600 * (day + 7200), 600, 30, "26:00:00:00"},
      {600 * (4 * day + 4 * std::int64_t{3600}), 600, 30, "100:00:00:00"},
      {599, 600, 30, "00:00:00:30"},  // nothing is carried
      {600 * 59 + 599, 600, 1000, "00:00:59:998"},
      {-600 * (day + 7200) - 300, 600, 30, "26:00:00:15"},
      {std::int64_t{-600} * 65, 600, 30, "00:01:05:00"},
      {5, 600, 0.0, "00:00:00:00"},
      {5, -600, 25, "00:00:00:00"},
      {longest, 1, 25, "0-9:30:07:00"},  // the days are held at the largest of 32 bits, their hours wrap
  };
  for (const Row& row : rows)
    EXPECT_EQ(text(QVQuickTime::formattedQTTime(MovieTime{.value = row.value, .scale = row.scale}, row.fps)),
              row.formatted);
  for (const std::int64_t value : {longest, -longest, -longest - 1})
    EXPECT_GE(QVQuickTime::formattedQTTime(MovieTime{.value = value, .scale = 1}, 25.0).size(), 11);
}

TEST(QVQuickTime, ReadsAMoviesTimingFromItsVideoAndTimecodeTracks) {
  struct Row {
    VideoFrames video;
    bool hasTimecode, dropFrame;
    TimingInfo timing;
  };
  const std::vector<Row> rows = {
      {{30, 1001, 30000}, false, false, {30, true, false}},  // never drop frame without a timecode track
      {{30, 1001, 30000}, true, true, {30, true, true}},    {{30, 1001, 30000}, true, false, {30, true, false}},
      {{25, 1, 25}, true, true, {25, false, true}},         {{24, 1001, 24000}, false, false, {24, true, false}},
      {{60, 1001, 60000}, false, false, {60, true, false}}, {{25, 48, 600}, false, false, {13, false, false}},
  };
  for (const Row& row : rows) {
    std::vector<TrackSpec> tracks = {videoTrack(row.video)};
    if (row.hasTimecode) tracks.push_back(timecodeTrack(row.dropFrame));
    const auto movie = movieOf(tracks, 600);
    ASSERT_TRUE(movie);
    TimingInfo timing{.timebase = -1, .ntsc = !row.timing.ntsc, .dropFrame = !row.timing.dropFrame};
    QVQuickTime::getTimingInfoForMovie(movie.get(), &timing.timebase, &timing.ntsc, &timing.dropFrame);
    EXPECT_EQ(timing, row.timing) << row.timing.timebase;
    int timebase = -1;
    QVQuickTime::getTimingInfoForMovie(movie.get(), &timebase, nullptr, nullptr);
    EXPECT_EQ(timebase, row.timing.timebase);
    QVQuickTime::getTimingInfoForMovie(movie.get(), nullptr, nullptr, nullptr);
  }
}

TEST(QVQuickTime, ConvertsByTheFirstVideoTrack) {
  const auto movie = movieOf({videoTrack({30, 1001, 30000}), videoTrack({5, 1, 5})}, 600);
  ASSERT_TRUE(movie);
  const movie::Track* track = firstTrack(*movie, movie::videoMedia);
  EXPECT_DOUBLE_EQ(QVQuickTime::fpsForMovie(movie.get()), 30000.0 / 1001.0);
  EXPECT_DOUBLE_EQ(QVQuickTime::fpsFromQTTrack(track), 30000.0 / 1001.0);
  const MovieTime half{.value = 300, .scale = 600};
  EXPECT_EQ(QVQuickTime::frameCountForQTTime(half, movie.get()), 15);
  EXPECT_EQ(QVQuickTime::frameCountForQTTime(half, track), 15);
  EXPECT_EQ(text(QVQuickTime::formattedQTTime(half, movie.get())), "00:00:00:15");
  EXPECT_EQ(text(QVQuickTime::formattedQTTime(half, track)), "00:00:00:15");
  EXPECT_EQ(QVQuickTime::qtTimeFromFrame(15, movie.get()), (MovieTime{.value = 300, .scale = 600}));
  EXPECT_EQ(QVQuickTime::frameLengthForMovie(movie.get()), 20);
}

TEST(QVQuickTime, NarrowsATracksRateToSinglePrecision) {
  const auto movie = movieOf({videoTrack({30, 1001, 30000})}, 600);
  ASSERT_TRUE(movie);
  // Far enough out for the two rates to be frames apart.
  const MovieTime late{.value = std::int64_t{1} << 40, .scale = 30000};
  const int narrowed =
      QVQuickTime::frameCountForTimeValue(late.value, late.scale, static_cast<float>(30000.0 / 1001.0));
  EXPECT_NE(narrowed, QVQuickTime::frameCountForTimeValue(late.value, late.scale, 30000.0 / 1001.0));
  EXPECT_EQ(QVQuickTime::frameCountForQTTime(late, movie.get()), narrowed);
}

TEST(QVQuickTime, FindsTheLastFrame) {
  struct Row {
    VideoFrames video;
    std::uint64_t duration;
    MovieTime last;
  };
  const std::vector<Row> rows = {
      {{25, 24, 600}, 600, {.value = 576, .scale = 600}},
      {{1, 24, 600}, 24, {.value = 0, .scale = 600}},
      {{1, 24, 600}, 11, {.value = 11, .scale = 600}},  // less than half a frame long
  };
  for (const Row& row : rows) {
    const auto movie = movieOf({videoTrack(row.video)}, row.duration);
    ASSERT_TRUE(movie);
    EXPECT_EQ(QVQuickTime::lastFrameTimeForMovie(movie.get()), row.last) << row.duration;
  }
  const auto silent = movieOf({soundTrack(soundEntry(0, 48000U << 16))}, 77);
  ASSERT_TRUE(silent);
  EXPECT_EQ(QVQuickTime::lastFrameTimeForMovie(silent.get()), (MovieTime{.value = 77, .scale = 600}));
  EXPECT_EQ(QVQuickTime::lastFrameTimeForMovie(nullptr), MovieTime{});
}

TEST(QVQuickTime, CountsTimecodeFromTheTimecodeTrack) {
  const auto drop = movieOf({videoTrack({30, 1001, 30000}), timecodeTrack(true)}, 600);
  const auto nonDrop = movieOf({videoTrack({30, 1001, 30000}), timecodeTrack(false)}, 600, 600, 108000);
  ASSERT_TRUE(drop && nonDrop);
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({}, drop.get())), "01:00:00;00");
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({.value = 300, .scale = 600}, drop.get())), "01:00:00;15");
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({}, nonDrop.get())), "01:00:00:00");
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({.value = 1001, .scale = 30000}, nonDrop.get())), "01:00:00:01");
}

TEST(QVQuickTime, CountsTimecodeFromZeroWithoutATimecodeTrack) {
  const auto movie = movieOf({videoTrack({25, 24, 600})}, 600);
  ASSERT_TRUE(movie);
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({}, movie.get())), "00:00:00:00");
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({.value = 600 * 61 + 24, .scale = 600}, movie.get())), "00:01:01:01");
  const auto ntsc = movieOf({videoTrack({30, 1001, 30000})}, 600);
  ASSERT_TRUE(ntsc);
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({.value = std::int64_t{1800} * 1001, .scale = 30000}, ntsc.get())),
            "00:01:00:00");
}

TEST(QVQuickTime, FindsTheTimeOfATimecode) {
  const auto drop = movieOf({videoTrack({30, 1001, 30000}), timecodeTrack(true)}, 600, 30000);
  const auto plain = movieOf({videoTrack({25, 24, 600})}, 600);
  ASSERT_TRUE(drop && plain);
  const auto timeOf = [](const char* timecode, const std::unique_ptr<Movie>& movie) {
    return QVQuickTime::qtTimeFromTimecode(QString::fromLatin1(timecode), movie.get());
  };
  EXPECT_EQ(timeOf("01:00:00;00", drop), (MovieTime{.value = 0, .scale = 30000}));
  EXPECT_EQ(timeOf("01:00:00;15", drop), (MovieTime{.value = 15015, .scale = 30000}));
  EXPECT_EQ(timeOf("00:00:00:10", plain), (MovieTime{.value = 240, .scale = 600}));
  EXPECT_EQ(timeOf("nonsense", plain), (MovieTime{.value = 0, .scale = 600}));
}

TEST(QVQuickTime, CompletesATypedTimecodeAsTheMovieCounts) {
  const auto drop = movieOf({videoTrack({30, 1001, 30000}), timecodeTrack(true)}, 600, 30000);
  const auto nonDrop = movieOf({videoTrack({30, 1001, 30000}), timecodeTrack(false)}, 600, 600, 108000);
  const auto plain = movieOf({videoTrack({25, 24, 600})}, 600);
  ASSERT_TRUE(drop && nonDrop && plain);
  const auto completed = [](const char* typed, const std::unique_ptr<Movie>& movie) {
    return text(QVQuickTime::completedTimecode(QString::fromLatin1(typed), movie.get()));
  };
  EXPECT_EQ(completed("5", drop), "01:00:00;05");
  EXPECT_EQ(completed("115", drop), "01:00:01;15");
  EXPECT_EQ(completed("2:03:04:05", drop), "02:03:04;05");
  EXPECT_EQ(completed("115", nonDrop), "01:00:01:15");
  EXPECT_EQ(completed("115", plain), "00:00:01:15");
  EXPECT_EQ(text(QVQuickTime::completedTimecode(QStringLiteral("115"), nullptr)), "00:00:01:15");
}

TEST(QVQuickTime, StartsTimecodeWhereTheTrackDoesWhateverItsEditList) {
  TrackSpec edited = timecodeTrack(true);
  edited.edits = {{600, -1, 0x10000}, {600, 10 * 1001, 0x10000}};
  const auto movie = movieOf({videoTrack({30, 1001, 30000}), edited}, 600, 30000);
  ASSERT_TRUE(movie);
  EXPECT_EQ(text(QVQuickTime::timecodeAtTime({}, movie.get())), "01:00:00;00");
  EXPECT_EQ(QVQuickTime::qtTimeFromTimecode(QStringLiteral("01:00:00;15"), movie.get()),
            (MovieTime{.value = 15015, .scale = 30000}));
}

TEST(QVQuickTime, AnswersForMoviesWithoutPictures) {
  const auto silent = movieOf({soundTrack(soundEntry(0, 48000U << 16))}, 600);
  ASSERT_TRUE(silent);
  const std::unique_ptr<Movie> empty = Movie::movie();
  for (const Movie* movie : {static_cast<const Movie*>(nullptr), static_cast<const Movie*>(empty.get()),
                             static_cast<const Movie*>(silent.get())}) {
    const std::int32_t scale = movie == nullptr ? 0 : movie->timeScale();
    TimingInfo timing;
    QVQuickTime::getTimingInfoForMovie(movie, &timing.timebase, &timing.ntsc, &timing.dropFrame);
    EXPECT_EQ(timing, (TimingInfo{.timebase = 0, .ntsc = false, .dropFrame = false}));
    EXPECT_EQ(QVQuickTime::fpsForMovie(movie), 0.0);
    EXPECT_EQ(QVQuickTime::frameCountForQTTime({.value = 300, .scale = 600}, movie), 0);
    EXPECT_EQ(QVQuickTime::frameLengthForMovie(movie), 0);
    EXPECT_EQ(QVQuickTime::qtTimeFromFrame(5, movie), (MovieTime{.value = 0, .scale = scale}));
    EXPECT_EQ(text(QVQuickTime::timecodeAtTime({.value = 300, .scale = 600}, movie)), "00:00:00:00");
    EXPECT_EQ(text(QVQuickTime::formattedQTTime({.value = 90600, .scale = 600}, movie)), "00:02:31:00");
    EXPECT_EQ(QVQuickTime::qtTimeFromTimecode(QStringLiteral("00:00:01:00"), movie),
              (MovieTime{.value = 0, .scale = scale}));
  }
  EXPECT_EQ(QVQuickTime::fpsFromQTTrack(nullptr), 0.0);
  EXPECT_EQ(QVQuickTime::sampleRateFromQTTrack(nullptr), 0.0);
}

TEST(QVQuickTime, ReadsTheSampleRateOfASoundDescription) {
  EXPECT_EQ(sampleRateOf(soundEntry(0, 48000U << 16)), 48000.0);
  EXPECT_EQ(sampleRateOf(soundEntry(1, 44100U << 16)), 44100.0);
  EXPECT_EQ(sampleRateOf(soundEntry(0, (22254U << 16) + 0x8BA3)), 22254 + 0x8BA3 / 65536.0);
  EXPECT_EQ(sampleRateOf(soundEntryWithFloatRate(96000.0)), 96000.0);
  EXPECT_EQ(sampleRateOf(soundEntryWithFloatRate(192000.5)), 192000.5);
  EXPECT_EQ(sampleRateOf(soundEntryWithFloatRate(std::nan(""))), 0.0);
  EXPECT_EQ(sampleRateOf(soundEntry(3, 48000U << 16)), 0.0);
  EXPECT_EQ(sampleRateOf(soundEntry(2, 48000U << 16)), 0.0);  // too short for its version
  const Bytes entry = soundEntryWithFloatRate(96000.0);
  for (std::size_t size = 8; size < 48; ++size) {
    Bytes cut(entry.begin(), entry.begin() + static_cast<std::ptrdiff_t>(size));
    movie::write32(cut, 0, static_cast<std::uint32_t>(size));
    EXPECT_EQ(sampleRateOf(cut), 0.0) << size;
  }
}

TEST(QVQuickTime, ReadsARateThatTheFieldCannotHoldFromTheStreamOrTheTimeScale) {
  const struct {
    const char* what;
    Bytes entry;
    std::uint32_t timeScale;
    double rate;
  } rows[] = {
      {"by its index", aacEntry(0, 0x40, {0x10, 0x10}), 90000, 96000},
      {"the next index", aacEntry(0, 0x40, {0x10, 0x90}), 90000, 88200},
      {"in full", aacEntry(0, 0x40, {0x17, 0x80, 0xBB, 0x80, 0x10}), 90000, 96000},
      {"of another kind of stream", aacEntry(0, 0x67, {0x10, 0x10}), 90000, 96000},
      {"of an object type beyond 31", aacEntry(0, 0x40, {0xF9, 0x40, 0x20, 0x00}), 90000, 96000},
      {"doubled from half of it", aacEntry(0, 0x40, {0x29, 0x90, 0x10, 0x00}), 90000, 96000},
      {"what is left of it in the field", aacEntry(96000U - 65536U, 0x40, {0x10, 0x10}), 90000, 96000},
      {"a rate that the field holds", aacEntry(48000, 0x40, {0x11, 0x90}), 90000, 48000},
      {"half of it in the field, which holds it", aacEntry(24000, 0x40, {0x2B, 0x11, 0x88, 0x00}), 90000, 24000},
      {"without a stream's own", soundEntry(0, 0), 192000, 192000},
      {"cut short", aacEntry(0, 0x40, {0x10}), 96000, 96000},
      {"an index that stands for no rate", aacEntry(0, 0x40, {0x16, 0x90}), 96000, 96000},
      {"a stream that says nothing there", aacEntry(0, 0x6B, {0x10, 0x90}), 96000, 96000},
      {"of an unknown version", soundEntry(3, 0), 96000, 0},
  };
  for (const auto& row : rows) EXPECT_EQ(sampleRateOf(row.entry, row.timeScale), row.rate) << row.what;
}

TEST(QVQuickTime, ReadsTheSampleRateOfFilesAsTheyAreMade) {
  for (const int rate : {96000, 88200, 48000, 22050}) {
    for (const std::string kind : {"aac.mp4", "aac.m4a", "aac.mov", "alac.mp4", "alac.mov"}) {
      const std::string hertz = std::to_string(rate);
      const auto movie = Movie::movieWithFile(movie::test::fixtureMovie(
          hertz + "-" + kind, {"-f", "lavfi", "-i", "sine=sample_rate=" + hertz + ":duration=0.2", "-c:a",
                               kind.substr(0, kind.find('.'))}));
      ASSERT_TRUE(movie) << kind;
      EXPECT_EQ(QVQuickTime::sampleRateFromQTTrack(firstTrack(**movie, movie::soundMedia)), rate) << kind;
    }
  }
}

TEST(QVQuickTime, ReadsTheSampleRateOfSoundTracksOnly) {
  const auto movie = movieOf({videoTrack({25, 24, 600}), soundTrack(soundEntry(0, 48000U << 16))}, 600);
  ASSERT_TRUE(movie);
  EXPECT_EQ(QVQuickTime::sampleRateFromQTTrack(firstTrack(*movie, movie::soundMedia)), 48000.0);
  EXPECT_EQ(QVQuickTime::sampleRateFromQTTrack(firstTrack(*movie, movie::videoMedia)), 0.0);
  TrackSpec undescribed = soundTrack({});
  undescribed.entries.clear();
  const auto silent = movieOf({undescribed}, 600);
  ASSERT_TRUE(silent);
  EXPECT_EQ(QVQuickTime::sampleRateFromQTTrack(firstTrack(*silent, movie::soundMedia)), 0.0);
}

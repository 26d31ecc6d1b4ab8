#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "movie/Movie.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using namespace test;

/// A file of these tracks; the media data stands at offset 28.
Bytes fileOf(const std::vector<TrackSpec>& tracks, const Bytes& mediaData = Bytes(100, 0)) {
  MovieSpec spec;
  spec.tracks = tracks;
  return test::joined({test::fileType("qt  "), test::atomOf("mdat", {mediaData}), spec.build()});
}

std::unique_ptr<Movie> opened(const TemporaryFile& file) {
  auto movie = Movie::movieWithFile(file.path());
  EXPECT_TRUE(movie) << movie.error().message();
  return movie ? std::move(*movie) : Movie::movie();
}

TrackSpec trackOf(std::uint32_t id, const std::string& mediaType = "vide") {
  TrackSpec track;
  track.id = id;
  track.mediaType = mediaType;
  return track;
}

TrackSpec soundTrack(std::uint32_t id) {
  TrackSpec track = trackOf(id, "soun");
  track.entries = {AtomBuilder("sowt").zeros(28).build()};
  return track;
}

/// A timecode track whose one sample is the 32-bit number at the start of the media data.
TrackSpec timecodeTrack(const Bytes& entry = test::timecodeEntry(1, 30000, 1001, 30)) {
  TrackSpec track = trackOf(3, "tmcd");
  track.timeScale = 30000;
  track.mediaDuration = 300300;
  track.entries = {entry};
  track.durations = {{1, 300300}};
  track.sizes = {4};
  track.chunks = {{1, 1, 1}};
  return track;
}

Bytes imageEntry(const std::string& codec) {
  ImageEntry entry;
  entry.codec = codec;
  return entry.build();
}

Bytes bigEndian(std::int32_t value) {
  Bytes bytes(4);
  write32(bytes, 0, static_cast<std::uint32_t>(value));
  return bytes;
}

TEST(Movie, InitialisesWithAnyFileWhoseAtomsMakeAMovie) {
  const TemporaryFile movieNamedText(fileOf({TrackSpec{}}), ".txt"), textNamedMovie(Bytes(200, 'x')), empty(Bytes{});
  EXPECT_TRUE(Movie::canInitWithFile(movieNamedText.path()));
  EXPECT_FALSE(Movie::canInitWithFile(textNamedMovie.path()));
  EXPECT_FALSE(Movie::canInitWithFile(empty.path()));
  EXPECT_FALSE(Movie::canInitWithFile(movieNamedText.path() + ".absent"));
  const auto refused = Movie::movieWithFile(textNamedMovie.path());
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().file, textNamedMovie.path());
  EXPECT_FALSE(refused.error().reason().empty());
}

TEST(Movie, HasNothingWhenEmpty) {
  const auto movie = Movie::movie();
  EXPECT_EQ(movie->path(), "");
  EXPECT_EQ(movie->file(), nullptr);
  EXPECT_EQ(movie->currentTime(), MovieTime{});
  EXPECT_EQ(movie->duration(), MovieTime{});
  EXPECT_EQ(movie->timeScale(), 0);
  EXPECT_TRUE(movie->tracksOfMediaType(videoMedia).empty());
  EXPECT_FALSE(movie->timecodeStart());
  const auto frame = movie->frameImageAtTime({}, {});
  ASSERT_FALSE(frame);
  EXPECT_EQ(frame.error().reason(), "the movie has no video track");
  EXPECT_TRUE(movie->copy()->tracksOfMediaType(soundMedia).empty());
}

TEST(Movie, GivesTracksInTheirOrderEnabledOrNot) {
  TrackSpec disabled = trackOf(7);
  disabled.flags = 0;
  const TemporaryFile file(fileOf({soundTrack(2), disabled, soundTrack(9), trackOf(4)}));
  const auto movie = opened(file);
  const auto video = movie->tracksOfMediaType(videoMedia);
  ASSERT_EQ(video.size(), 2U);
  EXPECT_EQ(video[0]->id(), 7U);
  EXPECT_EQ(video[1]->id(), 4U);
  EXPECT_FALSE(video[0]->info().enabled);
  const auto sound = std::as_const(*movie).tracksOfMediaType(soundMedia);
  ASSERT_EQ(sound.size(), 2U);
  EXPECT_EQ(sound[0]->id(), 2U);
  EXPECT_EQ(sound[1]->id(), 9U);
  EXPECT_EQ(sound[0]->mediaType(), soundMedia);
  EXPECT_TRUE(movie->tracksOfMediaType(timecodeMedia).empty());
}

TEST(Movie, TellsItsTimesAndThoseOfItsMedia) {
  TrackSpec track;
  track.timeScale = 24000;
  track.mediaDuration = 3003;
  track.durations = {{3, 1001}};
  const TemporaryFile file(fileOf({track}));
  const auto movie = opened(file);
  EXPECT_EQ(movie->path(), file.path());
  EXPECT_EQ(movie->timeScale(), 600);
  EXPECT_EQ(movie->duration(), (MovieTime{72, 600, 0}));
  const Media& media = movie->tracksOfMediaType(videoMedia).at(0)->media();
  EXPECT_EQ(media.type(), videoMedia);
  EXPECT_EQ(media.sampleCount(), 3);
  EXPECT_EQ(media.timeScale(), 24000);
  EXPECT_EQ(media.duration(), (MovieTime{3003, 24000, 0}));
}

TEST(Movie, HasAPlayheadOfItsOwn) {
  const TemporaryFile file(fileOf({TrackSpec{}}));
  const auto movie = opened(file);
  EXPECT_EQ(movie->currentTime(), (MovieTime{0, 600, 0}));
  movie->setCurrentTime({50, 600, 1});
  const auto copy = movie->copy();
  EXPECT_EQ(copy->currentTime(), (MovieTime{50, 600, 1}));
  movie->gotoBeginning();
  EXPECT_EQ(movie->currentTime(), (MovieTime{0, 600, 0}));
  EXPECT_EQ(copy->currentTime(), (MovieTime{50, 600, 1})) << "the copy's playhead is its own";
  EXPECT_EQ(copy->file(), movie->file()) << "the file is shared";
}

TEST(Movie, CountsSampleDescriptionsFromOne) {
  TrackSpec track;
  track.entries = {imageEntry("apch"), imageEntry("avc1")};
  const TemporaryFile file(fileOf({track, soundTrack(2)}));
  const auto movie = opened(file);
  const Media& video = movie->tracksOfMediaType(videoMedia).at(0)->media();
  EXPECT_EQ(video.sampleDescriptionCount(), 2U);
  EXPECT_EQ(video.imageDescription(1).value().codec(), fourCC("apch"));
  EXPECT_EQ(video.imageDescription(2).value().codec(), fourCC("avc1"));
  EXPECT_EQ(video.sampleDescription(2), track.entries[1]);
  for (const std::size_t index : {std::size_t{0}, std::size_t{3}, std::numeric_limits<std::size_t>::max()}) {
    EXPECT_FALSE(video.imageDescription(index));
    EXPECT_FALSE(video.sampleDescription(index));
  }
  const Media& sound = movie->tracksOfMediaType(soundMedia).at(0)->media();
  EXPECT_FALSE(sound.imageDescription(1)) << "sound has no image description";
  EXPECT_EQ(sound.sampleDescription(1).value().size(), 36U);
}

TEST(Movie, ReplacesASampleDescriptionForItselfOnly) {
  TrackSpec track;
  track.entries = {imageEntry("apch"), imageEntry("avc1")};
  const TemporaryFile file(fileOf({track}));
  const auto movie = opened(file);
  const auto before = movie->copy();
  Media& media = movie->tracksOfMediaType(videoMedia).at(0)->media();
  auto description = media.imageDescription(2).value();
  ASSERT_EQ(description.setGamma(0x23333), noErr);
  ASSERT_TRUE(media.setSampleDescription(2, description));
  EXPECT_FALSE(media.setSampleDescription(0, description));
  EXPECT_FALSE(media.setSampleDescription(3, description));

  const auto gammaIn = [](const Movie& one, std::size_t index) {
    return one.tracksOfMediaType(videoMedia).at(0)->media().imageDescription(index).value().gamma();
  };
  EXPECT_EQ(gammaIn(*movie, 2), 0x23333);
  EXPECT_EQ(gammaIn(*movie, 1), std::nullopt);
  EXPECT_EQ(gammaIn(*before, 2), std::nullopt) << "an earlier copy keeps what it had";
  EXPECT_EQ(gammaIn(*movie->copy(), 2), 0x23333) << "a later one takes the edit over";
  EXPECT_EQ(gammaIn(*opened(file), 2), std::nullopt) << "the file stays as it is";
}

TEST(Movie, LivesOnInItsCopy) {
  const TemporaryFile file(fileOf({TrackSpec{}}));
  auto movie = opened(file);
  const auto copy = movie->copy();
  movie.reset();
  EXPECT_EQ(copy->tracksOfMediaType(videoMedia).at(0)->media().sampleCount(), 3);
}

TEST(Movie, ReadsTheStartOfItsTimecode) {
  for (const std::int32_t number : {0, 107892, -30, std::numeric_limits<std::int32_t>::max()}) {
    const TemporaryFile file(fileOf({TrackSpec{}, timecodeTrack()}, bigEndian(number)));
    const auto start = opened(file)->timecodeStart();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->frameNumber, number);
    EXPECT_EQ(start->flags, 1U);
  }
}

TEST(Movie, StartsItsTimecodeAtMediaTimeZeroWhateverTheEditListSays) {
  constexpr std::int32_t normal = 0x10000;
  constexpr std::int64_t frame = 1001;
  const struct {
    const char* what;
    std::vector<EditListEntry> edits;
  } rows[] = {
      {"no edit list", {}},
      {"from the beginning", {{600, 0, normal}}},
      {"from frame 25", {{600, 25 * frame, normal}}},
      {"from within frame 25", {{600, 25 * frame + 1000, normal}}},
      {"an empty edit first", {{600, -1, normal}, {600, 50 * frame, normal}}},
      {"nothing but an empty edit", {{600, -1, normal}}},
      {"from the second sample", {{600, 13 * frame, normal}}},
  };
  for (const auto& row : rows) {
    auto track = timecodeTrack();
    track.durations = {{2, 10 * 1001}};
    track.sizes = {4, 4};
    track.chunks = {{1, 2, 1}};
    track.edits = row.edits;
    const TemporaryFile file(fileOf({track}, test::joined({bigEndian(1000), bigEndian(5000)})));
    EXPECT_EQ(opened(file)->timecodeStart().value().frameNumber, 1000) << row.what;
  }
}

TEST(Movie, StartsAtFrameZeroWhereTheTimecodeSampleCannotBeRead) {
  auto lost = timecodeTrack();
  lost.chunkOffsets = {0x7FFFFFFF};
  auto small = timecodeTrack();
  small.sizes = {2};
  auto none = timecodeTrack();
  none.durations = {};
  none.sizes = {};
  none.chunks = {};
  none.chunkOffsets = {};
  for (const TrackSpec& track : {lost, small, none}) {
    const TemporaryFile file(fileOf({track}, bigEndian(1000)));
    const auto start = opened(file)->timecodeStart();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->frameNumber, 0);
    EXPECT_EQ(start->flags, 1U);
  }
}

TEST(Movie, HasNoTimecodeWithoutADescriptionOfIt) {
  const TemporaryFile without(fileOf({TrackSpec{}}));
  EXPECT_FALSE(opened(without)->timecodeStart());
  const Bytes whole = test::timecodeEntry(0, 25, 1, 25);
  Bytes cut(whole.begin(), whole.begin() + 32);
  write32(cut, 0, 32);
  const TemporaryFile shortened(fileOf({timecodeTrack(cut)}));
  EXPECT_FALSE(opened(shortened)->timecodeStart());
}

TEST(Movie, SurvivesHostileTimecodeNumbers) {
  for (const std::int32_t scale : {0, -1, 1, std::numeric_limits<std::int32_t>::max()}) {
    for (const std::int32_t duration : {0, -1, 1, std::numeric_limits<std::int32_t>::max()}) {
      auto track = timecodeTrack(test::timecodeEntry(0xFFFFFFFF, scale, duration, 255));
      track.version = 1;
      track.edits = {{600, std::numeric_limits<std::int64_t>::max(), 0x10000}};
      const TemporaryFile file(fileOf({track}, bigEndian(-5)));
      const auto start = opened(file)->timecodeStart();
      ASSERT_TRUE(start);
      EXPECT_GE(start->frameNumber, -5);
    }
  }
}

TEST(Movie, SaysWhyThereIsNoFrame) {
  TrackSpec noSamples;
  noSamples.durations = {};
  noSamples.sizes = {};
  noSamples.chunks = {};
  noSamples.chunkOffsets = {};
  TrackSpec noDescription;
  noDescription.entries = {};
  const struct {
    TrackSpec track;
    const char* reason;
  } rows[] = {{soundTrack(1), "the movie has no video track"},
              {noSamples, "the video track has no samples"},
              {noDescription, "the video track has no image description"}};
  for (const auto& row : rows) {
    const TemporaryFile file(fileOf({row.track}));
    const auto frame = opened(file)->frameImageAtTime({0, 600, 0}, {});
    ASSERT_FALSE(frame);
    EXPECT_EQ(frame.error().reason(), row.reason);
    EXPECT_EQ(frame.error().file, file.path());
  }
}

TEST(Movie, CopiesCanBeReadOnSeveralThreads) {
  const TemporaryFile file(fileOf({TrackSpec{}, timecodeTrack()}, bigEndian(1000)));
  const auto movie = opened(file);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([copy = std::shared_ptr<Movie>(movie->copy()), i] {
      for (int round = 0; round < 50; ++round) {
        copy->setCurrentTime({i, 600, 0});
        Media& media = copy->tracksOfMediaType(videoMedia).at(0)->media();
        auto description = media.imageDescription(1).value();
        description.setGamma(0x10000 + i);
        media.setSampleDescription(1, description);
        EXPECT_EQ(media.imageDescription(1).value().gamma(), 0x10000 + i);
        EXPECT_EQ(copy->timecodeStart().value().frameNumber, 1000);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace movie

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "cli/TimeArgument.h"
#include "movie/EditList.h"
#include "movie/Movie.h"
#include "tests/support/AtomBuilder.h"

namespace cli {
namespace {

using movie::Bytes;
using movie::Movie;
using movie::MovieTime;
using namespace movie::test;
using testing::HasSubstr;

class RefusedTime : public testing::TestWithParam<const char*> {};

TEST_P(RefusedTime, IsNeitherSecondsNorATimecode) {
  EXPECT_FALSE(parseTimeArgument(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Texts, RefusedTime,
                         testing::Values("", " ", "nan", "NaN", "inf", "-inf", "infinity", "1e999", "-1e999", "0x10",
                                         "1,5", "1.5s", " 1", "1 ", "1.2.3", "+", "-", ".", "soon", ":", ";", "a:b",
                                         "01:00:00:00 ", "-1:00", "1:\n2"));

TEST(TimeArgument, ReadsSeconds) {
  for (const auto& [text, seconds] : {std::pair("0", 0.0), std::pair("12.5", 12.5), std::pair("-1", -1.0),
                                      std::pair("1e2", 100.0), std::pair(".5", 0.5), std::pair("007", 7.0)}) {
    const auto time = parseTimeArgument(text);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(time->seconds, seconds);
  }
}

TEST(TimeArgument, ReadsWhatHoldsAColonOrSemicolonAsATimecode) {
  for (const char* text : {"01:00:00:00", "01:00:00;00", "1:2", ";12", "10:20.", "99:99:99:99:99"}) {
    const auto time = parseTimeArgument(text);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(time->text, text);
    EXPECT_FALSE(time->seconds);
  }
}

/// A movie of so many frames, opened.
struct OpenedMovie {
  explicit OpenedMovie(const MovieSpec& spec)
      : file(movie::test::joined({movie::test::typedMediaData("qt  ", 30), spec.build()})),
        movie(std::move(*Movie::movieWithFile(file.path()))) {}
  TemporaryFile file;
  std::unique_ptr<Movie> movie;
};

MovieSpec specOf(std::uint32_t timeScale, std::uint32_t frameDuration, std::uint32_t frames,
                 std::uint32_t movieScale = 600) {
  TrackSpec track;
  track.timeScale = timeScale;
  track.durations = {{frames, frameDuration}};
  track.mediaDuration = std::uint64_t{frameDuration} * frames;
  track.sizes.assign(frames, 1);
  track.chunks = {{1, frames, 1}};
  track.duration = track.mediaDuration * movieScale / timeScale;
  MovieSpec movie;
  movie.timeScale = movieScale;
  movie.duration = track.duration;
  movie.tracks = {track};
  return movie;
}

std::uint64_t frameAt(const OpenedMovie& opened, const std::string& text) {
  const MovieTime time = *timeInMovie(*parseTimeArgument(text), *opened.movie);
  return movie::sampleOnScreen(opened.movie->file()->tracks()[0], opened.movie->timeScale(),
                               opened.movie->file()->sampleTable(0), time)
      ->index;
}

TEST(TimeInMovie, HitsEveryFrameByItsStartWithSixDecimals) {
  struct Rate {
    std::uint32_t timeScale, frameDuration, movieScale;
  };
  for (const Rate& rate : {Rate{24000, 1001, 600}, Rate{30000, 1001, 1000}, Rate{25, 1, 600}, Rate{24, 1, 24},
                           Rate{600, 25, 600}, Rate{90000, 1500, 90000}, Rate{60000, 1001, 1000}, Rate{1, 1, 1}}) {
    const OpenedMovie opened(specOf(rate.timeScale, rate.frameDuration, 40, rate.movieScale));
    for (std::uint64_t frame = 0; frame < 39; ++frame) {
      char start[32], middle[32];
      const double length = static_cast<double>(rate.frameDuration) / rate.timeScale;
      std::snprintf(start, sizeof start, "%.6f", static_cast<double>(frame) * length);
      std::snprintf(middle, sizeof middle, "%.6f", (static_cast<double>(frame) + 0.99) * length);
      EXPECT_EQ(frameAt(opened, start), frame) << start << " in " << rate.timeScale;
      EXPECT_EQ(frameAt(opened, middle), frame) << middle << " in " << rate.timeScale;
    }
  }
}

TEST(TimeInMovie, KeepsExactSecondsExact) {
  const OpenedMovie opened(specOf(24000, 1001, 480));
  EXPECT_EQ(timeInMovie(*parseTimeArgument("12.5"), *opened.movie), (MovieTime{12600000, 1008000, 0}));
  EXPECT_EQ(frameAt(opened, "12.5"), 299U);
  EXPECT_EQ(frameAt(opened, "12.5125"), 300U);
}

TEST(TimeInMovie, EndsBeforeTheDuration) {
  const OpenedMovie opened(specOf(25, 1, 50));  // 2 s
  for (const char* text : {"2", "2.0001", "-0.001", "1e300", "00:00:02:00", "23:00:00:00"}) {
    const auto time = timeInMovie(*parseTimeArgument(text), *opened.movie);
    ASSERT_FALSE(time) << text;
    EXPECT_THAT(time.error(), HasSubstr("outside \"" + opened.file.path() + "\", which lasts 2.000 s"));
  }
  for (const char* text : {"0", "-0", "1.9999999999", "00:00:01:24"}) {
    EXPECT_TRUE(timeInMovie(*parseTimeArgument(text), *opened.movie)) << text;
  }
  EXPECT_EQ(frameAt(opened, "1.9999999999"), 49U);
}

TEST(TimeInMovie, CompletesATimecodeAsTyped) {
  const OpenedMovie opened(specOf(25, 1, 2000));
  for (const auto& [text, frame] : {std::pair("00:00:10:05", 255U), std::pair("10:05", 255U), std::pair(":7", 7U),
                                    std::pair("0:1.", 25U), std::pair("00;00;10;05", 255U)}) {
    EXPECT_EQ(frameAt(opened, text), frame) << text;
  }
}

/// A movie of 100 frames, 25 a second, whose timecode track starts at that frame number.
struct TimedMovie {
  explicit TimedMovie(std::uint32_t firstFrameNumber) : file(bytesOf(firstFrameNumber)) {
    movie = std::move(*Movie::movieWithFile(file.path()));
  }

  static Bytes bytesOf(std::uint32_t firstFrameNumber) {
    MovieSpec spec = specOf(25, 1, 100);
    TrackSpec timecode;
    timecode.id = 2;
    timecode.mediaType = "tmcd";
    timecode.entries = {movie::test::timecodeEntry(0, 25, 1, 25)};
    timecode.durations = {{1, 100}};
    timecode.mediaDuration = 100;
    timecode.sizes = {4};
    timecode.chunks = {{1, 1, 1}};
    timecode.duration = spec.duration;
    spec.tracks.push_back(timecode);
    Bytes media = movie::test::typedMediaData("qt  ", 30);
    movie::write32(media, 28, firstFrameNumber);  // where the builder's media data begins
    return movie::test::joined({media, spec.build()});
  }

  TemporaryFile file;
  std::unique_ptr<Movie> movie;
};

TEST(TimeInMovie, CountsATimecodeFromTheMoviesOwnStart) {
  const TimedMovie opened(90000);
  ASSERT_EQ(QVQuickTime::timecodeAtTime({0, 25, 0}, opened.movie.get()), QStringLiteral("01:00:00:00"));

  for (const char* text : {"01:00:02:00", "2:00", "1:00:02:00"}) {
    const auto time = timeInMovie(*parseTimeArgument(text), *opened.movie);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(movie::secondsOf(*time), 2.0) << text;
  }
  const auto before = timeInMovie(*parseTimeArgument("00:00:02:00"), *opened.movie);
  ASSERT_FALSE(before);
  EXPECT_THAT(before.error(), HasSubstr("from 01:00:00:00"));
}

TEST(TimeInMovie, FindsATimecodeAfterMidnight) {
  const TimedMovie opened(24 * 90000 - 50);
  ASSERT_EQ(QVQuickTime::timecodeAtTime({0, 25, 0}, opened.movie.get()), QStringLiteral("23:59:58:00"));
  ASSERT_EQ(QVQuickTime::timecodeAtTime({3, 1, 0}, opened.movie.get()), QStringLiteral("00:00:01:00"));

  for (const auto& [text, seconds] : {std::pair("23:59:58:00", 0.0), std::pair("23:59:59:24", 1.96),
                                      std::pair("00:00:00:00", 2.0), std::pair("00:00:01:24", 3.96)}) {
    const auto time = timeInMovie(*parseTimeArgument(text), *opened.movie);
    ASSERT_TRUE(time) << time.error();
    EXPECT_EQ(movie::secondsOf(*time), seconds) << text;
  }
  for (const char* text : {"23:59:57:24", "00:00:02:00"}) {
    EXPECT_FALSE(timeInMovie(*parseTimeArgument(text), *opened.movie)) << text;
  }
}

TEST(TimeInMovie, RefusesATimecodeWhereNothingCountsFrames) {
  MovieSpec spec = specOf(25, 1, 50);
  spec.tracks[0].mediaType = "soun";
  const OpenedMovie opened(spec);
  EXPECT_THAT(timeInMovie(*parseTimeArgument("0:01"), *opened.movie).error(), HasSubstr("no video frames"));
  EXPECT_TRUE(timeInMovie(*parseTimeArgument("1.5"), *opened.movie));
}

TEST(TimeInMovie, RefusesElevenCharactersThatAreNoTimecode) {
  const OpenedMovie opened(specOf(25, 1, 50));
  for (const char* text : {"0:::::::::1", "99999999:99", "1234567:1:1", "00:00:00.00"}) {
    EXPECT_THAT(timeInMovie(*parseTimeArgument(text), *opened.movie).error(), HasSubstr("is no timecode")) << text;
  }
}

}  // namespace
}  // namespace cli

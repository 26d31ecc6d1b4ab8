#include <gtest/gtest.h>

#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/support/MovieFixture.h"

namespace movie {
namespace {

using namespace test;

struct FixtureRow {
  const char* name;
  std::vector<std::string> arguments;
};

std::vector<std::string> testPicture(const std::vector<std::string>& coding) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=192x108:rate=25:duration=1",
                                     "-f", "lavfi", "-i", "sine=duration=1"};
  arguments.insert(arguments.end(), coding.begin(), coding.end());
  return arguments;
}

const std::vector<FixtureRow> fixtures{
    {"last.mov", testPicture({"-c:v", "prores_ks", "-c:a", "pcm_s16le", "-timecode", "01:00:00:00"})},
    {"first.mov", testPicture({"-c:v", "mjpeg", "-c:a", "pcm_s24be", "-movflags", "+faststart"})},
    {"last.mp4", testPicture({"-c:v", "libx264", "-c:a", "aac"})},
    {"first.mp4", testPicture({"-c:v", "libx264", "-c:a", "aac", "-movflags", "+faststart", "-bf", "2"})},
    {"sound.m4a", {"-f", "lavfi", "-i", "sine=duration=1", "-c:a", "aac"}}};

void copy(const std::string& from, const std::string& to) {
  const auto movie = openedMovie(from);
  const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), to);
  ASSERT_TRUE(status) << from << ": " << status.error().message();
}

std::string quoted(const std::string& path) {
  return " '" + path + "'";
}

TEST(FlattenedReaders, DecodeTheSameFramesAndSamples) {
  for (const FixtureRow& row : fixtures) {
    const TemporaryFolder folder;
    const std::string from = fixtureMovie(row.name, row.arguments), to = folder.path(row.name);
    copy(from, to);
    EXPECT_EQ(test::samplesOf(to), test::samplesOf(from)) << row.name;
    const auto frames = [](const std::string& path) {
      return outputOf("ffmpeg -nostdin -v error -xerror -i" + quoted(path) + " -map 0:v? -map 0:a? -f framemd5 -");
    };
    const std::string expected = frames(from);
    EXPECT_GT(expected.size(), 1000U) << row.name;
    EXPECT_EQ(frames(to), expected) << row.name;
  }
}

TEST(FlattenedReaders, ThatAreNotLibavSeeTheSameTracks) {
  for (const FixtureRow& row : fixtures) {
    const TemporaryFolder folder;
    const std::string from = fixtureMovie(row.name, row.arguments), to = folder.path(row.name);
    copy(from, to);
    const auto tracks = [](const std::string& path) {
      std::string text;
      for (const char* fields : {"Video;%Format% %CodecID% %Width% %Height% %FrameCount% %Duration% %StreamSize%",
                                 "Audio;%Format% %CodecID% %Channels% %SamplingRate% %Duration% %StreamSize%",
                                 "Other;%Format% %TimeCode_FirstFrame% %Duration%", "General;%Format% %Duration%"}) {
        text += outputOf("mediainfo --Inform='" + std::string(fields) + "'" + quoted(path));
      }
      return text;
    };
    const std::string expected = tracks(from);
    EXPECT_NE(expected.find("AAC") == std::string::npos, expected.find("PCM") == std::string::npos) << expected;
    EXPECT_EQ(tracks(to), expected) << row.name;
    EXPECT_EQ(outputOf("mediainfo --Inform='General;%IsTruncated%'" + quoted(to)), "\n") << row.name;
  }
}

/// Laid by hand: what a reader that shares no code with the copy finds at every offset.
TEST(FlattenedReaders, FindTheSamePacketsInEveryLayout) {
  const std::vector<std::vector<std::string>> layouts{
      {"ftyp", "mdat", "moov"},          {"ftyp", "moov", "mdat"},   {"ftyp", "mdat", "moov", "mdat"},
      {"ftyp", "moov", "free", "mdat0"}, {"ftyp", "mdat64", "moov"}, {"ftyp", "wide", "mdat", "free", "mdat", "moov"}};
  for (const auto& parts : layouts) {
    for (const bool wide : {false, true}) {
      const TemporaryFolder folder;
      const std::string from = folder.add("from.mov", MovieParts{parts, wide}.build()), to = folder.path("to.mov");
      copy(from, to);
      const auto packets = [](const std::string& path) {
        return outputOf(
            "ffprobe -v quiet -show_data_hash crc32 -show_entries packet=stream_index,dts,size,data_hash"
            " -of csv=p=0" +
            quoted(path));
      };
      const std::string expected = packets(from);
      EXPECT_NE(expected.find("CRC32"), std::string::npos) << expected;
      EXPECT_EQ(packets(to), expected);
    }
  }
}

TEST(FlattenedReaders, TakeRealMoviesAsTheyTookTheOriginals) {
  const std::vector<std::string> movies = test::realMovies();
  if (movies.empty()) GTEST_SKIP() << test::whyNoRealMovies();
  for (const std::string& from : movies) {
    const auto movie = MovieFile::open(from);
    if (!movie) continue;
    const TemporaryFolder folder;
    const auto status = writeFlattenedCopy(**movie, (*movie)->movieAtom(), folder.path("to.mov"));
    if (!status) {
      EXPECT_FALSE(status.error().reason().empty());
      EXPECT_TRUE(folder.names().empty());
      continue;
    }
    const auto packets = [](const std::string& path) {
      return outputOf(
          "ffprobe -v quiet -show_data_hash crc32 -show_entries packet=stream_index,pts,size,data_hash"
          " -of csv=p=0" +
          quoted(path));
    };
    EXPECT_EQ(packets(folder.path("to.mov")), packets(from)) << from;
  }
}

}  // namespace
}  // namespace movie

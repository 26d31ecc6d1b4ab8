#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/movie/decode/DecodedMovie.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

struct Coding {
  const char* name;
  const char* extension;
  std::vector<std::string> options;
};

void PrintTo(const Coding& coding, std::ostream* stream) {
  *stream << coding.name;
}

std::string movieOf(const Coding& coding) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=10,noise=alls=6"};
  arguments.insert(arguments.end(), coding.options.begin(), coding.options.end());
  return fixtureMovie(std::string(coding.name) + coding.extension, arguments);
}

std::vector<Coding> codings() {
  const std::string reorder = "keyint=25:min-keyint=25:bframes=3:b-adapt=0:scenecut=0";
  return {
      {"h264ClosedGop", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder}},
      {"h264OpenGop", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder + ":open-gop=1"}},
      {"h264OpenGopPyramid",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params",
        reorder + ":open-gop=1:b-pyramid=normal:ref=6:bframes=7"}},
      {"h264OneGop", ".m4v", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "keyint=infinite:bframes=5"}},
      {"h264IntraRefresh",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "intra-refresh=1:keyint=25"}},
      {"h264Interlaced",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-flags", "+ildct+ilme", "-x264-params",
        reorder + ":tff=1:open-gop=1"}},
      {"h264HighTen", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv422p10le", "-x264-params", reorder}},
      {"h264Fragmented",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder, "-movflags", "frag_keyframe+empty_moov"}},
      {"h264FragmentedOpenGop",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder + ":open-gop=1", "-movflags",
        "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "700000"}},
      {"h264NegativeOffsets",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder, "-movflags", "negative_cts_offsets"}},
      {"hevcClosedGop",
       ".mp4",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:open-gop=0:keyint=25:min-keyint=25:bframes=4"}},
      {"hevcOpenGop",
       ".mov",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:open-gop=1:keyint=25:min-keyint=25:bframes=4"}},
      {"hevcTemporalLayers",
       ".mov",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p10le", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:temporal-layers=3:keyint=25:bframes=7"}},
      {"mpeg4", ".mp4", {"-c:v", "mpeg4", "-bf", "2", "-g", "25", "-q:v", "4"}},
      {"mpeg4Closed",
       ".mov",
       {"-c:v", "mpeg4", "-bf", "2", "-g", "25", "-q:v", "4", "-flags", "+cgop", "-sc_threshold", "1000000000"}},
      {"mpeg2OpenGop", ".mov", {"-c:v", "mpeg2video", "-bf", "2", "-g", "15", "-flags", "-cgop", "-q:v", "4"}},
      {"mpeg2ClosedGop",
       ".mov",
       {"-c:v", "mpeg2video", "-bf", "2", "-g", "15", "-flags", "+cgop", "-sc_threshold", "1000000000", "-q:v", "4"}},
      {"mpeg2Interlaced", ".mov", {"-c:v", "mpeg2video", "-bf", "2", "-g", "12", "-flags", "+ildct+ilme", "-q:v", "4"}},
      {"proRes", ".mov", {"-c:v", "prores_ks", "-profile:v", "0"}},
      {"proRes4444", ".mov", {"-c:v", "prores_ks", "-profile:v", "4", "-pix_fmt", "yuv444p10le"}},
      {"motionJpeg", ".mov", {"-c:v", "mjpeg", "-q:v", "4"}},
      {"jpeg2000", ".mov", {"-c:v", "jpeg2000", "-pix_fmt", "yuv422p", "-t", "2"}},
  };
}

class FrameExact : public testing::TestWithParam<Coding> {};

TEST_P(FrameExact, EveryTimeShowsWhatAFullDecodeShows) {
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  DecodedMovie movie(path);
  ASSERT_EQ(judge.frames.size(), movie.table().sampleCount());
  for (const FullDecode::Frame& frame : judge.frames) {
    const Picture picture = movie.pictureAt(frame.time);
    ASSERT_EQ(firstPlaneChecksum(picture), frame.checksum) << "at " << frame.time;
  }
}

TEST_P(FrameExact, JumpingAboutShowsTheSame) {
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  DecodedMovie movie(path);
  std::mt19937 random(7);
  std::uniform_int_distribution<std::int64_t> anywhere(0, movie.table().duration() + movie.table().duration() / 10);
  for (int i = 0; i < 40; ++i) {
    const std::int64_t time = anywhere(random);
    ASSERT_EQ(firstPlaneChecksum(movie.pictureAt(time)), judge.checksumAt(time)) << "at " << time;
  }
}

INSTANTIATE_TEST_SUITE_P(Codings, FrameExact, testing::ValuesIn(codings()),
                         [](const auto& coding) { return std::string(coding.param.name); });

/// A copy of a movie with one kind of atom made unknown, gone at the end.
class CopyWithout {
 public:
  CopyWithout(const std::string& path, const std::string& atom) {
    std::ifstream stream(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    const std::size_t at = bytes.find(atom);
    if (at == std::string::npos) throw std::runtime_error("no " + atom + " in " + path);
    std::ofstream(path_, std::ios::binary) << bytes.replace(at, 4, "skip");
  }
  ~CopyWithout() { std::filesystem::remove(path_); }
  CopyWithout(const CopyWithout&) = delete;
  CopyWithout& operator=(const CopyWithout&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_ = testing::TempDir() + "copy-without-" + std::to_string(getpid()) + ".mov";
};

class WithoutSyncTable : public testing::TestWithParam<Coding> {};

TEST_P(WithoutSyncTable, AStartThatIsNoneIsNoticed) {
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  const CopyWithout copy(path, "stss");
  DecodedMovie movie(copy.path());
  for (std::size_t i = 0; i < judge.frames.size(); i += 7) {
    ASSERT_EQ(firstPlaneChecksum(movie.pictureAt(judge.frames[i].time)), judge.frames[i].checksum) << i;
  }
}

std::vector<Coding> longGops() {
  std::vector<Coding> chosen;
  for (const Coding& coding : codings()) {
    const std::string name = coding.name;
    if (name == "h264OpenGop" || name == "h264OneGop" || name == "hevcOpenGop" || name == "mpeg4" ||
        name == "mpeg2OpenGop") {
      chosen.push_back(coding);
    }
  }
  return chosen;
}

INSTANTIATE_TEST_SUITE_P(Codings, WithoutSyncTable, testing::ValuesIn(longGops()),
                         [](const auto& coding) { return std::string(coding.param.name); });

TEST(FrameExact, RealMoviesShowWhatAFullDecodeShows) {
  for (const std::string& path : realMovies({".mov", ".mp4", ".m4v", ".qt"})) {
    SCOPED_TRACE(path);
    DecodedMovie movie(path);
    const FullDecode judge = fullDecode(path, movie.pictureAt(0).model == PictureModel::Rgb ? "r" : "y");
    const std::int64_t step = std::max<std::int64_t>(1, movie.table().duration() / 12);
    for (std::int64_t time = 0; time <= movie.table().duration(); time += step) {
      ASSERT_EQ(firstPlaneChecksum(movie.pictureAt(time)), judge.checksumAt(time)) << "at " << time;
    }
  }
}

}  // namespace
}  // namespace movie::test

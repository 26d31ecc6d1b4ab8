#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/movie/decode/Codings.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/movie/decode/EditedCopy.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

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

class WithoutSyncTable : public testing::TestWithParam<Coding> {};

TEST_P(WithoutSyncTable, AStartThatIsNoneIsNoticed) {
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  const EditedCopy copy(path, [](std::string& bytes) { bytes.replace(bytes.find("stss"), 4, "skip"); });
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
  const std::vector<std::string> movies = realMovies();
  if (movies.empty()) GTEST_SKIP() << whyNoRealMovies();
  for (const std::string& path : movies) {
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

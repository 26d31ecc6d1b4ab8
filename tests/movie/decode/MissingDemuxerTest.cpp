#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "movie/decode/DecoderModule.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

namespace fs = std::filesystem;

/// A folder with the decoders' module and without the demuxer's. Modules are loaded once in a process, so this has a
/// process of its own.
class LoneDecoder : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder = fs::path(testing::TempDir()) / ("lone-decoder-" + std::to_string(getpid()));
    fs::create_directories(folder);
    fs::create_symlink(fs::path(LUMACHECK_MODULES_BUILT) / "movie-ffmpeg.so", folder / "movie-ffmpeg.so");
    ASSERT_EQ(setenv("LUMACHECK_MODULES", folder.c_str(), 1), 0);
  }
  static void TearDownTestSuite() { fs::remove_all(folder); }

  static inline fs::path folder;
};

std::string movieOf(const std::string& encoder) {
  return fixtureMovie("lone.mov",
                      {"-f", "lavfi", "-i", "testsrc2=size=96x64:rate=25", "-frames:v", "2", "-c:v", encoder});
}

TEST_F(LoneDecoder, DecodesWhatMostMoviesHold) {
  EXPECT_EQ(DecodedMovie(movieOf("prores_ks")).pictureAt(0).width, 96);
  EXPECT_EQ(DecodedMovie(movieOf("libx264")).pictureAt(0).width, 96);
}

TEST_F(LoneDecoder, SaysWhatIsMissingForTheRest) {
  const auto picture = DecodedMovie(movieOf("qtrle")).sampleAt(0);
  ASSERT_FALSE(picture);
  EXPECT_THAT(picture.error().reason(), testing::HasSubstr("the decoder module cannot be loaded"));
  EXPECT_THAT(picture.error().reason(), testing::HasSubstr("movie-ffmpeg-demuxer.so"));
}

}  // namespace
}  // namespace movie::test

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "movie/atoms/ByteOrder.h"
#include "movie/decode/DecoderModule.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie::test {
namespace {

using testing::HasSubstr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool sanitized = false;
#endif

/// A file of its own for each test, gone with it.
class DamagedMovies : public testing::Test {
 protected:
  ~DamagedMovies() override {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  static Bytes movie(const std::vector<std::string>& encoder, const std::string& name = "whole.mov") {
    std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=96x64:rate=25:duration=1"};
    arguments.insert(arguments.end(), encoder.begin(), encoder.end());
    arguments.insert(arguments.end(), {"-movflags", "+faststart"});
    return contentOf(fixtureMovie(name, arguments));
  }
  static Bytes proRes() { return movie({"-c:v", "prores_ks", "-profile:v", "0"}); }
  static Bytes h264() { return movie({"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "10"}); }

  /// Every n-th sample of the first video track decoded; the first failure's sentence, or none.
  std::string failureOf(const Bytes& bytes, int samples = 3) const {
    write(bytes);
    const auto file = MovieFile::open(path_);
    if (!file) return file.error().message();
    std::size_t track = 0;
    while (track < (*file)->tracks().size() && (*file)->tracks()[track].mediaType != videoMedia) ++track;
    auto decoder = (*decoderBackend())->makeDecoder(*file, track);
    if (!decoder) return decoder.error().message();
    const SampleTable& table = (*file)->sampleTable(track);
    for (int i = 0; i < samples; ++i) {
      const auto sample = table.presentedAt(table.duration() / samples * i);
      if (!sample) return "the table is empty";
      const auto picture = (*decoder)->picture({*sample, {}, 32, 24});
      if (!picture) return picture.error().message();
      EXPECT_EQ(picture->planes[0].size(), 32U * 24U);
    }
    return {};
  }

  /// A sample of the first track, by its index; all of them are shown in the order in which they are stored.
  Picture pictureOf(const Bytes& bytes, int sample) const {
    write(bytes);
    const auto file = MovieFile::open(path_);
    if (!file) throw std::runtime_error(file.error().message());
    const SampleTable& table = (*file)->sampleTable(0);
    const auto shown = table.presentedAt(table.presentationTimeOf(static_cast<std::uint64_t>(sample)));
    const PictureRequest request{*shown, {}, 32, 24};
    const auto decoder = (*decoderBackend())->makeDecoder(*file, 0);
    auto picture = (*decoder)->picture(request);
    if (!picture) throw std::runtime_error(picture.error().message());
    const auto first = (*decoder)->pictureInRow({.picture = request});
    if (!first) throw std::runtime_error("first in a row: " + first.error().message());
    EXPECT_EQ(first->value().planes[0].size(), picture->planes[0].size());
    return std::move(*picture);
  }

  /// Where a four-character code stands, the first from a place on.
  static std::size_t placeOf(const Bytes& bytes, const std::string& code, std::size_t from = 0) {
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    const auto at = std::search(begin, bytes.end(), code.begin(), code.end());
    if (at == bytes.end()) throw std::runtime_error("no " + code + " in the fixture");
    return static_cast<std::size_t>(at - bytes.begin());
  }

 private:
  void write(const Bytes& bytes) const {
    std::ofstream(path_, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  std::string path_ = testing::TempDir() + "damaged-" + std::to_string(getpid()) + ".mov";
};

TEST_F(DamagedMovies, WholeOnesAreFine) {
  EXPECT_EQ(failureOf(proRes()), "");
  EXPECT_EQ(failureOf(h264()), "");
}

TEST_F(DamagedMovies, AnUnknownCodecIsNamed) {
  Bytes bytes = proRes();
  const std::size_t at = placeOf(bytes, "apco");
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>("zyxw"[i]);
  EXPECT_THAT(failureOf(bytes), HasSubstr("there is no decoder for the codec 'zyxw'"));
}

TEST_F(DamagedMovies, EncryptedSamplesAreNotShownAsNoise) {
  const Bytes encrypted = contentOf(fixtureMovie(
      "encrypted.mp4", {"-f", "lavfi", "-i", "testsrc2=size=128x96:rate=25:duration=0.2", "-c:v", "libx264", "-pix_fmt",
                        "yuv420p", "-encryption_scheme", "cenc-aes-ctr", "-encryption_key",
                        "76a6c65c5ea762046bd749a2e632ccbb", "-encryption_kid", "a7e61c373e219033c21091fa607bf3b8"}));
  EXPECT_THAT(failureOf(encrypted), HasSubstr("the samples are encrypted"));
}

TEST_F(DamagedMovies, SamplesInAnotherFileAreNotFollowed) {
  Bytes bytes = proRes();
  const std::string name = "file:///elsewhere.mov";
  std::size_t at = 0;
  for (const char* const atom : {"moov", "trak", "mdia", "minf", "dinf", "dref", "url "}) {
    at = placeOf(bytes, atom, at);
    write32(bytes, at - 4, read32(bytes, at - 4) + static_cast<std::uint32_t>(name.size()));
  }
  bytes[at + 7] = 0;  // no longer "in this file"
  bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at) + 8, name.begin(), name.end());
  EXPECT_THAT(failureOf(bytes), HasSubstr("another file"));
}

TEST_F(DamagedMovies, AMovieWithoutPicturesHasNoDecoder) {
  const Bytes bytes =
      contentOf(fixtureMovie("sound.mov", {"-f", "lavfi", "-i", "sine=duration=0.2", "-c:a", "pcm_s16le"}));
  EXPECT_THAT(failureOf(bytes), HasSubstr("there is no such track"));
}

TEST_F(DamagedMovies, ATrackOfSoundHoldsNoPictures) {
  const auto file =
      MovieFile::open(fixtureMovie("sound.mov", {"-f", "lavfi", "-i", "sine=duration=0.2", "-c:a", "pcm_s16le"}));
  ASSERT_TRUE(file);
  const auto decoder = (*decoderBackend())->makeDecoder(*file, 0);
  ASSERT_FALSE(decoder);
  EXPECT_THAT(decoder.error().message(), HasSubstr("holds no pictures"));
}

TEST_F(DamagedMovies, ASampleThatDoesNotExistIsRefused) {
  const auto file = MovieFile::open(
      fixtureMovie("few.mov", {"-f", "lavfi", "-i", "testsrc2=size=96x64:rate=25", "-frames:v", "2", "-c:v", "mjpeg"}));
  ASSERT_TRUE(file);
  const auto decoder = (*decoderBackend())->makeDecoder(*file, 0);
  ASSERT_TRUE(decoder);
  const auto picture = (*decoder)->picture({{2, 0, 0, 0}, {}, 8, 8});
  ASSERT_FALSE(picture);
  EXPECT_THAT(picture.error().message(), HasSubstr("no such sample"));
}

TEST_F(DamagedMovies, ACutFileSaysWhichSampleIsMissing) {
  Bytes bytes = proRes();
  bytes.resize(placeOf(bytes, "mdat") + 600);
  EXPECT_THAT(failureOf(bytes), HasSubstr("the sample 0 cannot be read"));
}

TEST_F(DamagedMovies, GarbageInASampleCannotBeDecoded) {
  for (Bytes bytes : {proRes(), movie({"-c:v", "png"}), movie({"-c:v", "mpeg2video"}), h264()}) {
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(placeOf(bytes, "mdat")) + 4, bytes.end(), std::uint8_t{0x5A});
    EXPECT_THAT(failureOf(bytes), HasSubstr("the frame cannot be decoded"));
  }
}

TEST_F(DamagedMovies, AnEmptySampleShowsThePictureBefore) {
  Bytes bytes = proRes();
  const std::size_t sizes = placeOf(bytes, "stsz");
  const std::uint32_t count = read32(bytes, sizes + 12);
  const auto last = static_cast<int>(count) - 1;
  const Picture before = pictureOf(bytes, last - 1);
  EXPECT_NE(pictureOf(bytes, last).planes, before.planes);
  write32(bytes, sizes + 12 + std::size_t{4} * count, 0);
  EXPECT_EQ(pictureOf(bytes, last).planes, before.planes);
}

TEST_F(DamagedMovies, ASampleLargerThanItsPictureIsRefused) {
  Bytes bytes = proRes();
  const std::size_t sizes = placeOf(bytes, "stsz");
  write32(bytes, sizes + 16, 90U << 20);
  const std::size_t media = placeOf(bytes, "mdat");
  write32(bytes, media - 4, read32(bytes, media - 4) + (100U << 20));
  bytes.resize(bytes.size() + (100U << 20));
  EXPECT_THAT(failureOf(bytes, 1), HasSubstr("the sample 0 is too large for its picture"));
}

TEST_F(DamagedMovies, SamplesThatOverlapDoNotGoOnForever) {
  // 200,000 samples, each the whole media data, none a sync sample but the first.
  Bytes bytes = h264();
  const auto length = static_cast<std::uint32_t>(bytes.size() - placeOf(bytes, "mdat") - 4);
  const std::size_t sizes = placeOf(bytes, "stsz");
  write32(bytes, sizes + 8, length);
  write32(bytes, sizes + 12, 200000);
  const std::size_t times = placeOf(bytes, "stts");
  write32(bytes, times + 12, 200000);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_NE(failureOf(bytes), "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(sanitized ? 20 : 2));
}

TEST_F(DamagedMovies, BytesChangedAtRandomNeverCrashOrHang) {
  std::mt19937 random(20);
  for (const Bytes& whole :
       {proRes(), h264(), movie({"-c:v", "mpeg2video", "-bf", "2"}), movie({"-c:v", "qtrle"}),
        movie({"-c:v", "png", "-pix_fmt", "pal8"}), movie({"-c:v", "cfhd"}), movie({"-c:v", "jpeg2000"}),
        movie({"-c:v", "mjpeg"}), movie({"-c:v", "v210"}), movie({"-c:v", "mpeg4", "-bf", "2"}, "whole.mp4"),
        movie({"-c:v", "libx265", "-x265-params", "log-level=none", "-pix_fmt", "yuv420p"}, "whole.mp4")}) {
    const std::size_t header = placeOf(whole, "mdat");
    for (int round = 0; round < 40; ++round) {
      Bytes bytes = whole;
      // Half of the rounds in the tables, half anywhere.
      std::uniform_int_distribution<std::size_t> place(0, (round % 2 == 0 ? header : bytes.size()) - 1);
      for (int i = 0; i < 1 + round / 4; ++i) bytes[place(random)] = static_cast<std::uint8_t>(random());
      const auto begin = std::chrono::steady_clock::now();
      failureOf(bytes);
      EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(sanitized ? 20 : 2));
    }
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  if (!sanitized) {
    EXPECT_LT(usage.ru_maxrss, 256 * 1024);
  }
}

}  // namespace
}  // namespace movie::test

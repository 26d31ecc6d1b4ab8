#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/Movie.h"
#include "movie/encode/MovieEncoder.h"
#include "tests/support/TemporaryFolder.h"

namespace movie {
namespace {

constexpr int oddWidth = 45, evenWidth = 48, height = 27;  // which take different encoders

EncodedMovie smallMovie(int width = oddWidth) {
  EncodedMovie movie;
  movie.width = width;
  movie.height = height;
  movie.timeScale = 24000;
  movie.color = {0, 1, 16, 9};
  return movie;
}

using CodePlane = std::vector<std::uint16_t>;

/// One colour all over.
struct PlainPicture {
  std::array<CodePlane, 3> planes;
  PlainPicture(const EncodedMovie& movie, std::uint16_t luma, std::uint16_t blue, std::uint16_t red)
      : planes{plane(movie, luma), plane(movie, blue), plane(movie, red)} {}
  static CodePlane plane(const EncodedMovie& movie, std::uint16_t code) {
    return CodePlane(static_cast<std::size_t>(movie.width) * static_cast<std::size_t>(movie.height), code);
  }
  EncodedPicture at(std::int64_t time, std::int64_t duration) const {
    return {{planes[0], planes[1], planes[2]}, time, duration};
  }
};

/// A file in memory.
struct MemoryFile {
  Bytes bytes;
  bool isFull = false;
  EncodedOutput output() {
    return [this](std::uint64_t offset, std::span<const std::uint8_t> given) {
      if (isFull) return false;
      bytes.resize(std::max<std::size_t>(bytes.size(), offset + given.size()));
      std::copy(given.begin(), given.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
      return true;
    };
  }
};

std::unique_ptr<MovieEncoder> encoderOf(const EncodedMovie& movie, MemoryFile& file) {
  const auto backend = encoderBackend();
  EXPECT_TRUE(backend) << backend.error();
  auto encoder = (*backend)->makeEncoder(movie, file.output());
  EXPECT_TRUE(encoder) << encoder.error();
  return std::move(*encoder);
}

/// Three pictures at 23.976 frames a second, the second one shown twice as long.
Bytes encoded(const EncodedMovie& movie) {
  MemoryFile file;
  const auto encoder = encoderOf(movie, file);
  EXPECT_TRUE(encoder->add(PlainPicture(movie, 64, 512, 512).at(0, 1001)));
  EXPECT_TRUE(encoder->add(PlainPicture(movie, 500, 400, 600).at(1001, 2002)));
  EXPECT_TRUE(encoder->add(PlainPicture(movie, 940, 512, 512).at(3003, 1001)));
  EXPECT_TRUE(encoder->finish());
  return file.bytes;
}

std::unique_ptr<Movie> opened(const test::TemporaryFolder& folder, const EncodedMovie& movie) {
  auto result = Movie::movieWithFile(folder.add("made.mov", encoded(movie)));
  EXPECT_TRUE(result) << result.error().message();
  return std::move(*result);
}

TEST(MovieEncoder, MakesAMovieOfPicturesAtTheirTimes) {
  const test::TemporaryFolder folder;
  const auto movie = opened(folder, smallMovie());
  const Track& track = *movie->tracksOfMediaType(videoMedia).front();
  EXPECT_EQ(track.media().timeScale(), 24000);
  EXPECT_EQ(track.media().sampleCount(), 3);
  EXPECT_EQ(track.media().duration().value, 4004);
  const auto second = movie->frameSpanAt({.value = 1001, .scale = 24000});
  ASSERT_TRUE(second);
  EXPECT_EQ(second->sample.presentationTime, 1001);
  EXPECT_NEAR(static_cast<double>(second->endMicros - second->startMicros), 1e6 * 2002 / 24000, 1);
}

TEST(MovieEncoder, KeepsCodesAndSizes) {
  for (const int width : {oddWidth, evenWidth}) {
    const test::TemporaryFolder folder;
    const auto movie = opened(folder, smallMovie(width));
    const auto picture = movie->pictureAtTime({.value = 1001, .scale = 24000}, 0, 0);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, width);
    EXPECT_EQ(picture->height, height);
    constexpr int unit = 64;  // samples to a code of 10 bits
    constexpr int wanted[] = {500, 400, 600};
    for (std::size_t plane = 0; plane < 3; ++plane) {
      const auto [least, most] = std::minmax_element(picture->planes[plane].begin(), picture->planes[plane].end());
      EXPECT_NEAR(*least, wanted[plane] * unit, unit) << width;
      EXPECT_NEAR(*most, wanted[plane] * unit, unit) << width;
    }
  }
}

class TaggedEncoding : public testing::TestWithParam<int> {};

TEST_P(TaggedEncoding, SaysWhatItIsTold) {
  const test::TemporaryFolder folder;
  EncodedMovie asked = smallMovie(GetParam());
  asked.gama = 0x23333;
  asked.pixelWidth = 16;
  asked.pixelHeight = 15;
  const auto movie = opened(folder, asked);
  const auto description = movie->tracksOfMediaType(videoMedia).front()->media().imageDescription(1);
  ASSERT_TRUE(description && description->nclc());
  EXPECT_EQ(description->codec(), fourCC("ap4h"));
  EXPECT_EQ(description->gamma(), 0x23333);
  EXPECT_EQ(description->nclc()->primaries, 1);
  EXPECT_EQ(description->nclc()->transferFunction, 16);
  EXPECT_EQ(description->nclc()->matrix, 9);
  const auto& atoms = description->extensions();
  const auto pasp =
      std::find_if(atoms.begin(), atoms.end(), [](const Atom& atom) { return atom.type == fourCC("pasp"); });
  ASSERT_NE(pasp, atoms.end());
  EXPECT_EQ(read32(description->extensionBody(*pasp), 0), 16U);
  EXPECT_EQ(read32(description->extensionBody(*pasp), 4), 15U);
  // What the coded pictures say.
  const auto picture = movie->pictureAtTime({.value = 0, .scale = 1}, 0, 0);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->matrix, 9);
  EXPECT_EQ(picture->transferFunction, 16);
}

INSTANTIATE_TEST_SUITE_P(Widths, TaggedEncoding, testing::Values(oddWidth, evenWidth));

TEST(MovieEncoder, SaysNoGammaWhereItIsToldNone) {
  const test::TemporaryFolder folder;
  const auto movie = opened(folder, smallMovie());
  EXPECT_EQ(movie->tracksOfMediaType(videoMedia).front()->media().imageDescription(1)->gamma(), std::nullopt);
}

TEST(MovieEncoder, EndsWhereNothingMoreCanBeWritten) {
  MemoryFile file;
  const auto encoder = encoderOf(smallMovie(), file);
  EXPECT_TRUE(encoder->add(PlainPicture(smallMovie(), 64, 512, 512).at(0, 1001)));
  file.isFull = true;
  const auto finished = encoder->finish();
  ASSERT_FALSE(finished);
  EXPECT_NE(finished.error(), "");
}

TEST(MovieEncoder, RefusesWhatHasNoPixels) {
  EncodedMovie none = smallMovie();
  none.width = 0;
  MemoryFile file;
  const auto encoder = (*encoderBackend())->makeEncoder(none, file.output());
  EXPECT_FALSE(encoder);
}

}  // namespace
}  // namespace movie

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"

namespace movie {
namespace {

/// What a dumper of its own says of a movie by another writer.
struct RealMovie {
  const char* name;
  std::uint64_t size;
  const char* codec;
  std::optional<double> gamma;
  std::optional<NclcParameters> color;
  std::uint64_t samples;
};

constexpr FourCC nclcType = fourCC("nclc");

const std::vector<RealMovie> realMovies{
    {"AcademySoftw_greyscale-gamma195.mov", 5354, "avc1", 1.95, NclcParameters{nclcType, 1, 2, 1}, 125},
    {"AcademySoftw_test.mov", 95566, "apco", {}, NclcParameters{nclcType, 6, 1, 6}, 100},
    {"openpreserve_animation.mov", 1020209, "rle ", {}, {}, 25},
    {"openpreserve_apple-intermediate-codec.mov", 319539, "icod", {}, {}, 25},
    {"openpreserve_apple-prores-422.mov", 564775, "apcn", {}, {}, 25},
    {"openpreserve_dv-pal-interlaced.mov", 3601749, "dvcp", {}, NclcParameters{nclcType, 5, 1, 6}, 25},
    {"openpreserve_hdv-720p60.mov", 987697, "hdv9", {}, NclcParameters{nclcType, 1, 1, 1}, 25},
    {"openpreserve_jpeg2000.mov", 383905, "mjp2", {}, {}, 25},
    {"openpreserve_photo-jpeg.mov", 575929, "jpeg", 2.2, {}, 25},
    {"openpreserve_xdcam-ex-720p30.mov", 344932, "xdv1", {}, NclcParameters{nclcType, 1, 1, 1}, 25}};

void expectAsDescribed(const MovieFile& movie, const RealMovie& expected) {
  EXPECT_EQ(movie.size(), expected.size);
  EXPECT_TRUE(movie.isQuickTime());
  ASSERT_EQ(movie.tracks().size(), 1U);
  const TrackInfo& track = movie.tracks()[0];
  EXPECT_EQ(track.mediaType, videoMedia);
  EXPECT_FALSE(track.isExternal(0));
  EXPECT_EQ(track.sampleCount, expected.samples);
  const SampleTable& table = movie.sampleTable(0);
  EXPECT_EQ(table.sampleCount(), expected.samples);
  EXPECT_EQ(static_cast<std::uint64_t>(table.duration()), track.mediaDuration);
  for (std::uint64_t i = 0; i < expected.samples; ++i) {
    EXPECT_EQ(table.presentedAt(table.presentationTimeOf(i))->index, i);
    EXPECT_EQ(movie.readSample(0, i, 4)->size(), 4U);
  }
  ASSERT_EQ(track.sampleDescriptions.size(), 1U);
  const ImageDescription description(track.sampleDescriptions[0]);
  EXPECT_EQ(fourCCText(description.codec()), expected.codec);
  EXPECT_EQ(description.nclc(), expected.color);
  EXPECT_FALSE(description.iccProfile());
  EXPECT_EQ(description.gamma().has_value(), expected.gamma.has_value());
  EXPECT_NEAR(description.gamma().value_or(0) / 65536.0, expected.gamma.value_or(0), 1e-5);
}

/// Adding and removing a property of a real image description gives it back.
void expectEditsToComeBack(const Bytes& entry) {
  ImageDescription description(entry);
  const std::size_t count = description.extensions().size();
  ASSERT_EQ(description.setIccProfile(Bytes(100, 3)), noErr);
  ASSERT_EQ(description.extensions().size(), count + 1);
  if (description.nclc()) return;  // whose colr would be removed first
  ASSERT_EQ(description.removeExtension(fourCC("colr")), noErr);
  EXPECT_EQ(description.bytes(), entry);
}

class RealMovies : public testing::TestWithParam<RealMovie> {};

TEST_P(RealMovies, ReadAsTheirAtomsSay) {
  const std::filesystem::path path = std::filesystem::path(LUMACHECK_REAL_MOVIES) / GetParam().name;
  if (!std::filesystem::exists(path)) GTEST_SKIP() << path.string() << " is not there";
  const auto movie = MovieFile::open(path.string());
  ASSERT_TRUE(movie) << movie.error().message();
  expectAsDescribed(**movie, GetParam());
  expectEditsToComeBack((*movie)->tracks()[0].sampleDescriptions[0]);
}

INSTANTIATE_TEST_SUITE_P(Writers, RealMovies, testing::ValuesIn(realMovies), [](const auto& movie) {
  std::string name = movie.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
});

}  // namespace
}  // namespace movie

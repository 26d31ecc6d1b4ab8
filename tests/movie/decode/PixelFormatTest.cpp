#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/movie/decode/AreaMeans.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/movie/decode/RawLayout.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

struct Format {
  std::string name;                  ///< libav's, of the decoder's own output
  std::vector<std::string> encoder;  ///< one that loses nothing
  RawLayout layout;
  friend void PrintTo(const Format& format, std::ostream* out) { *out << format.name << " of " << format.encoder[1]; }
};

std::string testName(const testing::TestParamInfo<Format>& format) {
  std::string name = format.param.encoder[1] + "_" + format.param.name;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

std::vector<Format> formats() {
  using enum PictureModel;
  const std::vector<std::string> ffv1{"-c:v", "ffv1", "-strict", "-2"};
  const std::vector<std::string> png{"-c:v", "png"};
  const std::vector<std::string> raw{"-c:v", "rawvideo"};
  const std::vector<std::string> animation{"-c:v", "qtrle"};
  return {
      {"yuv420p", ffv1, planarYCbCr(8, 1, 1)},
      {"yuv422p", ffv1, planarYCbCr(8, 1, 0)},
      {"yuv444p", ffv1, planarYCbCr(8, 0, 0)},
      {"yuv440p", ffv1, planarYCbCr(8, 0, 1)},
      {"yuv411p", ffv1, planarYCbCr(8, 2, 0)},
      {"yuv410p", ffv1, planarYCbCr(8, 2, 2)},
      {"yuva420p", ffv1, planarYCbCr(8, 1, 1, 1)},
      {"yuv420p9le", ffv1, planarYCbCr(9, 1, 1)},
      {"yuv420p10le", ffv1, planarYCbCr(10, 1, 1)},
      {"yuv444p12le", ffv1, planarYCbCr(12, 0, 0)},
      {"yuv422p14le", ffv1, planarYCbCr(14, 1, 0)},
      {"yuv444p16le", ffv1, planarYCbCr(16, 0, 0)},
      {"yuva444p10le", ffv1, planarYCbCr(10, 0, 0, 1)},
      {"gbrp9le", ffv1, planarRgb(9)},
      {"gbrp10le", ffv1, planarRgb(10)},
      {"gbrp12le", ffv1, planarRgb(12)},
      {"gbrp16le", ffv1, planarRgb(16)},
      {"gbrap12le", ffv1, planarRgb(12, 1)},
      {"bgr0", ffv1, packedRgb(2, 1, 0, 4, 8, false)},
      {"gray", ffv1, grey(8, false, YCbCr, 1)},
      {"gray10le", ffv1, grey(10, false, YCbCr, 2)},
      {"gray16le", ffv1, grey(16, false, YCbCr, 2)},
      {"yuv422p10le", {"-c:v", "v210"}, planarYCbCr(10, 1, 0)},
      {"yuv444p10le", {"-c:v", "v410"}, planarYCbCr(10, 0, 0)},
      {"gbrp10le", {"-c:v", "r210"}, planarRgb(10)},
      {"gbrp", {"-c:v", "libx264rgb", "-qp", "0"}, planarRgb(8)},
      {"uyvy422", raw, packed422(1, 0, 2)},
      {"yuyv422", raw, packed422(0, 1, 3)},
      {"rgb24", raw, packedRgb(0, 1, 2, 3, 8, false)},
      {"argb", raw, packedRgb(1, 2, 3, 4, 8, false)},
      {"abgr", raw, packedRgb(3, 2, 1, 4, 8, false)},
      {"bgra", raw, packedRgb(2, 1, 0, 4, 8, false)},
      {"rgb48be", raw, packedRgb(0, 1, 2, 3, 16, true)},
      {"rgba64be", {"-c:v", "rawvideo", "-tag:v", "b64a"}, packedRgb(0, 1, 2, 4, 16, true)},
      {"gray16be", raw, grey(16, true, Grey, 2)},
      {"rgb555be", raw, packedBits(5, 5, 5, true)},
      {"rgb555le", raw, packedBits(5, 5, 5, false)},
      {"rgb565be", raw, packedBits(5, 6, 5, true)},
      {"rgb565le", raw, packedBits(5, 6, 5, false)},
      {"rgb24", png, packedRgb(0, 1, 2, 3, 8, false)},
      {"rgba", png, packedRgb(0, 1, 2, 4, 8, false)},
      {"rgb48be", png, packedRgb(0, 1, 2, 3, 16, true)},
      {"rgba64be", png, packedRgb(0, 1, 2, 4, 16, true)},
      {"gray", png, grey(8, false, Grey, 1)},
      {"gray16be", png, grey(16, true, Grey, 2)},
      {"ya8", png, grey(8, false, Grey, 2)},
      {"ya16be", png, grey(16, true, Grey, 4)},
      {"rgb24", animation, packedRgb(0, 1, 2, 3, 8, false)},
      {"argb", animation, packedRgb(1, 2, 3, 4, 8, false)},
  };
}

class PixelFormat : public testing::TestWithParam<Format> {
 protected:
  static std::string randomPicture(const std::string& size) {
    return fixtureMovie(
        "random.mov",
        {"-f", "lavfi", "-i",
         "nullsrc=s=" + size + ":r=25,format=gbrp16,geq=r='random(1)*65535':g='random(2)*65535':b='random(3)*65535'",
         "-frames:v", "1", "-c:v", "ffv1", "-strict", "-2"});
  }

  /// Of all formats at once: most of what ffmpeg takes for one is its start.
  static std::string movieOf(const std::string& picture) {
    std::vector<FixtureOutput> outputs;
    std::size_t asked = 0;
    for (const Format& format : formats()) {
      if (format.name == GetParam().name && format.encoder == GetParam().encoder) asked = outputs.size();
      std::vector<std::string> arguments{"-frames:v", "1", "-sws_flags", "neighbor"};
      arguments.insert(arguments.end(), format.encoder.begin(), format.encoder.end());
      arguments.insert(arguments.end(), {"-pix_fmt", format.encoder[1] == "libx264rgb" ? "rgb24" : format.name});
      outputs.push_back({"pixels.mov", arguments});
    }
    return fixtureMovies(picture, outputs)[asked];
  }

  /// Of a colour that 5 bits hold too, so that no encoder dithers.
  static std::string oneColour() {
    const bool coarse = GetParam().name.find("rgb5") == 0;
    return movieOf(fixtureMovie(
        "colour.mov", {"-f", "lavfi", "-i", std::string("color=s=64x48:r=25:c=") + (coarse ? "0xFF00FF" : "0x3567B9"),
                       "-frames:v", "1", "-pix_fmt", "gbrp", "-c:v", "ffv1", "-strict", "-2"}));
  }
};

TEST_P(PixelFormat, ScalesToExactAreaMeans) {
  const std::string path = movieOf(randomPicture("648x488"));
  const std::vector<std::uint8_t> raw = rawFrames(path, 1, GetParam().name);
  ASSERT_EQ(raw.size(), GetParam().layout.frameSize(648, 488));
  DecodedMovie movie(path);
  for (const PictureCrop& crop : {PictureCrop{0, 0, 648, 488}, PictureCrop{3.25, 1.5, 641.5, 485.25}}) {
    const Picture picture = movie.pictureAt(0, 160, 120, crop);
    EXPECT_EQ(picture.depth, GetParam().layout.depth);
    EXPECT_EQ(picture.model, GetParam().layout.model);
    EXPECT_EQ(picture.codedHeight, 488);
    // Half of a 16-bit code is the rounding; nothing else may be lost.
    EXPECT_LT(farthestFromAreaMeans(picture, {GetParam().layout, raw, 648, 488}, crop), 0.51 / 256);
  }
}

TEST_P(PixelFormat, KeepsTheSizeWhenNoneIsAsked) {
  const std::string path = movieOf(randomPicture("64x48"));
  const std::vector<std::uint8_t> raw = rawFrames(path, 1, GetParam().name);
  DecodedMovie movie(path);
  const Picture picture = movie.pictureAt(0);
  ASSERT_EQ(picture.width, 64);
  ASSERT_EQ(picture.height, 48);
  const RawLayout& layout = GetParam().layout;
  for (std::size_t c = 0; c < layout.components.size(); ++c) {
    if (layout.components[c].across != 0 || layout.components[c].down != 0) continue;
    for (int i = 0; i < 64 * 48; ++i) {
      const double code = layout.code(raw.data(), 64, 48, c, i % 64, i / 64) * std::ldexp(1.0, 16 - layout.depth);
      ASSERT_NEAR(picture.planes[c][static_cast<std::size_t>(i)], code, 0.51);
    }
  }
}

TEST_P(PixelFormat, OneColourStaysThatColourAtEverySize) {
  const std::string path = oneColour();
  const std::vector<std::uint8_t> raw = rawFrames(path, 1, GetParam().name);
  DecodedMovie movie(path);
  const RawLayout& layout = GetParam().layout;
  for (const auto& [width, height] : {std::pair{320, 240}, std::pair{64, 48}, std::pair{21, 17}, std::pair{1, 1}}) {
    const Picture picture = movie.pictureAt(0, width, height, {1.3, 0.7, 60.2, 41.9});
    for (std::size_t c = 0; c < layout.components.size(); ++c) {
      const double code = layout.code(raw.data(), 64, 48, c, 0, 0) * std::ldexp(1.0, 16 - layout.depth);
      for (const std::uint16_t sample : picture.planes[c])
        ASSERT_EQ(sample, static_cast<std::uint16_t>(std::floor(code + 0.5)));
    }
  }
}

TEST_P(PixelFormat, GreyWithoutChromaIsNeutral) {
  DecodedMovie movie(oneColour());
  const Picture picture = movie.pictureAt(0, 32, 24);
  const std::size_t planes = GetParam().layout.components.size();
  if (planes != 1) {
    EXPECT_EQ(picture.planes[2].size(), picture.planes[0].size());
  } else if (picture.model == PictureModel::Grey) {
    EXPECT_TRUE(picture.planes[1].empty());
  } else {
    EXPECT_EQ(picture.planes[1], std::vector<std::uint16_t>(picture.planes[0].size(), 0x8000));
    EXPECT_EQ(picture.planes[2], picture.planes[1]);
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, PixelFormat, testing::ValuesIn(formats()), testName);

/// Formats whose raw frames are not written as they are kept: ffmpeg turns them into another one without loss.
struct Converted {
  std::string name;
  std::vector<std::string> encoder;
  std::string judge;
  RawLayout layout;
  friend void PrintTo(const Converted& row, std::ostream* out) { *out << row.name; }
};

class ConvertedFormat : public testing::TestWithParam<Converted> {};

TEST_P(ConvertedFormat, ShowsTheSamePixels) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25,noise=alls=20", "-frames:v", "2"};
  arguments.insert(arguments.end(), GetParam().encoder.begin(), GetParam().encoder.end());
  const std::string path = fixtureMovie("pixels.mov", arguments);
  const std::vector<std::uint8_t> raw = rawFrames(path, 1, GetParam().judge);
  DecodedMovie movie(path);
  const Picture picture = movie.pictureAt(0);
  const RawLayout& layout = GetParam().layout;
  ASSERT_EQ(picture.model, layout.model);
  ASSERT_EQ(picture.depth, layout.depth);
  for (std::size_t c = 0; c < layout.components.size(); ++c) {
    for (int i = 0; i < 64 * 48; ++i) {
      ASSERT_EQ(picture.planes[c][static_cast<std::size_t>(i)],
                layout.code(raw.data(), 64, 48, c, i % 64, i / 64) * 256)
          << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ConvertedFormat,
    testing::Values(
        Converted{"palette", {"-c:v", "png", "-pix_fmt", "pal8"}, "rgb24", packedRgb(0, 1, 2, 3, 8, false)},
        Converted{
            "paletteOfTheContainer", {"-c:v", "smc", "-pix_fmt", "pal8"}, "rgb24", packedRgb(0, 1, 2, 3, 8, false)},
        Converted{"rawPalette", {"-c:v", "rawvideo", "-pix_fmt", "pal8"}, "rgb24", packedRgb(0, 1, 2, 3, 8, false)},
        Converted{"rawGrey", {"-c:v", "rawvideo", "-pix_fmt", "gray"}, "rgb24", packedRgb(0, 1, 2, 3, 8, false)},
        Converted{"animationGrey", {"-c:v", "qtrle", "-pix_fmt", "gray"}, "rgb24", packedRgb(0, 1, 2, 3, 8, false)},
        Converted{"oneBit", {"-c:v", "png", "-pix_fmt", "monob"}, "gray", grey(8, false, PictureModel::Grey, 1)}),
    [](const auto& format) { return format.param.name; });

}  // namespace
}  // namespace movie::test

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/movie/decode/DecodedMovie.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie::test {
namespace {

struct Codec {
  const char* name;
  const char* extension;
  const char* tag;      ///< of the image description
  const char* picture;  ///< size and rate for lavfi
  std::vector<std::string> options;
  int depth = 8;
  PictureModel model = PictureModel::YCbCr;
};

void PrintTo(const Codec& codec, std::ostream* stream) {
  *stream << codec.name;
}

class Codecs : public testing::TestWithParam<Codec> {};

std::string movieOf(const Codec& codec) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", std::string("testsrc2=duration=0.3:") + codec.picture};
  arguments.insert(arguments.end(), codec.options.begin(), codec.options.end());
  arguments.insert(arguments.end(), {"-tag:v", codec.tag});
  if (std::string(codec.extension) == ".qt") arguments.insert(arguments.end(), {"-f", "mov"});
  return fixtureMovie(std::string(codec.name) + codec.extension, arguments);
}

TEST_P(Codecs, ShowWhatAFullDecodeShows) {
  const Codec& codec = GetParam();
  const std::string path = movieOf(codec);
  DecodedMovie movie(path);
  EXPECT_EQ(movie.codec(), codec.tag);
  const FullDecode judge = fullDecode(path, codec.model == PictureModel::Rgb ? "r" : "y");
  ASSERT_EQ(judge.frames.size(), movie.table().sampleCount());
  for (const std::size_t which : {judge.frames.size() - 1, judge.frames.size() / 2, std::size_t{0}}) {
    const Picture picture = movie.pictureAt(judge.frames[which].time);
    EXPECT_EQ(picture.depth, codec.depth);
    EXPECT_EQ(picture.model, codec.model);
    EXPECT_EQ(firstPlaneChecksum(picture), judge.frames[which].checksum) << which;
  }
}

std::vector<Codec> codecs() {
  const char* small = "size=192x128:rate=25";
  const char* hd = "size=1920x1080:rate=25";
  const char* pal = "size=720x576:rate=25";
  const char* ntsc = "size=720x480:rate=30000/1001";
  const auto rgb = PictureModel::Rgb;
  return {
      {"ProRes422", ".mov", "apcn", small, {"-c:v", "prores_ks", "-profile:v", "2"}, 10},
      {"ProResProxy", ".mov", "apco", small, {"-c:v", "prores_ks", "-profile:v", "0"}, 10},
      {"ProResLT", ".mov", "apcs", small, {"-c:v", "prores_ks", "-profile:v", "1"}, 10},
      {"ProResHQ", ".qt", "apch", small, {"-c:v", "prores_ks", "-profile:v", "3"}, 10},
      {"ProRes4444", ".mov", "ap4h", small, {"-c:v", "prores_ks", "-profile:v", "4", "-pix_fmt", "yuva444p10le"}, 12},
      {"ProResInterlaced", ".mov", "apcn", pal, {"-c:v", "prores_ks", "-profile:v", "2", "-flags", "+ildct"}, 10},
      {"DNxHD", ".mov", "AVdn", hd, {"-c:v", "dnxhd", "-b:v", "120M", "-pix_fmt", "yuv422p"}},
      {"DNxHD10", ".mov", "AVdn", hd, {"-c:v", "dnxhd", "-b:v", "185M", "-pix_fmt", "yuv422p10le"}, 10},
      {"DNxHR",
       ".mov",
       "AVdh",
       "size=256x144:rate=25",
       {"-c:v", "dnxhd", "-profile:v", "dnxhr_sq", "-pix_fmt", "yuv422p"}},
      {"DNxHR444",
       ".mov",
       "AVdh",
       "size=256x144:rate=25",
       {"-c:v", "dnxhd", "-profile:v", "dnxhr_444", "-pix_fmt", "yuv444p10le"},
       10},
      {"H264", ".m4v", "avc1", small, {"-c:v", "libx264", "-pix_fmt", "yuv420p"}},
      {"H264InBand", ".mov", "avc3", small, {"-c:v", "libx264", "-pix_fmt", "yuv420p"}},
      {"HEVC",
       ".mp4",
       "hvc1",
       small,
       {"-c:v", "libx265", "-x265-params", "log-level=none", "-pix_fmt", "yuv420p10le"},
       10},
      {"HEVCGrey", ".mov", "hev1", small, {"-c:v", "libx265", "-x265-params", "log-level=none", "-pix_fmt", "gray"}},
      {"VP9", ".mp4", "vp09", small, {"-c:v", "libvpx-vp9", "-pix_fmt", "yuv420p"}},
      {"AV1", ".mp4", "av01", small, {"-c:v", "libaom-av1", "-cpu-used", "8", "-pix_fmt", "yuv420p"}},
      {"MPEG4", ".mp4", "mp4v", small, {"-c:v", "mpeg4", "-q:v", "3"}},
      {"PhotoJPEG", ".mov", "jpeg", small, {"-c:v", "mjpeg", "-q:v", "2", "-pix_fmt", "yuvj422p"}},
      {"JPEG2000", ".mov", "mjp2", small, {"-c:v", "jpeg2000", "-pix_fmt", "yuv422p"}},
      {"JPEG2000RGB", ".mov", "mjp2", small, {"-c:v", "jpeg2000", "-pix_fmt", "rgb24"}, 8, rgb},
      {"PNG", ".mov", "png ", small, {"-c:v", "png", "-pix_fmt", "rgb24"}, 8, rgb},
      {"Animation", ".mov", "rle ", small, {"-c:v", "qtrle", "-pix_fmt", "rgb24"}, 8, rgb},
      {"AnimationAlpha", ".mov", "rle ", small, {"-c:v", "qtrle", "-pix_fmt", "argb"}, 8, rgb},
      {"Uncompressed10", ".mov", "v210", small, {"-c:v", "v210"}, 10},
      {"Uncompressed8", ".mov", "2vuy", small, {"-c:v", "rawvideo", "-pix_fmt", "uyvy422"}},
      {"UncompressedRGB", ".mov", "raw ", small, {"-c:v", "rawvideo", "-pix_fmt", "rgb24"}, 8, rgb},
      {"DVPAL", ".mov", "dvcp", pal, {"-c:v", "dvvideo", "-pix_fmt", "yuv420p"}},
      {"DVNTSC", ".mov", "dvc ", ntsc, {"-c:v", "dvvideo", "-pix_fmt", "yuv411p"}},
      {"DVCPRO50", ".mov", "dv5p", pal, {"-c:v", "dvvideo", "-pix_fmt", "yuv422p"}},
      {"DVCPROHD", ".mov", "dvh5", "size=1440x1080:rate=25", {"-c:v", "dvvideo", "-pix_fmt", "yuv422p"}},
      {"XDCAMEX",
       ".mov",
       "xdv3",
       "size=1440x1080:rate=25",
       {"-c:v", "mpeg2video", "-bf", "2", "-g", "12", "-b:v", "25M", "-flags", "+ildct+ilme", "-vf", "setfield=tff"}},
      {"XDCAMHD422",
       ".mov",
       "xd5e",
       hd,
       {"-c:v", "mpeg2video", "-bf", "2", "-g", "12", "-b:v", "50M", "-pix_fmt", "yuv422p"}},
      {"IMX",
       ".mov",
       "mx5p",
       "size=720x608:rate=25",
       {"-c:v", "mpeg2video", "-g", "1", "-b:v", "50M", "-pix_fmt", "yuv422p", "-intra_vlc", "1"}},
      {"CineForm", ".mov", "CFHD", small, {"-c:v", "cfhd"}, 10},
      {"CineFormRGB", ".mov", "CFHD", small, {"-c:v", "cfhd", "-pix_fmt", "gbrp12le"}, 12, rgb},
  };
}

/// ffmpeg writes no HDV tags; the stream under them is the same.
TEST(HdvTags, DecodeAsMpeg2) {
  const std::string path = movieOf({"XDCAMEX",
                                    ".mov",
                                    "xdv3",
                                    "size=1440x1080:rate=25",
                                    {"-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-vf", "setfield=tff"}});
  const std::uint32_t expected = firstPlaneChecksum(DecodedMovie(path).pictureAt(0));
  std::string bytes = textOf(path);
  const std::size_t at = bytes.find("xdv3");
  ASSERT_NE(at, std::string::npos);
  for (const char digit : {'1', '2', '3', '4', '5', '6', '7', '8', '9'}) {
    bytes.replace(at, 4, std::string("hdv") + digit);
    const std::string copy = testing::TempDir() + "hdv" + digit + "-" + std::to_string(getpid()) + ".mov";
    std::ofstream(copy, std::ios::binary) << bytes;
    DecodedMovie movie(copy);
    EXPECT_EQ(movie.codec(), std::string("hdv") + digit);
    EXPECT_EQ(firstPlaneChecksum(movie.pictureAt(0)), expected);
    std::filesystem::remove(copy);
  }
}

INSTANTIATE_TEST_SUITE_P(Every, Codecs, testing::ValuesIn(codecs()),
                         [](const auto& codec) { return std::string(codec.param.name); });

std::string coloured(const std::string& name, const std::vector<std::string>& encoder, const char* range) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=192x128:rate=25:duration=0.2"};
  arguments.insert(arguments.end(), encoder.begin(), encoder.end());
  arguments.insert(arguments.end(), {"-color_primaries", "smpte170m", "-color_trc", "bt709", "-colorspace", "smpte170m",
                                     "-color_range", range, "-movflags", "write_colr"});
  return fixtureMovie(name, arguments);
}

TEST(PictureColour, IsThatOfTheBitstream) {
  const Picture picture =
      DecodedMovie(coloured("tagged.mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p"}, "pc")).pictureAt(0);
  EXPECT_EQ(picture.primaries, 6);
  EXPECT_EQ(picture.transferFunction, 1);
  EXPECT_EQ(picture.matrix, 6);
  EXPECT_EQ(picture.range, PictureRange::Full);
  EXPECT_EQ(picture.codedHeight, 128);
}

TEST(PictureColour, IsNotTheContainersWhereTheBitstreamSaysNothing) {
  const Picture picture = DecodedMovie(coloured("tagged.mp4", {"-c:v", "mpeg4"}, "tv")).pictureAt(0);
  EXPECT_EQ(picture.primaries, 2);
  EXPECT_EQ(picture.transferFunction, 2);
  EXPECT_EQ(picture.matrix, 2);
}

TEST(PictureColour, HasTheContainersRangeWhereTheBitstreamSaysNothing) {
  EXPECT_EQ(DecodedMovie(coloured("tagged.mp4", {"-c:v", "mpeg4"}, "pc")).pictureAt(0).range, PictureRange::Full);
  EXPECT_EQ(DecodedMovie(coloured("tagged.mp4", {"-c:v", "mpeg4"}, "tv")).pictureAt(0).range, PictureRange::Video);
  EXPECT_EQ(DecodedMovie(coloured("tagged.mov", {"-c:v", "mpeg4"}, "pc")).pictureAt(0).range,
            PictureRange::Unspecified);
}

TEST(PictureColour, OfPhotographicJpegIsFullRange) {
  const std::vector<std::string> encoder{"-c:v", "mjpeg", "-pix_fmt", "yuvj420p"};
  EXPECT_EQ(DecodedMovie(coloured("tagged.mov", encoder, "pc")).pictureAt(0).range, PictureRange::Full);
}

}  // namespace
}  // namespace movie::test

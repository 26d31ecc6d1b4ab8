#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "tests/check/accuracy/EncodedPair.h"
#include "tests/support/MovieFixture.h"

namespace check::test {
namespace {

using movie::test::SceneKind;
using movie::test::SceneRange;

const std::vector<Exponent> exponents{{}, 0.5, 0.8, 0.9, 1.1, 1.25, 1.5, 2.0};

double allowance(double exponent) {
  return exponent == 2.0 ? 0.03 : 0.02;
}

Encoding sized(Encoding encoding, const char* suffix, int width, int height) {
  encoding.name += suffix;
  encoding.width = width;
  encoding.height = height;
  return encoding;
}

Encoding fullRange(Encoding encoding) {
  encoding.name += "Full";
  encoding.range = SceneRange::Full;
  return encoding;
}

std::vector<Encoding> encodings() {
  const Encoding prores{"ProRes422", ".mov", "yuv422p10le", {"-c:v", "prores_ks", "-profile:v", "3"}};
  const Encoding h264{"H264", ".mp4", "yuv420p", {"-c:v", "libx264", "-preset", "veryfast", "-crf", "16"}};
  const Encoding h264Ten{"H264Ten", ".mov", "yuv420p10le", {"-c:v", "libx264", "-preset", "veryfast", "-crf", "16"}};
  const Encoding hevc{"HEVC",
                      ".mp4",
                      "yuv420p",
                      {"-c:v", "libx265", "-preset", "ultrafast", "-crf", "16", "-x265-params", "log-level=error"}};
  const Encoding hevcTen{"HEVCTen",
                         ".mov",
                         "yuv420p10le",
                         {"-c:v", "libx265", "-preset", "ultrafast", "-crf", "16", "-x265-params", "log-level=error"}};
  const Encoding v210{"V210", ".mov", "yuv422p10le", {"-c:v", "v210"}};
  const Encoding mpeg4{"MPEG4", ".m4v", "yuv420p", {"-c:v", "mpeg4", "-q:v", "2"}};
  Encoding png{"PNG", ".mov", "rgb24", {"-c:v", "png"}};
  png.rgb = true;
  Encoding cineformRgb{"CineFormRGB", ".mov", "gbrp12le", {"-c:v", "cfhd", "-quality", "film3+"}};
  cineformRgb.rgb = true;
  auto rgb = [&](const char* name, const char* format, std::vector<std::string> codec) {
    return Encoding{name, ".mov", format, std::move(codec), SceneRange::Video, 640, 360, true};
  };
  Encoding hevcRgb{"HEVCRGB", ".mov", "gbrp", hevc.codec, SceneRange::Video, 640, 360, true};
  Encoding mjpeg{"MJPEG", ".mov", "yuvj422p", {"-c:v", "mjpeg", "-q:v", "2"}, SceneRange::Full};

  return {
      prores,
      sized(prores, "HD", 1280, 720),
      sized(prores, "SD", 720, 576),
      sized(prores, "FullHD", 1920, 1080),
      sized(prores, "Small", 320, 240),
      sized(prores, "Tall", 200, 1600),
      {"ProRes4444", ".mov", "yuv444p10le", {"-c:v", "prores_ks", "-profile:v", "4"}},
      {"DNxHD", ".mov", "yuv422p", {"-c:v", "dnxhd", "-b:v", "120M"}, SceneRange::Video, 1920, 1080},
      {"DNxHRSQ", ".mov", "yuv422p", {"-c:v", "dnxhd", "-profile:v", "dnxhr_hq"}},
      {"DNxHRHQX", ".mov", "yuv422p10le", {"-c:v", "dnxhd", "-profile:v", "dnxhr_hqx"}},
      {"DNxHR444", ".mov", "yuv444p10le", {"-c:v", "dnxhd", "-profile:v", "dnxhr_444"}},
      h264,
      fullRange(h264),
      sized(h264, "HD", 1280, 720),
      sized(h264, "SD", 720, 480),
      {"H264OddSize", ".mp4", "yuv444p", h264.codec, SceneRange::Video, 853, 479},
      {"H264Interlaced",
       ".mov",
       "yuv420p",
       {"-c:v", "libx264", "-preset", "veryfast", "-crf", "16", "-flags", "+ildct+ilme"},
       SceneRange::Video,
       720,
       576},
      sized(fullRange(h264), "SD", 640, 480),
      h264Ten,
      fullRange(h264Ten),
      hevc,
      fullRange(hevc),
      sized(hevc, "SD", 720, 480),
      hevcTen,
      sized(hevcTen, "HD", 1280, 720),
      fullRange(hevcTen),
      {"HEVCTwelve", ".mov", "yuv422p12le", hevc.codec, SceneRange::Video, 640, 360},
      hevcRgb,
      mpeg4,
      sized(mpeg4, "SD", 720, 576),
      mjpeg,
      sized(mjpeg, "SD", 640, 480),
      {"JPEG2000", ".mov", "yuv422p", {"-c:v", "jpeg2000", "-q:v", "2"}, SceneRange::Video, 640, 360},
      {"JPEG2000Ten", ".mov", "yuv422p10le", {"-c:v", "jpeg2000", "-pred", "1"}, SceneRange::Video, 640, 360},
      rgb("JPEG2000RGB", "rgb24", {"-c:v", "jpeg2000", "-q:v", "2"}),
      png,
      sized(png, "HD", 1280, 720),
      sized(png, "SD", 640, 480),
      sized(png, "OddSize", 853, 479),
      rgb("PNG48", "rgb48be", {"-c:v", "png"}),
      rgb("Animation", "rgb24", {"-c:v", "qtrle"}),
      rgb("AnimationAlpha", "argb", {"-c:v", "qtrle"}),
      v210,
      sized(v210, "SD", 720, 486),
      {"Uncompressed422", ".mov", "uyvy422", {"-c:v", "rawvideo"}},
      rgb("UncompressedRGB", "rgb24", {"-c:v", "rawvideo"}),
      {"DVPAL", ".mov", "yuv420p", {"-c:v", "dvvideo"}, SceneRange::Video, 720, 576},
      {"DVNTSC", ".mov", "yuv411p", {"-c:v", "dvvideo", "-r", "30000/1001"}, SceneRange::Video, 720, 480},
      {"DVCPRO50", ".mov", "yuv422p", {"-c:v", "dvvideo"}, SceneRange::Video, 720, 576},
      {"MPEG2", ".mov", "yuv420p", {"-c:v", "mpeg2video", "-q:v", "2"}},
      {"MPEG2422", ".mov", "yuv422p", {"-c:v", "mpeg2video", "-q:v", "2"}, SceneRange::Video, 1920, 1080},
      {"CineForm", ".mov", "yuv422p10le", {"-c:v", "cfhd", "-quality", "film3+"}},
      cineformRgb,
  };
}

const Encoding& proresMaster() {
  static const Encoding encoding{"ProRes422", ".mov", "yuv422p10le", {"-c:v", "prores_ks", "-profile:v", "3"}};
  return encoding;
}

struct Case {
  Encoding encoding;
  SceneKind scene;
};
void PrintTo(const Case& test, std::ostream* out) {
  *out << test.encoding.name;
}

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const Encoding& encoding : encodings()) {
    all.push_back({encoding, SceneKind::GreyRamp});
    all.push_back({encoding, SceneKind::Natural});
  }
  return all;
}

class MeasuredGamma : public testing::TestWithParam<Case> {};

TEST_P(MeasuredGamma, IsTheExponentThatTheLumaWasRaisedTo) {
  const auto& [encoding, scene] = GetParam();
  std::string line = encoding.name + (scene == SceneKind::GreyRamp ? " ramp:" : " natural:");
  const std::vector<std::string> exports = encodedExports(encoding, encoding, scene, exponents);
  for (std::size_t i = 0; i < exports.size(); ++i) {
    const double measured = measuredExponent(encodedMaster(encoding, scene), exports[i]);
    const double exponent = exponents[i].value_or(1.0);
    EXPECT_NEAR(measured, exponent, exponents[i] ? allowance(exponent) + 1e-9 : 0.0101);
    line += "  " + std::to_string(exponent).substr(0, 4) + " -> " + std::to_string(measured).substr(0, 4);
  }
  std::puts(line.c_str());
}

TEST_P(MeasuredGamma, OfAFileAgainstItselfIsOne) {
  const auto& [encoding, scene] = GetParam();
  const std::string master = encodedMaster(encoding, scene);
  EXPECT_EQ(measuredExponent(master, master), 1.0);
}

INSTANTIATE_TEST_SUITE_P(Encodings, MeasuredGamma, testing::ValuesIn(cases()), [](const auto& test) {
  return test.param.encoding.name + (test.param.scene == SceneKind::GreyRamp ? "Ramp" : "Natural");
});

/// A ProRes master exported to every other YCbCr encoding of its size.
TEST(MeasuredGammaAcrossCodecs, IsTheExponentOfTheExport) {
  for (const Encoding& encoding : encodings()) {
    if (encoding.width != proresMaster().width || encoding.height != proresMaster().height || encoding.rgb ||
        encoding.range == SceneRange::Full)
      continue;
    for (const SceneKind scene : {SceneKind::GreyRamp, SceneKind::Natural}) {
      const std::vector<Exponent> some{{}, 0.8, 1.25};
      const std::vector<std::string> exports = encodedExports(proresMaster(), encoding, scene, some);
      for (std::size_t i = 0; i < exports.size(); ++i) {
        const double measured = measuredExponent(encodedMaster(proresMaster(), scene), exports[i]);
        EXPECT_NEAR(measured, some[i].value_or(1.0), some[i] ? 0.0201 : 0.0101) << encoding.name;
      }
    }
  }
}

TEST(MeasuredGammaOfRealMovies, AgainstThemselvesIsOne) {
  const std::vector<std::string> movies = movie::test::realMovies();
  if (movies.empty()) GTEST_SKIP() << movie::test::whyNoRealMovies();
  for (const std::string& path : movies) EXPECT_EQ(measuredExponent(path, path), 1.0) << path;
}

}  // namespace
}  // namespace check::test

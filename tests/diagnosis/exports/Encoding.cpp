#include "tests/diagnosis/exports/Encoding.h"

#include <cstdlib>

namespace diagnosis::test {
namespace {

std::string nameOf(Matrix matrix) {
  switch (matrix) {
    case Matrix::Bt709:
      return "bt709";
    case Matrix::Bt601:
      return "smpte170m";
    case Matrix::Bt2020:
      break;
  }
  return "bt2020nc";
}

/// As the scale filter calls it.
std::string scalerName(Matrix matrix) {
  return matrix == Matrix::Bt2020 ? "bt2020" : nameOf(matrix);
}

/// Primaries and transfer function: a wrong matrix comes with its own primaries seldom enough.
std::string primariesOf(Matrix matrix) {
  return matrix == Matrix::Bt2020 ? "bt2020" : nameOf(matrix);
}
std::string transferOf(const Colors& colors) {
  if (colors.light == Light::Pq) return "smpte2084";
  if (colors.light == Light::Hlg) return "arib-std-b67";
  return colors.matrix == Matrix::Bt2020 ? "bt2020-10" : nameOf(colors.matrix);
}

Encoding x264With(int crf, const std::string& format, const std::vector<std::string>& further = {}) {
  Encoding encoding{".mp4", format, {"-c:v", "libx264", "-preset", "veryfast", "-crf", std::to_string(crf)}};
  encoding.codec.insert(encoding.codec.end(), further.begin(), further.end());
  return encoding;
}

Encoding x265With(int crf, const std::string& format) {
  return {".mp4",
          format,
          {"-c:v", "libx265", "-preset", "ultrafast", "-crf", std::to_string(crf), "-x265-params", "log-level=error",
           "-tag:v", "hvc1"}};
}

/// Bits of a sample, from the format's name.
int bitsOf(const std::string& format) {
  for (const char* bits : {"10", "12", "16"}) {
    if (format.find(std::string("p") + bits) != std::string::npos) return std::atoi(bits);
  }
  return 8;
}

/// The curve with the signal put in its place.
std::string inCodes(std::string curve, const std::string& signal) {
  for (std::size_t at = curve.find('S'); at != std::string::npos; at = curve.find('S', at)) {
    curve.replace(at, 1, signal);
    at += signal.size();
  }
  return curve;
}

}  // namespace

Encoding proRes() {
  return {".mov", "yuv422p10le", {"-c:v", "prores_ks", "-profile:v", "3"}};
}
Encoding proRes4444() {
  return {".mov", "yuv444p10le", {"-c:v", "prores_ks", "-profile:v", "4"}};
}
Encoding proRes4444Alpha() {
  return {".mov", "yuva444p10le", {"-c:v", "prores_ks", "-profile:v", "4"}};
}
Encoding proResInterlaced() {
  return {".mov", "yuv422p10le", {"-c:v", "prores_ks", "-profile:v", "3", "-flags", "+ildct"}};
}
Encoding x264(int crf) {
  return x264With(crf, "yuv420p");
}
Encoding x264Ten(int crf) {
  return x264With(crf, "yuv420p10le");
}
Encoding x264Interlaced(int crf) {
  return x264With(crf, "yuv420p", {"-flags", "+ildct+ilme", "-top", "1"});
}
Encoding x265(int crf) {
  return x265With(crf, "yuv420p");
}
Encoding x265Ten(int crf) {
  return x265With(crf, "yuv420p10le");
}
Encoding mpeg4(int quantiser) {
  return {".mp4", "yuv420p", {"-c:v", "mpeg4", "-q:v", std::to_string(quantiser)}};
}
Encoding mpeg2(int quantiser) {
  return {".mov", "yuv422p", {"-c:v", "mpeg2video", "-q:v", std::to_string(quantiser)}};
}
Encoding mjpeg(int quantiser) {
  return {".mov", "yuvj422p", {"-c:v", "mjpeg", "-q:v", std::to_string(quantiser)}};
}
Encoding dnxhr() {
  return {".mov", "yuv422p", {"-c:v", "dnxhd", "-profile:v", "dnxhr_sq"}};
}
Encoding dnxhrTen() {
  return {".mov", "yuv422p10le", {"-c:v", "dnxhd", "-profile:v", "dnxhr_hqx"}};
}
Encoding v210() {
  return {".mov", "yuv422p10le", {"-c:v", "v210"}};
}
Encoding jpeg2000() {
  return {".mov", "yuv422p", {"-c:v", "jpeg2000", "-q:v", "2"}};
}
Encoding cineForm() {
  return {".mov", "yuv422p10le", {"-c:v", "cfhd", "-quality", "film3+"}};
}
Encoding cineFormRgb() {
  return {".mov", "gbrp12le", {"-c:v", "cfhd", "-quality", "film3+"}};
}
Encoding png() {
  return {".mov", "rgb24", {"-c:v", "png", "-compression_level", "1"}};
}
Encoding animation() {
  return {".mov", "rgb24", {"-c:v", "qtrle"}};
}
Encoding animationAlpha() {
  return {".mov", "argb", {"-c:v", "qtrle"}};
}
Encoding copied(const std::string& extension) {
  return {extension, "", {"-c", "copy"}};
}

std::string converted(const Colors& from, const Colors& to, const std::string& format) {
  std::string filter = "scale=flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp";
  if (!from.rgb) filter += ":in_color_matrix=" + scalerName(from.matrix) + ":in_range=" + (from.full ? "pc" : "tv");
  if (!to.rgb) filter += ":out_color_matrix=" + scalerName(to.matrix) + ":out_range=" + (to.full ? "pc" : "tv");
  return filter + ",format=" + format;
}

std::string taggingFilter(const Colors& tags) {
  if (tags.rgb) return untaggingFilter();
  return std::string("setparams=range=") + (tags.full ? "pc" : "tv") + ":colorspace=" + nameOf(tags.matrix) +
         ":color_primaries=" + primariesOf(tags.matrix) + ":color_trc=" + transferOf(tags);
}

std::vector<std::string> taggingArguments(const Colors& tags) {
  if (tags.rgb) return {};
  return {"-color_range",     tags.full ? "pc" : "tv",  "-colorspace", nameOf(tags.matrix),
          "-color_primaries", primariesOf(tags.matrix), "-color_trc",  transferOf(tags)};
}

std::string untaggingFilter() {
  return "setparams=range=unknown:colorspace=unknown:color_primaries=unknown:color_trc=unknown";
}

std::string lumaCurve(const std::string& format, bool full, const std::string& curve) {
  const int bits = bitsOf(format);
  const int black = full ? 0 : 16 << (bits - 8);
  const int span = full ? (1 << bits) - 1 : 219 << (bits - 8);
  const std::string signal = "((val-" + std::to_string(black) + ")/" + std::to_string(span) + ")";
  return "lutyuv=y='" + std::to_string(black) + ".5+" + std::to_string(span) + "*(" + inCodes(curve, signal) + ")'";
}

std::string rgbCurve(const std::string& curve) {
  const std::string code = "'clip(0.5+4095*(" + inCodes(curve, "(val/4095)") + ")\\,0\\,4095)'";
  return "lutrgb=r=" + code + ":g=" + code + ":b=" + code;
}

}  // namespace diagnosis::test

#pragma once

#include <string>
#include <vector>

namespace diagnosis::test {

enum class Matrix { Bt709, Bt601, Bt2020 };

/// How light is encoded: as a matrix's recommendation does, or as ITU-R BT.2100.
enum class Light { Usual, Pq, Hlg };

/// What samples mean, or are said to mean. RGB is always of full range here.
struct Colors {
  Matrix matrix = Matrix::Bt709;
  bool full = false, rgb = false;
  Light light = Light::Usual;
};

constexpr Colors video709{}, full709{.full = true}, video601{.matrix = Matrix::Bt601}, full601{Matrix::Bt601, true},
    video2020{.matrix = Matrix::Bt2020}, pq2020{.matrix = Matrix::Bt2020, .light = Light::Pq},
    hlg2020{.matrix = Matrix::Bt2020, .light = Light::Hlg}, rgbColors{.full = true, .rgb = true};

/// How ffmpeg is asked for a codec.
struct Encoding {
  std::string extension;
  std::string format;  ///< of pixels, as ffmpeg calls it; empty where samples are copied
  std::vector<std::string> codec;
  bool copied() const { return format.empty(); }
};

Encoding proRes();
Encoding proRes4444();
Encoding proRes4444Alpha();
Encoding proResInterlaced();
Encoding x264(int crf);
Encoding x264Ten(int crf);
Encoding x264Interlaced(int crf);
Encoding x265(int crf);
Encoding x265Ten(int crf);
Encoding mpeg4(int quantiser);
Encoding mpeg2(int quantiser);
Encoding mjpeg(int quantiser);  ///< its codes are of full range
Encoding dnxhr();
Encoding dnxhrTen();
Encoding v210();
Encoding jpeg2000();
Encoding cineForm();
Encoding cineFormRgb();
Encoding png();
Encoding animation();
Encoding animationAlpha();
Encoding copied(const std::string& extension);

/// The filter that converts samples of one meaning into those of another, and into a format.
std::string converted(const Colors& from, const Colors& to, const std::string& format);

/// Filters and arguments that say what samples mean.
std::string taggingFilter(const Colors& tags);
std::vector<std::string> taggingArguments(const Colors& tags);
/// Those that say nothing.
std::string untaggingFilter();

/// The filter that gives luma another value: `curve` is an expression of the signal `S`, from 0 (black) to 1 (white).
/// Only formats of planes; full range only in 8 bits.
std::string lumaCurve(const std::string& format, bool full, const std::string& curve);
/// What R'G'B' is converted to for filters: fine enough, and quickly looked up.
constexpr const char* rgbFormat = "gbrp12le";

/// The same for each of R', G' and B', of rgbFormat.
std::string rgbCurve(const std::string& curve);

}  // namespace diagnosis::test

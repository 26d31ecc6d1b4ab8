#include "tests/diagnosis/PaintedPicture.h"

#include <algorithm>
#include <cmath>

namespace diagnosis::test {

Paint colorful(double seed) {
  return [seed](double x, double y) {
    Vector3 rgb{0.5 + 0.45 * std::sin(5.1 * x + 2.3 * y + seed),
                0.5 + 0.45 * std::sin(3.7 * y - 4.1 * x + 2 * seed + 1),
                0.5 + 0.45 * std::cos(6.3 * x * y + 1.9 * y + 3 * seed)};
    const double shade = 0.35 + 0.65 * (0.5 + 0.5 * std::cos(9 * x - 4 * y + seed));
    const bool grey = std::fmod(7 * x + 3 * y + seed, 2) < 0.5;
    const double middle = (rgb[0] + rgb[1] + rgb[2]) / 3;
    for (double& value : rgb) value = std::clamp((grey ? middle : value) * shade, 0.0, 1.0);
    return rgb;
  };
}

Paint toned(const Paint& paint, const std::function<double(double)>& tone) {
  return [paint, tone](double x, double y) {
    Vector3 rgb = paint(x, y);
    for (double& value : rgb) value = std::clamp(tone(value), 0.0, 1.0);
    return rgb;
  };
}

movie::Picture painted(const Paint& paint, const Coding& coding) {
  movie::Picture picture;
  picture.width = coding.width;
  picture.height = coding.height;
  picture.depth = coding.depth;
  picture.range = coding.range;
  picture.matrix = coding.matrix;
  picture.codedHeight = 1080;
  if (coding.matrix == 0) picture.model = movie::PictureModel::Rgb;
  const bool video = coding.range == movie::PictureRange::Video;
  const double unit = std::pow(2.0, 16 - coding.depth), highest = std::pow(2.0, coding.depth) - 1;
  const double coarse = std::pow(2.0, coding.depth - 8);
  const Matrix3 matrix = fromRgbMatrix(coding.matrix);
  for (int row = 0; row < coding.height; ++row) {
    for (int column = 0; column < coding.width; ++column) {
      const Vector3 rgb = paint((column + 0.5) / coding.width, (row + 0.5) / coding.height);
      const Vector3 signal = coding.matrix == 0 ? rgb : product(matrix, rgb);
      for (std::size_t plane = 0; plane < 3; ++plane) {
        const bool chroma = coding.matrix != 0 && plane > 0;
        const double code = chroma  ? 128 * coarse + signal[plane] * (video ? 224 * coarse : highest)
                            : video ? (16 + 219 * signal[plane]) * coarse
                                    : signal[plane] * highest;
        picture.planes[plane].push_back(
            static_cast<std::uint16_t>(std::clamp(std::lround(code), 0L, std::lround(highest)) * std::lround(unit)));
      }
    }
  }
  return picture;
}

SideTags taggedAs(const movie::Picture& picture, std::uint16_t matrix) {
  SideTags tags;
  tags.primaries = tags.transferFunction = 1;
  tags.matrix = matrix == 0 ? 2 : matrix;
  tags.model = picture.model;
  tags.depth = picture.depth;
  tags.statedRange = picture.range;
  tags.range = picture.range == movie::PictureRange::Full ? SampleRange::Full : SampleRange::Video;
  tags.matrixInForce = matrix;
  return tags;
}

Finding findingOf(const movie::Picture& source, const movie::Picture& dest, std::uint16_t sourceMatrix,
                  std::uint16_t destMatrix) {
  Question question;
  question.frames = {{&source, &dest}};
  question.source = taggedAs(source, sourceMatrix);
  question.dest = taggedAs(dest, destMatrix);
  return diagnose(question);
}

}  // namespace diagnosis::test

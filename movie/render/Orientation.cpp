#include "movie/render/Orientation.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace movie {
namespace {

/// A term left over from rounding a sine: less than 1/256 of the one it stands beside.
bool vanishesBeside(std::int32_t term, std::int32_t other) {
  return other != 0 && std::llabs(std::int64_t{term}) * 256 < std::llabs(std::int64_t{other});
}

/// Rows of pixels of some samples each, turned; width and height are the result's.
template <typename Sample>
std::vector<Sample> turnedSamples(const std::vector<Sample>& samples, int resultWidth, int resultHeight,
                                  std::size_t perPixel, const Orientation& orientation) {
  const auto width = static_cast<std::size_t>(resultWidth), height = static_cast<std::size_t>(resultHeight);
  const std::size_t stepX = perPixel * (orientation.transposed ? height : 1);
  const std::size_t stepY = perPixel * (orientation.transposed ? 1 : width);
  std::vector<Sample> result(samples.size());
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t fromY = orientation.mirroredY ? height - 1 - y : y;
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t fromX = orientation.mirroredX ? width - 1 - x : x;
      const Sample* const from = &samples[fromX * stepX + fromY * stepY];
      std::copy(from, from + perPixel, &result[perPixel * (y * width + x)]);
    }
  }
  return result;
}

}  // namespace

Orientation orientationOf(const TransformMatrix& matrix) {
  // A row vector stands left of the matrix: x' = a x + c y + tx, y' = b x + d y + ty.
  const auto a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
  if (vanishesBeside(b, a) && vanishesBeside(c, d)) return {.mirroredX = a < 0, .mirroredY = d < 0};
  if (vanishesBeside(a, c) && vanishesBeside(d, b)) return {.transposed = true, .mirroredX = c < 0, .mirroredY = b < 0};
  return {};
}

RgbFrame oriented(RgbFrame frame, const Orientation& orientation) {
  if (orientation == Orientation{}) return frame;
  if (orientation.transposed) std::swap(frame.width, frame.height);
  frame.samples = turnedSamples(frame.samples, frame.width, frame.height, 3, orientation);
  return frame;
}

Picture oriented(Picture picture, const Orientation& orientation) {
  if (orientation == Orientation{}) return picture;
  if (orientation.transposed) std::swap(picture.width, picture.height);
  for (std::vector<std::uint16_t>& plane : picture.planes) {
    if (!plane.empty()) plane = turnedSamples(plane, picture.width, picture.height, 1, orientation);
  }
  return picture;
}

}  // namespace movie

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

  RgbFrame result{
      .width = frame.width, .height = frame.height, .samples = std::vector<std::uint8_t>(frame.samples.size())};
  if (orientation.transposed) std::swap(result.width, result.height);
  const auto width = static_cast<std::size_t>(result.width), height = static_cast<std::size_t>(result.height);
  const std::size_t stepX = 3 * (orientation.transposed ? height : 1), stepY = 3 * (orientation.transposed ? 1 : width);
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t fromY = orientation.mirroredY ? height - 1 - y : y;
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t fromX = orientation.mirroredX ? width - 1 - x : x;
      const std::uint8_t* const from = &frame.samples[fromX * stepX + fromY * stepY];
      std::copy(from, from + 3, &result.samples[3 * (y * width + x)]);
    }
  }
  return result;
}

}  // namespace movie

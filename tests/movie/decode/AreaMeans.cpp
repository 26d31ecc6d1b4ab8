#include "tests/movie/decode/AreaMeans.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace movie::test {
namespace {

struct Area {
  double left, top, right, bottom;
};

/// What a picture's pixel covers of the grid of component c.
Area areaOf(const Picture& picture, const RawComponent& component, const PictureCrop& crop, int x, int y) {
  const double across = 1 << component.across, down = 1 << component.down;
  return {(crop.left + crop.width * x / picture.width) / across, (crop.top + crop.height * y / picture.height) / down,
          (crop.left + crop.width * (x + 1) / picture.width) / across,
          (crop.top + crop.height * (y + 1) / picture.height) / down};
}

double meanOf(const RawFrame& frame, std::size_t c, const Area& area) {
  const RawLayout& layout = frame.layout;
  const double rows = std::min(std::ceil(area.bottom), 1.0 * layout.heightOf(c, frame.height));
  const double columns = std::min(std::ceil(area.right), 1.0 * layout.widthOf(c, frame.width));
  double sum = 0, whole = 0;
  for (int row = static_cast<int>(area.top); row < rows; ++row) {
    for (int column = static_cast<int>(area.left); column < columns; ++column) {
      const double covered = (std::min(area.right, column + 1.0) - std::max(area.left, 1.0 * column)) *
                             (std::min(area.bottom, row + 1.0) - std::max(area.top, 1.0 * row));
      sum += covered * layout.code(frame.bytes.data(), frame.width, frame.height, c, column, row);
      whole += covered;
    }
  }
  return sum / whole * std::ldexp(1.0, 8 - layout.depth);
}

}  // namespace

double farthestFromAreaMeans(const Picture& picture, const RawFrame& frame, const PictureCrop& crop) {
  double worst = 0;
  for (std::size_t c = 0; c < frame.layout.components.size(); ++c) {
    std::size_t at = 0;
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        const double got = picture.planes[c][at++] / 256.0;
        const Area area = areaOf(picture, frame.layout.components[c], crop, x, y);
        worst = std::max(worst, std::abs(got - meanOf(frame, c, area)));
      }
    }
  }
  return worst;
}

}  // namespace movie::test

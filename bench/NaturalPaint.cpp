#include "bench/NaturalPaint.h"

#include <cstdint>

#include "tests/diagnosis/exports/Paintings.h"

namespace bench {
namespace {

namespace paint = diagnosis::test;

diagnosis::Vector3 looked(double x, double y, double shift, std::uint32_t noise) {
  constexpr double codes = 3.0 / 255;
  const auto across = static_cast<int>(x * 4096), down = static_cast<int>(y * 4096);
  const double grain = codes * (paint::hash01(across, down, noise) - 0.5);
  const paint::Paint color = paint::portrait(x * paint::paintedAspect + shift, y);
  return {color.r + grain, color.g + grain, color.b + grain};
}

}  // namespace

diagnosis::Vector3 portrait(double x, double y, unsigned noise) {
  return looked(x, y, 0, noise);
}

diagnosis::Vector3 laterPortrait(double x, double y, unsigned noise) {
  return looked(x, y, -0.45, noise);
}

}  // namespace bench

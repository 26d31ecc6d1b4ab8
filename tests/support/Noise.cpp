#include "tests/support/Noise.h"

#include <cmath>

namespace movie::test {

double valueNoise(double x, double y, std::uint32_t seed) {
  const double fx = std::floor(x), fy = std::floor(y);
  const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
  const double tx = (x - fx) * (x - fx) * (3 - 2 * (x - fx)), ty = (y - fy) * (y - fy) * (3 - 2 * (y - fy));
  const double top = hash01(ix, iy, seed) * (1 - tx) + hash01(ix + 1, iy, seed) * tx;
  const double bottom = hash01(ix, iy + 1, seed) * (1 - tx) + hash01(ix + 1, iy + 1, seed) * tx;
  return top * (1 - ty) + bottom * ty;
}

}  // namespace movie::test

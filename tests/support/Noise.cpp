#include "tests/support/Noise.h"

#include <cmath>

namespace movie::test {

double hash01(int x, int y, std::uint32_t seed) {
  std::uint32_t h =
      static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return static_cast<double>(h) / 4294967295.0;
}

double valueNoise(double x, double y, std::uint32_t seed) {
  const double fx = std::floor(x), fy = std::floor(y);
  const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
  const double tx = (x - fx) * (x - fx) * (3 - 2 * (x - fx)), ty = (y - fy) * (y - fy) * (3 - 2 * (y - fy));
  const double top = hash01(ix, iy, seed) * (1 - tx) + hash01(ix + 1, iy, seed) * tx;
  const double bottom = hash01(ix, iy + 1, seed) * (1 - tx) + hash01(ix + 1, iy + 1, seed) * tx;
  return top * (1 - ty) + bottom * ty;
}

}  // namespace movie::test

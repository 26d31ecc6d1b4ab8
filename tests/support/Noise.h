#pragma once

#include <cstdint>

namespace movie::test {

/// A number from 0 to 1 for each place and seed, the same on every machine.
inline double hash01(int x, int y, std::uint32_t seed) {
  std::uint32_t h =
      static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return static_cast<double>(h) / 4294967295.0;
}

/// The same between places, smoothly.
double valueNoise(double x, double y, std::uint32_t seed);

}  // namespace movie::test

#pragma once

#include <cstdint>

namespace movie::test {

/// A number from 0 to 1 for each place and seed, the same on every machine.
double hash01(int x, int y, std::uint32_t seed);

/// The same between places, smoothly.
double valueNoise(double x, double y, std::uint32_t seed);

}  // namespace movie::test

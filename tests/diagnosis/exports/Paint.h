#pragma once

#include <cstdint>
#include <string>

#include "tests/support/Noise.h"

namespace diagnosis::test {

/// R', G' and B' as they are displayed, 0 to 1.
struct Paint {
  double r = 0, g = 0, b = 0;
};

Paint operator+(const Paint& one, const Paint& other);
Paint operator*(const Paint& paint, double factor);
Paint mix(const Paint& one, const Paint& other, double share);

/// 0 below `low`, 1 above `high`, smooth between; falls where `low` is above `high`.
double rise(double low, double high, double value);

using movie::test::hash01;

/// Noise of so many octaves, each twice as fine as the one before: 0 to 1, mostly about 0.5.
double cloud(double x, double y, int octaves, std::uint32_t seed);

/// The nearest of points strewn over the plane, one to a unit square.
struct Strewn {
  double dx = 0, dy = 0, distance = 0;  ///< from that point
  int column = 0, row = 0;              ///< of its square
};
Strewn nearestStrewn(double x, double y, std::uint32_t seed);

/// Of a picture: across from 0 to 16/9, down from 0 to 1.
using Painter = Paint (*)(double u, double v);
constexpr double paintedAspect = 16.0 / 9.0;

/// The path of a picture of 16 bits (PPM), with a lens's falling-off and a little grain; made once, the same bytes on
/// every machine. Somewhat larger than the movies that are made of it, which can so look at different parts.
constexpr int paintedWidth = 704, paintedHeight = 396;
struct Painting {
  std::string name;
  Painter painter = nullptr;
  double shift = 0;  ///< looks so far to the right
};
std::string paintedFile(const Painting& painting);

}  // namespace diagnosis::test

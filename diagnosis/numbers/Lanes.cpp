#include "diagnosis/numbers/Lanes.h"

#include <bit>
#include <cstdint>

namespace diagnosis {
namespace {

constexpr int mantissaBits = 23, exponentBias = 127;  // of IEEE 754's binary32
constexpr float lowestLogarithm = -126;               // of a normal number
constexpr float logarithmOfNothing = -1000;
constexpr double ln2 = 0.693147180559945309;

/// The series of atanh: with s = (m - 1) / (m + 1), ln m = 2 (s + s^3/3 + s^5/5 + ...), for m from 0.7 to 1.4.
float logarithm(float value) {
  constexpr auto unit = static_cast<float>(2 / ln2);
  constexpr std::int32_t middle = std::bit_cast<std::int32_t>(0.70710678F);
  const auto bits = std::bit_cast<std::int32_t>(value > 0 ? value : 1.0F);
  const std::int32_t exponent = (bits - middle) >> mantissaBits;
  const auto mantissa = std::bit_cast<float>(bits - (exponent << mantissaBits));
  const float s = (mantissa - 1) / (mantissa + 1), square = s * s;
  const float series = 1 + square * (1.0F / 3 + square * (1.0F / 5 + square * (1.0F / 7 + square * (1.0F / 9))));
  const float result = static_cast<float>(exponent) + unit * s * series;
  return value > 0 ? result : logarithmOfNothing;
}

/// Two to a power: its whole part is the exponent's bits, of the rest within half of 1 the series of e^x.
float powerOfTwo(float power) {
  constexpr double second = ln2 * ln2 / 2, third = second * ln2 / 3, fourth = third * ln2 / 4, fifth = fourth * ln2 / 5,
                   sixth = fifth * ln2 / 6, seventh = sixth * ln2 / 7;
  constexpr auto c1 = static_cast<float>(ln2), c2 = static_cast<float>(second), c3 = static_cast<float>(third),
                 c4 = static_cast<float>(fourth), c5 = static_cast<float>(fifth), c6 = static_cast<float>(sixth),
                 c7 = static_cast<float>(seventh);
  const float normal = power > lowestLogarithm ? power : lowestLogarithm;
  // It is positive: cutting it off rounds it down.
  const auto exponent = static_cast<std::int32_t>(normal + (exponentBias + 0.5F));
  const float x = normal - static_cast<float>(exponent - exponentBias);
  const float series = 1 + x * (c1 + x * (c2 + x * (c3 + x * (c4 + x * (c5 + x * (c6 + x * c7))))));
  return series * std::bit_cast<float>(exponent << mantissaBits);
}

}  // namespace

LaneMatrix laneMatrix(const std::array<std::array<double, 3>, 3>& rows) {
  LaneMatrix result{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) result[row][column] = static_cast<float>(rows[row][column]);
  }
  return result;
}

ColorLanes product(const LaneMatrix& matrix, const ColorLanes& colors) {
  const LaneMatrix m = matrix;  // a copy, which nothing else writes to: each colour is read but once
  const Lanes &x = colors[0], &y = colors[1], &z = colors[2];
  ColorLanes result;
  for (std::size_t i = 0; i < laneCount; ++i) {
    const float a = x[i], b = y[i], c = z[i];
    result[0][i] = m[0][0] * a + m[0][1] * b + m[0][2] * c;
    result[1][i] = m[1][0] * a + m[1][1] * b + m[1][2] * c;
    result[2][i] = m[2][0] * a + m[2][1] * b + m[2][2] * c;
  }
  return result;
}

Lanes logarithms(const Lanes& values) {
  Lanes result;
  for (std::size_t i = 0; i < laneCount; ++i) result[i] = logarithm(values[i]);
  return result;
}

Lanes raised(const Lanes& logarithms, float exponent) {
  Lanes result;
  for (std::size_t i = 0; i < laneCount; ++i) result[i] = powerOfTwo(exponent * logarithms[i]);
  return result;
}

}  // namespace diagnosis

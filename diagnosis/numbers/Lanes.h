#pragma once

#include <array>
#include <cstddef>

namespace diagnosis {

/// Numbers side by side, in single precision: what is done to all of them alike the compiler does to four or more at a
/// time.
constexpr std::size_t laneCount = 16;
using Lanes = std::array<float, laneCount>;
/// Colours side by side, a plane each.
using ColorLanes = std::array<Lanes, 3>;
using LaneMatrix = std::array<std::array<float, 3>, 3>;

LaneMatrix laneMatrix(const std::array<std::array<double, 3>, 3>& rows);
ColorLanes product(const LaneMatrix& matrix, const ColorLanes& colors);

/// To base 2. What is not above 0 has one so low that any power of it is nothing.
Lanes logarithms(const Lanes& values);
/// What has these logarithms, each multiplied by a positive exponent: values to a power. Off by less than a millionth
/// of 1 where they are at most 1.
Lanes raised(const Lanes& logarithms, float exponent);

}  // namespace diagnosis

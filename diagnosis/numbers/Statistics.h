#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace diagnosis {

/// Of at least one value; of two in the middle the higher one. Reorders them.
template <typename Value>
Value medianOf(std::vector<Value>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Linear equations: in each row the factors of the unknowns, and behind them what they add up to.
template <std::size_t unknowns>
using Equations = std::array<std::array<double, unknowns + 1>, unknowns>;

/// The unknowns, by elimination in the order in which they come: for the normal equations of least squares, with a
/// little added to their diagonal.
template <std::size_t unknowns>
std::array<double, unknowns> solved(Equations<unknowns> rows) {
  std::array<double, unknowns> result{};
  for (std::size_t i = 0; i < unknowns; ++i) {
    for (std::size_t row = 0; row < unknowns; ++row) {
      if (row == i) continue;
      const double factor = rows[row][i] / rows[i][i];
      for (std::size_t column = i; column <= unknowns; ++column) rows[row][column] -= factor * rows[i][column];
    }
  }
  for (std::size_t i = 0; i < unknowns; ++i) result[i] = rows[i][unknowns] / rows[i][i];
  return result;
}

}  // namespace diagnosis

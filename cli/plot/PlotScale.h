#pragma once

#include <vector>

namespace cli {

/// Values from `low` to `high` lie on paper from `from` to `to`.
struct PlotAxis {
  double low = 0, high = 1, from = 0, to = 1;
  double at(double value) const {
    return high > low ? from + (to - from) * (value - low) / (high - low) : (from + to) / 2;
  }
};

/// Exponents worth a label between two logarithms of exponents, ascending: 1, and round ones on both sides of it at one
/// distance; nine at most, unless that is none. `low` <= 0 <= `high`.
std::vector<double> exponentTicks(double low, double high);

/// Round times from one to another, in seconds, so many at most; none where the stretch is shorter than a second.
std::vector<double> timeTicks(double from, double to, std::size_t most);

}  // namespace cli

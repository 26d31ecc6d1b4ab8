#include "cli/plot/PlotScale.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

/// Below 1 as many steps as fit; from steps of a half on, reciprocals of those above 1.
std::vector<double> exponentsBy(double step, double low, double high) {
  std::vector<double> ticks{1};
  for (int i = 1; std::log(1 + i * step) <= high; ++i) ticks.push_back(1 + i * step);
  for (int i = 1;; ++i) {
    const double tick = step < 0.5 ? 1 - i * step : 1 / (1 + i * step);
    if (tick < 0.05 || std::log(tick) < low) break;
    ticks.push_back(tick);
  }
  std::sort(ticks.begin(), ticks.end());
  return ticks;
}

}  // namespace

std::vector<double> exponentTicks(double low, double high) {
  constexpr std::size_t most = 9;
  std::vector<double> ticks;
  for (const double step : {0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0}) {
    ticks = exponentsBy(step, low, high);
    if (ticks.size() <= most) break;
  }
  return ticks;
}

std::vector<double> timeTicks(double from, double to, std::size_t most) {
  std::vector<double> ticks;
  for (const double step : {1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, 3600.0, 7200.0,
                            14400.0, 43200.0, 86400.0}) {
    if (to - from < 1 || (to - from) / step > static_cast<double>(most)) continue;
    const double first = std::ceil(from / step - 1e-9) * step;
    for (double time = first; time <= to + 1e-9 && ticks.size() < most; time += step) ticks.push_back(time);
    break;
  }
  return ticks;
}

}  // namespace cli
